// Decimal digits, the same in every locale.
#pragma once

#include <cstdint>

namespace zorvcrt {

constexpr bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

constexpr int32_t digit_value(char c) {
  return c - '0';
}

}  // namespace zorvcrt
