// UCS-2 to UTF-8 on AVX2 registers, 16 units a step: every unit is spread over as many bytes as any of its
// neighbours may need, and a table of byte orders, by the lengths of the units, closes the gaps. A tenth of
// the time of the plain loop on mixed text; with calls between its parts, 32 units take longer than there.
#include <array>
#include <bit>

#include "sextets_avx2.hpp"
#include "utf_kernels.hpp"

namespace zorvcrt {

namespace {

constexpr std::size_t kStep = 16;
constexpr uint8_t kGap = 0x80;  // what a shuffle turns into a zero byte

using Order = std::array<uint8_t, 16>;
using Orders = std::array<Order, 256>;

// Eight units spread over two bytes each: bit i of the index is set when unit i is one byte, the first of
// them.
constexpr Orders make_pair_orders() {
  Orders orders{};
  for (std::size_t index = 0; index < orders.size(); ++index) {
    orders[index].fill(kGap);
    std::size_t count = 0;
    for (std::size_t unit = 0; unit < 8; ++unit) {
      orders[index][count++] = static_cast<uint8_t>(2 * unit);
      if ((index >> unit & 1) == 0) orders[index][count++] = static_cast<uint8_t>(2 * unit + 1);
    }
  }
  return orders;
}

// Four units spread over four bytes each, of which the last is empty and those in front of it count: bit i is
// set when unit i is more than one byte, bit i + 4 when it is more than two.
constexpr Orders make_triple_orders() {
  Orders orders{};
  for (std::size_t index = 0; index < orders.size(); ++index) {
    orders[index].fill(kGap);
    std::size_t count = 0;
    for (std::size_t unit = 0; unit < 4; ++unit) {
      const std::size_t length = 1 + (index >> unit & 1) + (index >> (unit + 4) & 1);
      for (std::size_t byte = 3 - length; byte < 3; ++byte) {
        orders[index][count++] = static_cast<uint8_t>(4 * unit + byte);
      }
    }
  }
  return orders;
}

alignas(64) constexpr Orders kPairOrders = make_pair_orders();
alignas(64) constexpr Orders kTripleOrders = make_triple_orders();

ZORVCRT_AVX2 bool has_none(__m256i units, uint16_t bits) {
  return _mm256_testz_si256(units, _mm256_set1_epi16(static_cast<int16_t>(bits))) != 0;
}

// All units of 8 are at most two bytes long.
ZORVCRT_AVX2_INLINED char *put_pairs(__m128i units, char *out) {
  const __m128i single = _mm_cmpgt_epi16(_mm_set1_epi16(kOneByteLimit + 1), units);
  const __m128i lead = _mm_or_si128(_mm_srli_epi16(units, 6), _mm_set1_epi16(0xC0));
  const __m128i rest = _mm_or_si128(_mm_and_si128(units, _mm_set1_epi16(0x3F)), _mm_set1_epi16(0x80));
  const __m128i pairs = _mm_blendv_epi8(_mm_or_si128(lead, _mm_slli_epi16(rest, 8)), units, single);
  const auto singles = static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(single, _mm_setzero_si128())));
  store_half(out, _mm_shuffle_epi8(pairs, load_half(kPairOrders[singles].data())));
  return out + 16 - std::popcount(singles);
}

// Units of any length, 8 of them.
ZORVCRT_AVX2_INLINED char *put_triples(__m128i units, char *out) {
  const __m256i wide = _mm256_cvtepu16_epi32(units);
  const __m256i beyond_one = _mm256_cmpgt_epi32(wide, _mm256_set1_epi32(kOneByteLimit));
  const __m256i beyond_two = _mm256_cmpgt_epi32(wide, _mm256_set1_epi32(kTwoByteLimit));
  const __m256i low = _mm256_and_si256(wide, _mm256_set1_epi32(0x3F));
  const __m256i middle = _mm256_and_si256(_mm256_srli_epi32(wide, 6), _mm256_set1_epi32(0x3F));
  const __m256i high = _mm256_srli_epi32(wide, 12);
  // the lead of a pair, 110xxxxx, differs from a middle byte, 10xxxxxx, in one bit
  const __m256i marks =
      _mm256_blendv_epi8(_mm256_set1_epi32(0x80C0E0), _mm256_set1_epi32(0x8080E0), beyond_two);
  const __m256i bytes = _mm256_or_si256(_mm256_or_si256(high, _mm256_slli_epi32(middle, 8)),
                                        _mm256_or_si256(_mm256_slli_epi32(low, 16), marks));
  const __m256i spread = _mm256_blendv_epi8(_mm256_slli_epi32(wide, 16), bytes, beyond_one);
  const auto ones = static_cast<uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(beyond_one)));
  const auto twos = static_cast<uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(beyond_two)));
  const uint32_t first = (ones & 0x0F) | (twos & 0x0F) << 4;
  const uint32_t second = ones >> 4 | (twos & 0xF0);
  const __m128i first_order = load_half(kTripleOrders[first].data());
  const __m128i second_order = load_half(kTripleOrders[second].data());
  store_half(out, _mm_shuffle_epi8(_mm256_castsi256_si128(spread), first_order));
  out += 4 + std::popcount(first);
  store_half(out, _mm_shuffle_epi8(_mm256_extracti128_si256(spread, 1), second_order));
  return out + 4 + std::popcount(second);
}

ZORVCRT_AVX2_INLINED char *put_step(__m256i units, char *out) {
  const __m128i first = _mm256_castsi256_si128(units);
  const __m128i second = _mm256_extracti128_si256(units, 1);
  if (has_none(units, 0xFFFF & ~kOneByteLimit)) {
    store_half(out, _mm_packus_epi16(first, second));
    return out + kStep;
  }
  if (has_none(units, 0xFFFF & ~kTwoByteLimit)) return put_pairs(second, put_pairs(first, out));
  return put_triples(second, put_triples(first, out));
}

}  // namespace

ZORVCRT_AVX2 uint64_t utf8_length_wide(const uint16_t *units, std::size_t n) {
  const __m256i ones = _mm256_set1_epi16(1);
  __m256i sums = _mm256_setzero_si256();
  std::size_t i = 0;
  for (; i + kStep <= n; i += kStep) {
    const __m256i loaded = load_wide(units + i);
    // 1 for every limit that a unit exceeds
    const __m256i one = _mm256_min_epu16(_mm256_subs_epu16(loaded, _mm256_set1_epi16(kOneByteLimit)), ones);
    const __m256i two = _mm256_min_epu16(_mm256_subs_epu16(loaded, _mm256_set1_epi16(kTwoByteLimit)), ones);
    sums = _mm256_add_epi32(sums, _mm256_madd_epi16(_mm256_add_epi16(one, two), ones));
  }
  alignas(32) std::array<uint32_t, 8> parts;
  store_wide(parts.data(), sums);
  uint64_t length = i;
  for (const uint32_t part : parts) {
    length += part;
  }
  return length + utf8_length_plain(units + i, n - i);
}

ZORVCRT_AVX2 char *utf8_convert_wide(const uint16_t *units, std::size_t n, char *out) {
  std::size_t i = 0;
  for (; i + kStep <= n; i += kStep) {
    out = put_step(load_wide(units + i), out);
  }
  return i == n ? out : utf8_convert_plain(units + i, n - i, out);
}

}  // namespace zorvcrt
