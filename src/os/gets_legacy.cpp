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
  ::flockfile(stdin);  // once for the line, not for each character
  int c = ::getc_unlocked(stdin);
  const bool at_end = c == EOF;
  for (; c != EOF && c != '\n'; c = ::getc_unlocked(stdin)) {
    *end++ = static_cast<char>(c);
  }
  ::funlockfile(stdin);
  *end = '\0';
  return at_end ? nullptr : buffer;
}
