// What more than one plain model of the library says, over strings.
#pragma once

#include <cctype>
#include <string>

namespace plain {

/// The text without white space at both ends.
inline std::string trimmed(std::string text) {
  const auto is_space = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
  while (!text.empty() && is_space(text.back())) {
    text.pop_back();
  }
  std::size_t start = 0;
  while (start < text.size() && is_space(text[start])) {
    ++start;
  }
  return text.substr(start);
}

}  // namespace plain
