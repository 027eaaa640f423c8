// 48 bytes and their 64 sextets in AVX-512 registers.
#pragma once

#if defined(__GNUC__) && !defined(__clang__)  // which takes its own header's undefined registers for ours
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
#include <immintrin.h>

#include <array>
#include <cstddef>
#include <cstdint>

#define ZORVCRT_AVX512 __attribute__((target("avx512f,avx512bw")))

namespace zorvcrt {

inline constexpr std::size_t kStepBytes = 48;
inline constexpr std::size_t kStepSextets = 64;
static_assert(kStepSextets == sizeof(__m512i));

/// A load of its own: the compiler would have each operation load its operand again, across two cache lines.
ZORVCRT_AVX512 inline __m512i load_widest(const void *from) {
  __m512i loaded = _mm512_loadu_si512(from);
  __asm__("" : "+v"(loaded));
  return loaded;
}

ZORVCRT_AVX512 inline void store_widest(void *to, __m512i value) {
  _mm512_storeu_si512(to, value);
}

/// An address of which nothing is known: gcc 12 takes one on the stack for aligned to 64 bytes, which it is
/// not on the stack that the address sanitizer provides.
template <class T>
T *unknown_address(T *address) {
  __asm__("" : "+r"(address));
  return address;
}

/// The first bytes of a register, from none to all.
inline __mmask64 first_places(std::size_t count) {
  return count == 0 ? 0 : ~uint64_t{0} >> (kStepSextets - count);
}

/// 16 bytes for each of the four quarters of a register, within which shuffles work. They are laid out as a
/// whole, or else the compiler would put them together again in every step.
struct Quarters {
  alignas(64) std::array<int8_t, 64> bytes;

  using Quarter = std::array<int8_t, 16>;
  constexpr explicit Quarters(const Quarter &quarter) : bytes{} {
    for (std::size_t place = 0; place < bytes.size(); ++place) {
      bytes[place] = quarter[place % quarter.size()];
    }
  }
  [[nodiscard]] ZORVCRT_AVX512 __m512i get() const { return _mm512_load_si512(bytes.data()); }
};

/// The sextets of the first 48 bytes.
ZORVCRT_AVX512 inline __m512i sextets_of(__m512i bytes) {
  // 12 bytes for each quarter, in which every group a b c becomes the 16-bit numbers ab and bc
  static constexpr Quarters kPairs({1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10});
  const __m512i spread = _mm512_setr_epi32(0, 1, 2, 2, 3, 4, 5, 5, 6, 7, 8, 8, 9, 10, 11, 11);
  const __m512i pairs = _mm512_shuffle_epi8(_mm512_permutexvar_epi32(spread, bytes), kPairs.get());
  // first and third sextet: down to the low bytes; second and fourth: up to the high ones
  const __m512i odd = _mm512_srlv_epi16(pairs, _mm512_set1_epi32(6 << 16 | 10));
  const __m512i even = _mm512_sllv_epi16(pairs, _mm512_set1_epi32(8 << 16 | 4));
  // Where the mask is set, a bit is taken from the odd ones. The two bits above a sextet come from where they
  // are zero: the odd one, but for the third sextet the even one.
  constexpr int kSelect = 0xCA;
  const __m512i from_odd = _mm512_set1_epi32(static_cast<int>(0xC03FC0FF));
  return _mm512_ternarylogic_epi32(from_odd, odd, even, kSelect);
}

ZORVCRT_AVX512 inline __m512i characters_of(__m512i sextets) {
  // What to add to sextets from 26 on, by the low half byte of the larger of the sextet and 51: 3 for a..z, 4
  // to 13 for the digits, 14 and 15 for the last two.
  static constexpr Quarters kOffsets({0, 0, 0, 71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16});
  const __mmask64 beyond_capitals = _mm512_cmpgt_epi8_mask(sextets, _mm512_set1_epi8(25));
  const __m512i slots = _mm512_max_epu8(sextets, _mm512_set1_epi8(51));
  const __m512i offsets =
      _mm512_mask_shuffle_epi8(_mm512_set1_epi8('A'), beyond_capitals, kOffsets.get(), slots);
  return _mm512_add_epi8(sextets, offsets);
}

/// A character's slot in a table: its high half byte plus what its low half byte adds, which parts characters
/// that share the high one. The mean of two bytes does the addition and the last place of the shift: 2 n - 1
/// adds n, and below 8 zero adds nothing. Bits that the shift brings in from the next character do not count.
ZORVCRT_AVX512 inline __m512i slots_of(__m512i characters, const Quarters &additions) {
  return _mm512_avg_epu8(_mm512_shuffle_epi8(additions.get(), characters), _mm512_srli_epi32(characters, 3));
}

/// A bit for every character outside the alphabet. Those of the alphabet that share a slot are larger than
/// the others that do: with the smallest one subtracted, the others are negative. Characters beyond ASCII are
/// negative to begin with.
ZORVCRT_AVX512 inline uint64_t invalid_in(__m512i characters) {
  static constexpr Quarters kAdditions({0, 0, 0, 0, 0, 0, 0, 0, 7, 7, 5, 9, 13, 13, 13, 9});
  constexpr int8_t kNone = -128;
  static constexpr Quarters kSmallest(
      {kNone, kNone, kNone, -'0', -'A', -'P', -'a', -'+', -'H', -'K', -'h', -'L', kNone, -'l', kNone, kNone});
  const __m512i smallest = _mm512_shuffle_epi8(kSmallest.get(), slots_of(characters, kAdditions));
  return _mm512_movepi8_mask(_mm512_adds_epi8(smallest, characters));
}

/// The sextets of characters of the alphabet; those of others mean nothing.
ZORVCRT_AVX512 inline __m512i values_of(__m512i characters) {
  // one more for all, and six more for the low half byte of '/', to tell it from '+'
  static constexpr Quarters kAdditions({1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 13});
  static constexpr Quarters kOffsets({0, 0, 0, 19, 4, -65, -65, -71, -71, 16, 0, -65, 0, -71, 0, 0});
  return _mm512_add_epi8(_mm512_shuffle_epi8(kOffsets.get(), slots_of(characters, kAdditions)), characters);
}

/// 64 sextets as 48 bytes, followed by 16 that mean nothing.
ZORVCRT_AVX512 inline __m512i bytes_of(__m512i sextets) {
  const __m512i pairs = _mm512_maddubs_epi16(sextets, _mm512_set1_epi32(0x01400140));
  const __m512i groups = _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x00011000));
  static constexpr Quarters kOrder({2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1});
  const __m512i together = _mm512_setr_epi32(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 15, 15, 15, 15);
  return _mm512_permutexvar_epi32(together, _mm512_shuffle_epi8(groups, kOrder.get()));
}

/// Packs 64 sextets into 48 bytes; writes these and no more.
ZORVCRT_AVX512 inline void pack_sextets(uint8_t *out, __m512i sextets) {
  constexpr __mmask16 kThreeQuarters = 0x0FFF;
  _mm512_mask_storeu_epi32(out, kThreeQuarters, bytes_of(sextets));
}

}  // namespace zorvcrt
