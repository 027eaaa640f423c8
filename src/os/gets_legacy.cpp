// A line from standard input without a limit, as its callers have always had it.
#include "gets_legacy.h"

#include <cerrno>
#include <cstdio>

char *gets_legacy(char *buffer) {
  if (buffer == nullptr) {
    errno = EINVAL;
    return nullptr;
  }
  char *end = buffer;
  ::flockfile(stdin);  // threads that read at the same time get whole lines
  int c = std::fgetc(stdin);
  const bool at_end = c == EOF;
  for (; c != EOF && c != '\n'; c = std::fgetc(stdin)) {
    *end++ = static_cast<char>(c);
  }
  ::funlockfile(stdin);
  *end = '\0';
  return at_end ? nullptr : buffer;
}
