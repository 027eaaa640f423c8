// Thirty-two bytes looked at together, in AVX2 registers: what the second forms of inner loops share. To be
// included where has_wide_registers() has been asked, and nowhere in a portable build.
#pragma once

#include <immintrin.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#define ZORVCRT_AVX2 __attribute__((target("avx2")))
#define ZORVCRT_AVX2_INLINED __attribute__((target("avx2"), always_inline)) inline

namespace zorvcrt {

inline constexpr std::size_t kWideBlock = sizeof(__m256i);
inline constexpr uint32_t kAllOfWideBlock = 0xFFFFFFFF;

ZORVCRT_AVX2 inline __m256i load_wide(const void *from) {
  return _mm256_loadu_si256(static_cast<const __m256i *>(from));
}

ZORVCRT_AVX2 inline void store_wide(void *to, __m256i value) {
  _mm256_storeu_si256(static_cast<__m256i *>(to), value);
}

ZORVCRT_AVX2 inline __m128i load_half(const void *from) {
  return _mm_loadu_si128(static_cast<const __m128i *>(from));
}

ZORVCRT_AVX2 inline void store_half(void *to, __m128i value) {
  _mm_storeu_si128(static_cast<__m128i *>(to), value);
}

/// One bit for each byte that is zero.
ZORVCRT_AVX2 inline uint32_t zero_bytes(__m256i block) {
  return static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(block, _mm256_setzero_si256())));
}

/// One bit for each byte of an aligned block that is zero or another end. The block may begin in front of a
/// text and end behind it: such a block lies in one page, so no page is touched that the text does not reach.
ZORVCRT_AVX2 __attribute__((no_sanitize("address", "thread"))) inline uint32_t ends_in(uintptr_t block,
                                                                                       char other_end) {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): no pointer of the text leads in front of it
  const __m256i bytes = *reinterpret_cast<const __m256i *>(block);
  if (other_end == '\0') return zero_bytes(bytes);
  return zero_bytes(_mm256_min_epu8(bytes, _mm256_xor_si256(bytes, _mm256_set1_epi8(other_end))));
}

/// The bytes in front of the first zero byte, or of another end; where there is none below the limit, any
/// number not below it.
ZORVCRT_AVX2_INLINED std::size_t length_within(const char *text, std::size_t limit, char other_end = '\0') {
  const auto start = reinterpret_cast<uintptr_t>(text);
  uintptr_t block = start / kWideBlock * kWideBlock;
  uint32_t ends = ends_in(block, other_end) >> (start - block);
  if (ends != 0) return static_cast<uint32_t>(std::countr_zero(ends));
  do {
    block += kWideBlock;
    if (block - start >= limit) return limit;
    ends = ends_in(block, other_end);
  } while (ends == 0);
  return block - start + static_cast<uint32_t>(std::countr_zero(ends));
}

ZORVCRT_AVX2_INLINED std::size_t length_of(const char *text) {
  return length_within(text, SIZE_MAX);
}

}  // namespace zorvcrt
