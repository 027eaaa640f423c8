// The block loops of the comparison family. Letter by letter through toupper() a comparison takes 24 to 79
// times as long as strcasecmp(), by blocks about 3 times.
#include "CompareString_blocks.hpp"

#include <bit>
#include <cstring>

#include "byte_block.hpp"

namespace {

int upper_of(char c, const int *upper) {
  return upper[static_cast<unsigned char>(c)];
}

std::size_t matching_by_table(const char *a, const char *b, std::size_t count, const int *upper) {
  std::size_t i = 0;
  while (i < count && (a[i] == b[i] || upper_of(a[i], upper) == upper_of(b[i], upper))) {
    ++i;
  }
  return i;
}

std::size_t matching_by_byte(const char *a, const char *b, std::size_t count) {
  std::size_t i = 0;
  while (i < count && a[i] == b[i]) {
    ++i;
  }
  return i;
}

#ifndef ZORVCRT_PORTABLE

using zorvcrt::ByteBlock;

constexpr std::size_t kBlock = sizeof(ByteBlock);
constexpr unsigned kAllBytes = 0xFFFF;
constexpr char kCaseBit = 'a' - 'A';
constexpr std::size_t kLetters = 26;

// Whether the locale takes each letter of ASCII and its other case for the same, as most do (in Turkish ones
// i and I are not a pair). Then two blocks that are the same but for the case of such letters match: all
// their other bytes are identical, and the table, whatever it holds for them, maps both alike.
bool pairs_ascii_letters(const int *upper) {
  return std::memcmp(upper + 'a', upper + 'A', kLetters * sizeof *upper) == 0;
}

ByteBlock with_ascii_upper_case(ByteBlock block) {
  const ByteBlock lower = _mm_and_si128(_mm_cmpgt_epi8(block, _mm_set1_epi8('a' - 1)),
                                        _mm_cmplt_epi8(block, _mm_set1_epi8('z' + 1)));
  return _mm_sub_epi8(block, _mm_and_si128(lower, _mm_set1_epi8(kCaseBit)));
}

#endif

}  // namespace

#ifdef ZORVCRT_PORTABLE

std::size_t zorvcrt::matching_bytes(const char *a, const char *b, std::size_t count) {
  return matching_by_byte(a, b, count);
}

std::size_t zorvcrt::matching_bytes_without_case(const char *a, const char *b, std::size_t count,
                                                 const int *upper) {
  return matching_by_table(a, b, count, upper);
}

#else

std::size_t zorvcrt::matching_bytes(const char *a, const char *b, std::size_t count) {
  std::size_t i = 0;
  for (; i + kBlock <= count; i += kBlock) {
    const unsigned equal = equal_bytes(load_block(a + i), load_block(b + i));
    if (equal != kAllBytes) return i + static_cast<std::size_t>(std::countr_one(equal));
  }
  return i + matching_by_byte(a + i, b + i, count - i);
}

std::size_t zorvcrt::matching_bytes_without_case(const char *a, const char *b, std::size_t count,
                                                 const int *upper) {
  const bool paired = count >= kBlock && pairs_ascii_letters(upper);
  std::size_t i = 0;
  for (; i + kBlock <= count; i += kBlock) {
    const ByteBlock x = load_block(a + i);
    const ByteBlock y = load_block(b + i);
    if (paired && equal_bytes(with_ascii_upper_case(x), with_ascii_upper_case(y)) == kAllBytes) continue;
    const std::size_t matching = matching_by_table(a + i, b + i, kBlock, upper);
    if (matching < kBlock) return i + matching;
  }
  return i + matching_by_table(a + i, b + i, count - i, upper);
}

#endif
