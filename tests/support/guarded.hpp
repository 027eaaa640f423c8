// Content that ends where a page ends, with a page behind it (and one in front of it) that nobody may touch.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <stdexcept>

namespace support {

/// An area of at most @p most bytes whose last byte is the last one in front of a guard.
class GuardedArea {
 public:
  explicit GuardedArea(std::size_t most)
      : page_(static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))), size_((most / page_ + 3) * page_) {
    mapping_ = static_cast<char *>(
        ::mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    if (mapping_ == MAP_FAILED || ::mprotect(mapping_, page_, PROT_NONE) != 0 ||
        ::mprotect(mapping_ + size_ - page_, page_, PROT_NONE) != 0) {
      throw std::runtime_error("no guarded area");
    }
  }
  GuardedArea(const GuardedArea &) = delete;
  GuardedArea &operator=(const GuardedArea &) = delete;
  ~GuardedArea() { ::munmap(mapping_, size_); }

  /// The last @p size bytes.
  [[nodiscard]] char *last(std::size_t size) const { return mapping_ + size_ - page_ - size; }

  /// The first bytes, right behind the guard in front.
  [[nodiscard]] char *first() const { return mapping_ + page_; }

  /// A copy of elements at the end.
  template <class Elements>
  auto *holding(const Elements &elements) const {
    using Element = typename Elements::value_type;
    auto *const begin = static_cast<Element *>(static_cast<void *>(last(elements.size() * sizeof(Element))));
    std::copy(elements.begin(), elements.end(), begin);
    return begin;
  }

 private:
  std::size_t page_;
  std::size_t size_;
  char *mapping_;
};

}  // namespace support
