// Allocation failures on demand. A test program that includes this header has malloc, calloc, realloc, free
// and strdup of its own in front of the process's (see tests/CMakeLists.txt); they behave like them until a
// failure is ordered.
#pragma once

#include <cstddef>

namespace support {

/// From construction to destruction, or to stop(), the allocation number @p first (from 1) fails; with
/// @p persistent every later one fails too. Requests of this thread only, and also those of the test itself.
class FailingAllocator {
 public:
  explicit FailingAllocator(std::size_t first, bool persistent = false);
  ~FailingAllocator() { stop(); }
  FailingAllocator(const FailingAllocator &) = delete;
  FailingAllocator &operator=(const FailingAllocator &) = delete;

  /// Back to normal. Tells whether an allocation has failed.
  bool stop();

 private:
  bool failed_ = false;
};

/// From construction to destruction a request for more than the limit fails.
class LimitedAllocator {
 public:
  explicit LimitedAllocator(std::size_t limit);
  ~LimitedAllocator();
  LimitedAllocator(const LimitedAllocator &) = delete;
  LimitedAllocator &operator=(const LimitedAllocator &) = delete;
};

/// Counts the requests since the last call in this thread.
std::size_t allocations_since_last_call();

/// Counts the blocks of the whole process that are in use. What the C library keeps for itself is among them.
long live_blocks();

}  // namespace support
