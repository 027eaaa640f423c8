// Blocks for results that are handed to a caller.
#pragma once

#include <cstdint>
#include <cstdlib>

#include "handles.hpp"

namespace zorvcrt {

/// A block of so many bytes that mean nothing, which the caller is about to write.
template <class T>
UniqueBlock<T> unwritten_block(uint64_t size) {
  return UniqueBlock<T>(static_cast<T *>(std::malloc(size)));
}

}  // namespace zorvcrt
