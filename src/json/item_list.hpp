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
  ItemList() { items_ = in_place_.data(); }
  ~ItemList() {
    if (items_ != in_place_.data()) ::munmap(items_, size_in_bytes());
  }
  ItemList(const ItemList &) = delete;
  ItemList &operator=(const ItemList &) = delete;

  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] void **from(std::size_t index) { return items_ + index; }
  void cut(std::size_t size) { size_ = size; }

  /// False when memory runs out. A vector's first room is always free behind the last item.
  [[nodiscard]] bool push(void *item) {
    if (size_ + kCapacityStep >= room_ && !grow(size_ + 1)) return false;
    items_[size_++] = item;
    return true;
  }
  [[nodiscard]] bool push(void *const *items, std::size_t count) {
    if (size_ + count + kCapacityStep > room_ && !grow(size_ + count)) return false;
    std::copy_n(items, count, items_ + size_);
    size_ += count;
    return true;
  }

 private:
  static constexpr std::size_t kInPlace = 512;
  static constexpr std::size_t kFirstPages = 8192;  // items

  [[nodiscard]] std::size_t size_in_bytes() const { return room_ * sizeof(void *); }

  [[gnu::noinline]] bool grow(std::size_t size) {
    std::size_t room = std::max(2 * room_, kFirstPages);
    while (room < size + kCapacityStep + 1) {
      room *= 2;
    }
    const bool in_place = items_ == in_place_.data();
    const std::size_t bytes = room * sizeof(void *);
    void *pages = in_place
                      ? ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)
                      : ::mremap(items_, size_in_bytes(), bytes, MREMAP_MAYMOVE);
    if (pages == MAP_FAILED) return false;
    if (in_place) std::copy_n(items_, size_, static_cast<void **>(pages));
    items_ = static_cast<void **>(pages);
    room_ = room;
    return true;
  }

  std::array<void *, kInPlace> in_place_;
  void **items_ = nullptr;
  std::size_t size_ = 0;
  std::size_t room_ = kInPlace;
};

}  // namespace zorvcrt
