// A line from standard input into a bounded area, with its end of line removed however it is written and
// wherever the area cuts it.
#include "safe_gets.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>

namespace {

constexpr int kScratchRoom = 512;

// Takes a line feed that comes next; any other character stays where it is.
bool take_line_feed() {
  if (std::feof(stdin) != 0) return false;
  const int c = std::fgetc(stdin);
  if (c != '\n' && c != EOF) std::ungetc(c, stdin);
  return c == '\n';
}

void discard_line() {
  std::array<char, kScratchRoom> scratch;
  while (std::fgets(scratch.data(), kScratchRoom, stdin) != nullptr) {
    const std::size_t length = std::strlen(scratch.data());
    if (length != 0 && scratch[length - 1] == '\n') return;
  }
}

// Removes the character from the end of the text, if it is there.
bool removed(char *text, std::size_t &length, char c) {
  if (length == 0 || text[length - 1] != c) return false;
  text[--length] = '\0';
  return true;
}

}  // namespace

char *safe_gets(char *buffer, uint64_t capacity, uint32_t discard) {
  if (buffer == nullptr || capacity == 0) {
    errno = EINVAL;
    return nullptr;
  }
  const int room = capacity > INT_MAX ? INT_MAX : static_cast<int>(capacity);
  if (std::fgets(buffer, room, stdin) == nullptr) {
    buffer[0] = '\0';  // a read error may have left a part of a line, without an end
    return nullptr;
  }

  std::size_t length = std::strlen(buffer);
  if (removed(buffer, length, '\n')) {
    removed(buffer, length, '\r');
    return buffer;
  }
  const bool line_is_complete = removed(buffer, length, '\r') && take_line_feed();
  if (discard != 0 && !line_is_complete) discard_line();
  return buffer;
}
