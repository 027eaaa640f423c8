// UCS-2 to UTF-8 for any machine.
#include "utf_kernels.hpp"

namespace zorvcrt {

uint64_t utf8_length_plain(const uint16_t *units, std::size_t n) {
  uint64_t length = n;
  for (std::size_t i = 0; i < n; ++i) {
    length += (units[i] > kOneByteLimit ? 1U : 0U) + (units[i] > kTwoByteLimit ? 1U : 0U);
  }
  return length;
}

char *utf8_convert_plain(const uint16_t *units, std::size_t n, char *out) {
  for (std::size_t i = 0; i < n; ++i) {
    const uint32_t unit = units[i];
    if (unit <= kOneByteLimit) {
      *out++ = static_cast<char>(unit);
      continue;
    }
    if (unit <= kTwoByteLimit) {
      *out++ = static_cast<char>(0xC0 + (unit >> 6));
    } else {
      *out++ = static_cast<char>(0xE0 + (unit >> 12));
      *out++ = static_cast<char>(0x80 + (unit >> 6 & 0x3F));
    }
    *out++ = static_cast<char>(0x80 + (unit & 0x3F));
  }
  return out;
}

}  // namespace zorvcrt
