// Cutting a command line into the words of an argument vector, in place and without any help from the heap,
// so that it can be done between fork and exec.
#pragma once

#include <array>
#include <cstddef>
#include <cstring>

namespace zorvcrt {

inline constexpr std::size_t kMaximumCommandWords = 128;

struct CommandWords {
  std::array<char *, kMaximumCommandWords + 1> vector;  // up to count, then a null entry
  std::size_t count = 0;
  bool quote_is_open = false;  // the last word has an opening quote and no closing one
};

inline char *blanks_cleared(char *text) {
  while (*text == ' ' || *text == '\t') {
    *text++ = '\0';
  }
  return text;
}

/// Cuts up @p line; the words point into it.
inline void split_command_line(char *line, CommandWords &words) {
  words.count = 0;
  words.quote_is_open = false;
  for (char *rest = line; words.count < kMaximumCommandWords;) {
    rest = blanks_cleared(rest);
    if (*rest == '\0') break;
    const bool quoted = *rest == '"' || *rest == '\'';
    const char delimiter = quoted ? *rest++ : ' ';
    words.vector[words.count++] = rest;
    char *const end = std::strchr(rest, delimiter);
    words.quote_is_open = quoted && end == nullptr;
    if (end == nullptr) break;
    *end = '\0';
    rest = end + 1;
  }
  words.vector[words.count] = nullptr;
}

}  // namespace zorvcrt
