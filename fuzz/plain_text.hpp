// What is said again over strings by more than one model.
#pragma once

#include <cctype>
#include <string>

namespace plain {

/// The text without white space at both ends.
inline std::string trimmed(std::string text) {
  const auto space = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
  while (!text.empty() && space(text.back())) {
    text.pop_back();
  }
  while (!text.empty() && space(text.front())) {
    text.erase(0, 1);
  }
  return text;
}

}  // namespace plain
