// 32-bit sums and products that wrap instead of overflowing: where callers count on 32 bits, every input has
// the one result that the width gives.
#pragma once

#include <cstdint>

namespace zorvcrt {

constexpr int32_t wrapping_add(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

constexpr int32_t wrapping_subtract(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

constexpr int32_t wrapping_multiply(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

}  // namespace zorvcrt
