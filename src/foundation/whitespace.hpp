// Removing white space, as isspace() of the process locale sees it, from the ends of a text.
#pragma once

#include <cctype>
#include <string_view>

namespace zorvcrt {

inline bool is_space(char c) {
  return std::isspace(static_cast<unsigned char>(c)) != 0;
}

inline std::string_view trimmed_front(std::string_view text) {
  while (!text.empty() && is_space(text.front())) {
    text.remove_prefix(1);
  }
  return text;
}

inline std::string_view trimmed_back(std::string_view text) {
  while (!text.empty() && is_space(text.back())) {
    text.remove_suffix(1);
  }
  return text;
}

inline std::string_view trimmed(std::string_view text) {
  return trimmed_back(trimmed_front(text));
}

}  // namespace zorvcrt
