// UCS-2 to UTF-8 in two forms with the same results: plain, and for AVX2 registers.
#pragma once

#include <cstddef>
#include <cstdint>

#include "wide_registers.hpp"

namespace zorvcrt {

/// Bytes behind the text that the wide form may overwrite.
inline constexpr std::size_t kUtf8Slack = 32;

/// The largest units that take one byte and two.
inline constexpr uint16_t kOneByteLimit = 0x7F;
inline constexpr uint16_t kTwoByteLimit = 0x7FF;

/// Tell the bytes that n units take.
uint64_t utf8_length_plain(const uint16_t *units, std::size_t n);
uint64_t utf8_length_wide(const uint16_t *units, std::size_t n);
inline uint64_t utf8_length(const uint16_t *units, std::size_t n) {
  if constexpr (!kPortable) {
    if (has_wide_registers()) return utf8_length_wide(units, n);
  }
  return utf8_length_plain(units, n);
}

/// Convert n units. Give the end of the text.
char *utf8_convert_plain(const uint16_t *units, std::size_t n, char *out);
char *utf8_convert_wide(const uint16_t *units, std::size_t n, char *out);
inline char *utf8_convert(const uint16_t *units, std::size_t n, char *out) {
  if constexpr (!kPortable) {
    if (has_wide_registers()) return utf8_convert_wide(units, n, out);
  }
  return utf8_convert_plain(units, n, out);
}

}  // namespace zorvcrt
