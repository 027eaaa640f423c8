// The fields of a delimited line, said again over strings step by step.
#pragma once

#include <string>

#include "../support/plain_text.hpp"

namespace plain {

struct Tokenizer {
  std::string line;
  char delimiter;
  std::size_t room;  // bytes of a field that count
  std::size_t position = 0;
  std::string token = {};

  /// Cuts the next field; false when the line is used up.
  bool next() {
    const std::size_t start = position;
    token.clear();
    for (;;) {
      while (position < line.size() && line[position] != delimiter) {
        ++position;
      }
      if (position == line.size() && position == start) return false;
      token = trimmed(line.substr(start, position - start).substr(0, room));
      if (position == line.size()) return true;
      ++position;
      if (!token.empty() || position == line.size()) return true;
    }
  }
};

}  // namespace plain
