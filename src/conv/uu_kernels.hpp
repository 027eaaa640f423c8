// Whole uuencoded lines in two forms with the same results: plain, and for AVX2 registers.
#pragma once

#include <cstddef>
#include <cstdint>

#include "wide_registers.hpp"

namespace zorvcrt {

inline constexpr std::size_t kUuLineBytes = 45;
inline constexpr std::size_t kUuLineCharacters = 60;  // of data, without length character and newline

/// The character of a sextet.
constexpr char uu_character(uint32_t sextet) {
  return static_cast<char>(sextet == 0 ? '`' : sextet + ' ');
}

/// The sextet of any character.
constexpr uint32_t uu_sextet(char character) {
  return (static_cast<uint8_t>(character) - uint32_t{' '}) % 64;
}

/// Encode three bytes as four characters.
void uu_encode_group(const uint8_t *data, char *out);

/// Decode four characters; the first byte is in the highest of 24 bits.
constexpr uint32_t uu_decode_group(const char *characters) {
  return uu_sextet(characters[0]) << 18 | uu_sextet(characters[1]) << 12 | uu_sextet(characters[2]) << 6 |
         uu_sextet(characters[3]);
}

/// Encode the 45 bytes of a full line as 60 characters.
void uu_encode_line_plain(const uint8_t *data, char *out);
void uu_encode_line_wide(const uint8_t *data, char *out);
inline void uu_encode_line(const uint8_t *data, char *out) {
  if constexpr (!kPortable) {
    if (has_wide_registers()) return uu_encode_line_wide(data, out);
  }
  uu_encode_line_plain(data, out);
}

/// Decode the 60 characters of a full line as 45 bytes. False, with nothing written, when one is a newline.
bool uu_decode_line_plain(const char *characters, uint8_t *out);
bool uu_decode_line_wide(const char *characters, uint8_t *out);
inline bool uu_decode_line(const char *characters, uint8_t *out) {
  if constexpr (!kPortable) {
    if (has_wide_registers()) return uu_decode_line_wide(characters, out);
  }
  return uu_decode_line_plain(characters, out);
}

}  // namespace zorvcrt
