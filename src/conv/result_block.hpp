// Blocks for results that are handed to a caller.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "handles.hpp"

namespace zorvcrt {

/// A block of so many bytes that mean nothing, which the caller is about to write.
template <class T>
UniqueBlock<T> unwritten_block(uint64_t size) {
  return UniqueBlock<T>(static_cast<T *>(std::malloc(size)));
}

/// What ZfxMemAlloc() gives for the size, but with zeros only behind the first written bytes, which the
/// caller is about to write: filling a block that is overwritten at once takes as long as encoding into it.
template <class T>
UniqueBlock<T> result_block(uint64_t written, uint64_t size) {
  const uint64_t rounded = (size + 3) / 4 * 4;
  auto block = unwritten_block<T>(rounded);
  if (block) std::memset(block.get() + written, 0, rounded - written);
  return block;
}

}  // namespace zorvcrt
