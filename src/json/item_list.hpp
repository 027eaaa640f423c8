// The lists that a parser keeps while containers are open.
#pragma once

#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <type_traits>

#include "records.hpp"

namespace zorvcrt {

/// Releases an item of an array, else one of an object.
inline void delete_item(void *item, bool is_array) {
  if (is_array) {
    ZJsonValue_Delete(static_cast<ZJsonValue *>(item));
  } else {
    ZJsonMember_Delete(static_cast<ZJsonMember *>(item));
  }
}

/// A stack of pointers: some in place, more of them in pages of their own. Never in a block of the heap:
/// before this libc's heap gives out a large one, it goes through all small blocks that were ever released,
/// which took a third of the time of a document with long lists.
class ItemList {
 public:
  ItemList() {
    items_ = end_ = in_place_.data();
    full_ = items_ + kInPlace - kCapacityStep;
  }
  ~ItemList() {
    if (items_ != in_place_.data()) ::munmap(items_, size_in_bytes());
  }
  ItemList(const ItemList &) = delete;
  ItemList &operator=(const ItemList &) = delete;

  [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(end_ - items_); }
  [[nodiscard]] void **from(std::size_t index) { return items_ + index; }
  void cut(std::size_t size) { end_ = items_ + size; }

  /// The place of a new last item, null at first; it stays until the next is added. Null when memory runs
  /// out. A vector's first room is always free behind the last item.
  [[nodiscard]] void **add() {
    if (end_ == full_ && !grow(1)) return nullptr;
    void **place = end_++;
    *place = nullptr;
    return place;
  }
  /// False when memory runs out.
  [[nodiscard]] bool push(void *item) {
    if (end_ == full_ && !grow(1)) return false;
    void **place = end_++;
    *place = item;
    return true;
  }
  [[nodiscard]] bool push(void *const *items, std::size_t count) {
    if (full_ - end_ < static_cast<std::ptrdiff_t>(count) && !grow(count)) return false;
    end_ = std::copy_n(items, count, end_);
    return true;
  }

 private:
  static constexpr std::size_t kInPlace = 512;
  static constexpr std::size_t kFirstPages = 8192;  // items

  [[nodiscard]] std::size_t room() const { return static_cast<std::size_t>(full_ - items_) + kCapacityStep; }
  [[nodiscard]] std::size_t size_in_bytes() const { return room() * sizeof(void *); }

  // Makes room for so many more items.
  [[gnu::noinline]] bool grow(std::size_t count) {
    const std::size_t size = this->size();
    std::size_t room = std::max(2 * this->room(), kFirstPages);
    while (room < size + count + kCapacityStep) {
      room *= 2;
    }
    const bool in_place = items_ == in_place_.data();
    const std::size_t bytes = room * sizeof(void *);
    void *pages = in_place
                      ? ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)
                      : ::mremap(items_, size_in_bytes(), bytes, MREMAP_MAYMOVE);
    if (pages == MAP_FAILED) return false;
    if (in_place) std::copy_n(items_, size, static_cast<void **>(pages));
    items_ = static_cast<void **>(pages);
    end_ = items_ + size;
    full_ = items_ + room - kCapacityStep;
    return true;
  }

  std::array<void *, kInPlace> in_place_;
  void **items_ = nullptr;
  void **end_ = nullptr;   // behind the last item
  void **full_ = nullptr;  // where there is room for a vector's first items, and for no more
};

}  // namespace zorvcrt
