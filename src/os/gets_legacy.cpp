// A line from standard input without a limit, as its callers have always had it.
#include "gets_legacy.h"

#include <pthread.h>

#include <cerrno>
#include <cstdio>

namespace {

// Reads up to the end of the line or of the input; tells whether there was anything to read.
bool read_line(char *end) {
  int c = std::fgetc(stdin);
  const bool is_at_end = c == EOF;
  for (; c != EOF && c != '\n'; c = std::fgetc(stdin)) {
    *end++ = static_cast<char>(c);
  }
  *end = '\0';
  return !is_at_end;
}

void unlock(void *stream) {
  ::funlockfile(static_cast<FILE *>(stream));
}

}  // namespace

char *gets_legacy(char *buffer) {
  if (buffer == nullptr) {
    errno = EINVAL;
    return nullptr;
  }
  ::flockfile(stdin);  // threads that read at the same time get whole lines
  char *line = nullptr;
  // A thread that is cancelled while it waits for input would leave the stream locked for all others.
  pthread_cleanup_push(unlock, stdin);
  line = read_line(buffer) ? buffer : nullptr;
  pthread_cleanup_pop(1);
  return line;
}
