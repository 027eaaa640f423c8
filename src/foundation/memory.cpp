// The heap wrappers: plain blocks of the process's allocator, zero-filled when new.
#include <cstdlib>
#include <cstring>

#include "small_block.hpp"
#include "zfxmemory.h"

namespace {

constexpr uint64_t kGranularity = 4;

// Up to here a block is cleared by us; above, calloc knows fresh pages to be zero.
constexpr uint64_t kSmallBlock = 1024;

uint64_t rounded_up(uint64_t size) {
  // A size that cannot be rounded is passed on as it is, for the allocator to refuse.
  return size > UINT64_MAX - (kGranularity - 1) ? size : (size + (kGranularity - 1)) & ~(kGranularity - 1);
}

}  // namespace

void *ZfxMemAlloc(uint64_t size) {
  const uint64_t rounded = rounded_up(size);
  return rounded <= kSmallBlock ? zorvcrt::zero_filled_small(rounded) : std::calloc(1, rounded);
}

void *ZfxMemRealloc(void *pointer, uint64_t size) {
  return pointer == nullptr ? ZfxMemAlloc(size) : std::realloc(pointer, size);
}

void ZfxMemFree(void *pointer) {
  std::free(pointer);
}

int32_t ZfxMemReadable(const void *pointer, uint64_t /*length*/) {
  return pointer != nullptr ? 1 : 0;
}

int32_t ZfxMemWriteable(const void *pointer, uint64_t length) {
  return ZfxMemReadable(pointer, length);
}

void *ZfxMemCopy(void *destination, const void *source, uint64_t length) {
  if (ZfxMemReadable(source, length) != 0 && ZfxMemWriteable(destination, length) != 0) {
    std::memmove(destination, source, length);
  }
  return destination;
}

char *ZfxStrDup(const char *string) {
  if (string == nullptr) return nullptr;
  return *string == '\0' ? static_cast<char *>(std::calloc(1, 1)) : strdup(string);
}
