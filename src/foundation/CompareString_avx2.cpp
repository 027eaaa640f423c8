// The comparison of two texts without regard to case on AVX2 registers, a block at a time. Letter by letter
// through the table of the locale it takes 24 to 79 times as long as strcasecmp(). The usual case is one
// function without a stack frame: with calls between its parts, short texts take twice as long.
#include <algorithm>
#include <climits>
#include <cstring>

#include "CompareString_kernels.hpp"
#include "wide_block.hpp"

namespace zorvcrt {

namespace {

constexpr char kCaseBit = 'a' - 'A';
constexpr std::size_t kLetters = 26;

// Whether the locale takes each letter of ASCII and its other case for the same, as most do (in Turkish ones
// i and I are not a pair). Then two blocks that are the same but for the case of such letters match: all
// their other bytes are identical, and the table, whatever it holds for them, maps both alike.
ZORVCRT_AVX2_INLINED bool pairs_ascii_letters(const int *upper) {
  constexpr std::size_t kStep = kWideBlock / sizeof *upper;
  const auto differences = [upper](std::size_t at) __attribute__((target("avx2"), always_inline)) {
    return _mm256_xor_si256(load_wide(upper + 'a' + at), load_wide(upper + 'A' + at));
  };
  static_assert(kLetters > 3 * kStep && kLetters <= 4 * kStep);
  const __m256i all = _mm256_or_si256(_mm256_or_si256(differences(0), differences(kStep)),
                                      _mm256_or_si256(differences(2 * kStep), differences(kLetters - kStep)));
  return _mm256_testz_si256(all, all) != 0;
}

// One bit for each byte at which the blocks are the same but for the case of an ASCII letter.
ZORVCRT_AVX2_INLINED uint32_t same_letters(__m256i x, __m256i y) {
  const __m256i case_bit = _mm256_set1_epi8(kCaseBit);
  // a..z become the largest of the signed numbers
  const __m256i to_largest = _mm256_set1_epi8(static_cast<char>(SCHAR_MAX - 'z'));
  const __m256i below_letters = _mm256_set1_epi8(static_cast<char>(SCHAR_MAX - kLetters));
  const __m256i letter =
      _mm256_cmpgt_epi8(_mm256_add_epi8(_mm256_or_si256(x, case_bit), to_largest), below_letters);
  const __m256i differences = _mm256_xor_si256(x, y);
  return zero_bytes(_mm256_andnot_si256(_mm256_and_si256(letter, case_bit), differences));
}

// The first and the last word of a text of one to two words, one behind the other.
ZORVCRT_AVX2_INLINED __m256i ends_of(const char *text, std::size_t count) {
  if (count >= sizeof(__m128i)) {
    return _mm256_set_m128i(load_half(text + count - sizeof(__m128i)), load_half(text));
  }
  if (count >= sizeof(int64_t)) {
    int64_t first;
    int64_t last;
    std::memcpy(&first, text, sizeof first);
    std::memcpy(&last, text + count - sizeof last, sizeof last);
    return _mm256_set_epi64x(0, 0, last, first);
  }
  int32_t first;
  int32_t last;
  std::memcpy(&first, text, sizeof first);
  std::memcpy(&last, text + count - sizeof last, sizeof last);
  return _mm256_set_epi32(0, 0, 0, 0, 0, 0, last, first);
}

// How many leading bytes match by blocks, from four bytes on; of fewer bytes none.
ZORVCRT_AVX2_INLINED std::size_t matching_blocks(const char *a, const char *b, std::size_t count) {
  if (count < sizeof(int32_t)) return 0;
  if (count < kWideBlock) {
    const uint32_t same = same_letters(ends_of(a, count), ends_of(b, count));
    if (same == kAllOfWideBlock) return count;
    const std::size_t word = std::min(std::bit_floor(count), sizeof(__m128i));
    const auto matching = static_cast<std::size_t>(std::countr_one(same));
    return matching < word ? matching : std::min(count, count + matching - 2 * word);
  }
  for (std::size_t i = 0;; i = std::min(i + kWideBlock, count - kWideBlock)) {
    const uint32_t same = same_letters(load_wide(a + i), load_wide(b + i));
    if (same != kAllOfWideBlock) return i + static_cast<std::size_t>(std::countr_one(same));
    if (i + kWideBlock == count) return count;
  }
}

// The exact answer, where blocks do not give it: they differ, or are too short, or the locale has pairs of
// its own. Kept out of line, so that the usual case needs no stack frame.
ZORVCRT_AVX2 __attribute__((noinline)) Outcome compare_with_table(const char *a, std::size_t a_size,
                                                                  const char *b, std::size_t b_size,
                                                                  const int *upper) {
  const bool paired = pairs_ascii_letters(upper);
  const auto next = [=](std::size_t position, std::size_t left) __attribute__((target("avx2"))) {
    return paired ? matching_blocks(a + position, b + position, left) : 0;
  };
  return outcome_from(next(0, std::min(a_size, b_size)), a, a_size, b, b_size, upper, next);
}

ZORVCRT_AVX2_INLINED Outcome compared(const char *a, std::size_t a_size, const char *b, std::size_t b_size,
                                      const int *upper) {
  const bool agree =
      a_size == b_size && matching_blocks(a, b, a_size) == a_size && pairs_ascii_letters(upper);
  return agree ? Outcome::kSame : compare_with_table(a, a_size, b, b_size, upper);
}

}  // namespace

ZORVCRT_AVX2 Outcome compare_wide(const char *a, const char *b, const int *upper) {
  return compared(a, length_of(a), b, length_of(b), upper);
}

ZORVCRT_AVX2 Outcome compare_beginnings_wide(const char *a, const char *b, std::size_t limit,
                                             const int *upper) {
  return compared(a, std::min(length_within(a, limit), limit), b, std::min(length_within(b, limit), limit),
                  upper);
}

}  // namespace zorvcrt
