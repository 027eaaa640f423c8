// Sixteen bytes of a text looked at together, in the registers that every processor of this kind has. No part
// of a portable build.
#pragma once

#ifndef ZORVCRT_PORTABLE

#include <emmintrin.h>

#include <cstring>

namespace zorvcrt {

using ByteBlock = __m128i;

/// A bit for each byte of a block.
inline constexpr unsigned kAllBytes = 0xFFFF;

inline ByteBlock load_block(const char *text) {
  ByteBlock block;
  std::memcpy(&block, text, sizeof block);
  return block;
}

/// One bit for each byte of the block that is not 0; all bits of it, or none, are set.
inline unsigned bits_of(ByteBlock marks) {
  return static_cast<unsigned>(_mm_movemask_epi8(marks));
}

/// One bit for each byte at which two blocks are the same.
inline unsigned equal_bytes(ByteBlock a, ByteBlock b) {
  return bits_of(_mm_cmpeq_epi8(a, b));
}

/// Marks each byte of the block that is the character.
inline ByteBlock marks_of(ByteBlock block, char c) {
  return _mm_cmpeq_epi8(block, _mm_set1_epi8(c));
}

/// Marks each byte of the block that is below a blank.
inline ByteBlock marks_of_controls(ByteBlock block) {
  const ByteBlock highest = _mm_set1_epi8(' ' - 1);
  return _mm_cmpeq_epi8(_mm_max_epu8(block, highest), highest);
}

/// Marks what either marks.
inline ByteBlock either(ByteBlock a, ByteBlock b) {
  return _mm_or_si128(a, b);
}

/// One bit for each byte of the block that is the character.
inline unsigned find_in_block(ByteBlock block, char c) {
  return bits_of(marks_of(block, c));
}

/// One bit for each byte of the block that is below a blank.
inline unsigned find_controls(ByteBlock block) {
  return bits_of(marks_of_controls(block));
}

/// The first so many bits, fewer than all.
inline unsigned lowest_bits(unsigned count) {
  return (1U << count) - 1;
}

}  // namespace zorvcrt

#endif
