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

/// One bit for each byte at which two blocks are the same.
inline unsigned equal_bytes(ByteBlock a, ByteBlock b) {
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(a, b)));
}

/// One bit for each byte of the block that is the character.
inline unsigned find_in_block(ByteBlock block, char c) {
  return equal_bytes(block, _mm_set1_epi8(c));
}

/// One bit for each byte of the block that is below a blank.
inline unsigned find_controls(ByteBlock block) {
  const ByteBlock highest = _mm_set1_epi8(' ' - 1);
  return equal_bytes(_mm_max_epu8(block, highest), highest);
}

/// The first so many bits, fewer than all.
inline unsigned lowest_bits(unsigned count) {
  return (1U << count) - 1;
}

}  // namespace zorvcrt

#endif
