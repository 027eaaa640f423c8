// The long vectors of a document, released before everything else of it.
//
// When a block that is released becomes 64 KiB or more of free memory, with its neighbours, this libc's heap
// merges all small blocks that were released until then. The next document has to be cut out of large blocks
// again, and its own long vectors lie beside free memory in their turn. That took a sixth of the time of a
// document with long lists. A long vector that is released first finds no small blocks to be merged.
#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "errno_keeper.hpp"
#include "records.hpp"

namespace zorvcrt {

/// What a container knows of long vectors, so that they are found without a walk over the whole document. It
/// stands in the four bytes between the type of a value and its payload, which mean nothing to anybody else,
/// and is a hint and no more: whatever stands there, the same blocks are released in another order.
class VectorHint {
 public:
  enum : uint32_t { kNone = 0, kOwn = 1, kBelow = 2 };

  static uint32_t of(const ZJsonValue *value) {
    uint32_t hint = kNone;
    std::memcpy(&hint, place_in(value), sizeof hint);
    return hint;
  }
  static void add(ZJsonValue *value, uint32_t more) {
    const uint32_t hint = of(value) | more;
    std::memcpy(const_cast<char *>(place_in(value)), &hint, sizeof hint);
  }

 private:
  static_assert(offsetof(ZJsonValue, integer) == sizeof(ZJsonType) + sizeof(uint32_t));
  static const char *place_in(const ZJsonValue *value) {
    const void *record = value;
    return static_cast<const char *>(record) + sizeof(ZJsonType);
  }
};

/// Releases long vectors at the beginning of its life; until its end the containers have their items in
/// pages.
class EarlyVectors {
 public:
  EarlyVectors() = default;
  explicit EarlyVectors(ZJsonValue *top) {
    if (VectorHint::of(top) != VectorHint::kNone) release_below(top);
  }
  ~EarlyVectors() {
    if (pages_ != nullptr) ::munmap(pages_, size_);
  }
  EarlyVectors(const EarlyVectors &) = delete;
  EarlyVectors &operator=(const EarlyVectors &) = delete;

  /// Whether a vector is none of the heap any more.
  [[nodiscard]] bool hold(const void *vector) const {
    const auto address = reinterpret_cast<uintptr_t>(vector);
    const auto first = reinterpret_cast<uintptr_t>(pages_);
    return address >= first && address < first + size_;
  }

 private:
  // Fewer items are no 64 KiB. Fetching pages for them takes 8 us, twice as long as parsing and releasing a
  // list of 130 numbers.
  static constexpr std::size_t kWorthIt = 65536 / sizeof(void *);

  // As deep as the parser leaves hints.
  static constexpr int kLevels = 200;

  template <class Visit>
  static void for_each_long(ZJsonValue *value, int levels, const Visit &visit) {
    const uint32_t hint = VectorHint::of(value);
    const int32_t count = items_below(value);
    if ((hint & VectorHint::kBelow) != 0 && levels > 0) {
      for (int32_t i = 0; i < count; ++i) {
        ZJsonValue *item = value_at(value, i);
        if (item != nullptr) for_each_long(item, levels - 1, visit);
      }
    }
    if ((hint & VectorHint::kOwn) != 0 && count > 0) visit(*value, static_cast<std::size_t>(count));
  }

  static ZJsonValue *value_at(const ZJsonValue *container, int32_t index) {
    if (container->type == ZJSON_ARRAY) return container->array->items[index];
    const ZJsonMember *member = container->object->members[index];
    return member == nullptr ? nullptr : member->value;
  }

  [[gnu::noinline]] void release_below(ZJsonValue *top) {
    std::size_t items = 0;
    for_each_long(top, kLevels, [&](const ZJsonValue &, std::size_t count) { items += count; });
    if (items < kWorthIt) return;
    const ErrnoKeeper errno_keeper;
    void *pages =
        ::mmap(nullptr, items * sizeof(void *), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) return;  // then all are released in their turn
    pages_ = pages;
    size_ = items * sizeof(void *);
    auto *place = static_cast<char *>(pages);
    for_each_long(top, kLevels, [&](ZJsonValue &container, std::size_t count) {
      if (container.type == ZJSON_ARRAY) {
        move(container.array->items, place, count);
      } else {
        move(container.object->members, place, count);
      }
      place += count * sizeof(void *);
    });
  }

  template <class Item>
  static void move(Item **&vector, void *place, std::size_t count) {
    std::memcpy(place, vector, count * sizeof(Item *));
    std::free(vector);
    vector = static_cast<Item **>(place);
  }

  void *pages_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace zorvcrt
