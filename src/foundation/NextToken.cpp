// The tokenizer: one trimmed field of a delimited line per call, empty fields joined with the next one.
#include "NextToken.h"

#include <algorithm>
#include <cstring>

#include "fixed_text.hpp"
#include "whitespace.hpp"

namespace {

// The bytes that a caller's area of the size has room for.
std::size_t room_in(const char *out, int32_t size) {
  return out == nullptr || size < 1 ? 0 : static_cast<std::size_t>(size) - 1;
}

// Only as much of the string is looked at as an offset beyond its end requires.
std::size_t start_offset(const char *string, const int32_t *position) {
  if (position == nullptr || *position < 0) return 0;
  return ::strnlen(string, static_cast<std::size_t>(*position));
}

void store_offset(int32_t *position, std::size_t offset) {
  if (position != nullptr) *position = static_cast<int32_t>(std::min<std::size_t>(offset, INT32_MAX));
}

}  // namespace

int32_t ZfxNextToken(const char *string, char delimiter, char *out, int32_t size, int32_t *position) {
  if (string == nullptr) string = "";
  const std::size_t start = start_offset(string, position);
  const std::size_t room = room_in(out, size);
  zorvcrt::copy_text(out, size, "");
  // At the largest offset that can be told, too, there is no going on: the next call would begin here again.
  if (start == INT32_MAX || string[start] == '\0') {
    store_offset(position, start);
    return 0;
  }
  const char *const field = string + start;

  // The field is read on while nothing of it would show: an empty field is joined with the one behind it.
  std::size_t length = 0;
  std::size_t next = 0;
  std::size_t seen = 0;
  bool shows = false;
  do {
    length = next;
    while (field[length] != delimiter && field[length] != '\0') {
      ++length;
    }
    for (; !shows && seen < std::min(length, room); ++seen) {
      shows = !zorvcrt::is_space(field[seen]);
    }
    next = field[length] == '\0' ? length : length + 1;
  } while (!shows && field[next] != '\0');

  zorvcrt::copy_text(out, size, zorvcrt::trimmed({field, std::min(length, room)}));
  store_offset(position, start + next);
  return 1;
}
