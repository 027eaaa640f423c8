// Full uuencoded lines for any machine.
#include <array>
#include <cstring>

#include "uu_kernels.hpp"

namespace zorvcrt {

namespace {

constexpr std::array<char, 64> make_characters() {
  std::array<char, 64> characters{};
  for (uint32_t sextet = 0; sextet < characters.size(); ++sextet) {
    characters[sextet] = uu_character(sextet);
  }
  return characters;
}

constexpr std::array<char, 64> kCharacters = make_characters();

}  // namespace

void uu_encode_group(const uint8_t *data, char *out) {
  out[0] = kCharacters[data[0] >> 2];
  out[1] = kCharacters[(data[0] & 0x03U) << 4 | data[1] >> 4];
  out[2] = kCharacters[(data[1] & 0x0FU) << 2 | data[2] >> 6];
  out[3] = kCharacters[data[2] & 0x3FU];
}

void uu_encode_line_plain(const uint8_t *data, char *out) {
  for (std::size_t i = 0; i < kUuLineBytes; i += 3, out += 4) {
    uu_encode_group(data + i, out);
  }
}

bool uu_decode_line_plain(const char *characters, uint8_t *out) {
  if (std::memchr(characters, '\n', kUuLineCharacters) != nullptr) return false;
  for (std::size_t i = 0; i < kUuLineCharacters; i += 4, out += 3) {
    const uint32_t group = uu_decode_group(characters + i);
    out[0] = static_cast<uint8_t>(group >> 16);
    out[1] = static_cast<uint8_t>(group >> 8);
    out[2] = static_cast<uint8_t>(group);
  }
  return true;
}

}  // namespace zorvcrt
