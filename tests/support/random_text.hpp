// Texts of random characters.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace support {

/// So many characters of the alphabet; one that stands there more often comes more often.
template <class Engine>
std::string random_text(Engine &random, std::size_t size, std::string_view alphabet) {
  std::string text(size, ' ');
  for (char &c : text) {
    c = alphabet[random() % alphabet.size()];
  }
  return text;
}

}  // namespace support
