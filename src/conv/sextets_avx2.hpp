// 24 bytes and their 32 sextets in AVX2 registers, as Base64 and uuencode share them.
#pragma once

#include "wide_block.hpp"

namespace zorvcrt {

inline constexpr std::size_t kWideBytes = 24;
inline constexpr std::size_t kWideSextets = 32;

/// The sextets of 24 bytes; reads these and no more.
ZORVCRT_AVX2 inline __m256i sextets_of(const uint8_t *bytes) {
  constexpr std::size_t kSecondHalf = kWideBytes - 16;
  const __m256i loaded =
      _mm256_inserti128_si256(_mm256_castsi128_si256(load_half(bytes)), load_half(bytes + kSecondHalf), 1);
  // every group a b c becomes the 16-bit numbers ab and bc
  const __m256i order =
      _mm256_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10,  // from the first 12 bytes
                       5, 4, 6, 5, 8, 7, 9, 8, 11, 10, 12, 11, 14, 13, 15, 14);
  const __m256i pairs = _mm256_shuffle_epi8(loaded, order);
  // first and third sextet: down to the low bytes; second and fourth: up to the high ones
  const __m256i odd = _mm256_and_si256(pairs, _mm256_set1_epi32(0x0FC0FC00));
  const __m256i even = _mm256_and_si256(pairs, _mm256_set1_epi32(0x003F03F0));
  return _mm256_or_si256(_mm256_mulhi_epu16(odd, _mm256_set1_epi32(0x04000040)),
                         _mm256_mullo_epi16(even, _mm256_set1_epi32(0x01000010)));
}

/// 32 sextets as 24 bytes, followed by 8 that mean nothing.
ZORVCRT_AVX2 inline __m256i bytes_of(__m256i sextets) {
  const __m256i pairs = _mm256_maddubs_epi16(sextets, _mm256_set1_epi32(0x01400140));
  const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
  const __m256i order = _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1,  //
                                         2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
  const __m256i lanes = _mm256_shuffle_epi8(groups, order);
  return _mm256_permutevar8x32_epi32(lanes, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7));
}

/// Packs 32 sextets into 24 bytes; writes these and no more.
ZORVCRT_AVX2 inline void pack_sextets(uint8_t *out, __m256i sextets) {
  const __m256i bytes = bytes_of(sextets);
  store_half(out, _mm256_castsi256_si128(bytes));
  _mm_storel_epi64(static_cast<__m128i *>(static_cast<void *>(out + 16)), _mm256_extracti128_si256(bytes, 1));
}

/// Packs 32 sextets into 24 bytes and overwrites the 8 behind them.
ZORVCRT_AVX2 inline void pack_sextets_loosely(uint8_t *out, __m256i sextets) {
  store_wide(out, bytes_of(sextets));
}

}  // namespace zorvcrt
