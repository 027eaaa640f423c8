// The vectors of long containers, made when a parse ends.
#pragma once

#include <cstdlib>
#include <cstring>

#include "item_list.hpp"

namespace zorvcrt {

/// The vector of a container; null when memory runs out.
template <class Item>
Item **new_vector(void *const *items, std::size_t count, std::size_t capacity) {
  const std::size_t used = count * sizeof(Item *);
  const std::size_t size = capacity * sizeof(Item *);
  auto *block = static_cast<char *>(std::malloc(size));
  if (block == nullptr) return nullptr;
  std::memcpy(block, items, used);
  std::memset(block + used, 0, size - used);
  void *vector = block;
  return static_cast<Item **>(vector);
}

/// Long containers that are closed while the rest of the document is still being parsed, and that get their
/// vectors at its end. Before this libc's heap gives out a large block it merges all small ones that were
/// ever released; at the end most of those are in use again. Asked for in between, such blocks took a seventh
/// of the time of a document with long lists.
class LateVectors {
 public:
  LateVectors() = default;
  LateVectors(const LateVectors &) = delete;
  LateVectors &operator=(const LateVectors &) = delete;
  static bool are_for(std::size_t capacity) { return capacity * sizeof(void *) >= kLargeBlock; }

  /// Takes the items of a container over, whose count and capacity are set. False when memory runs out.
  [[nodiscard]] bool take(ZJsonValue *container, void *const *items, std::size_t count) {
    const std::size_t size = items_.size();
    if (items_.push(container) && items_.push(items, count)) return true;
    items_.cut(size);
    return false;
  }

  /// Gives all containers their vectors. False when memory runs out.
  ///
  /// A small block is asked for behind each, and released: a large block that is released beside free memory
  /// becomes one with it, and when the whole exceeds 64 KiB this libc's heap merges all small blocks released
  /// until then. That took a quarter of the time of a document with two long lists.
  [[nodiscard]] bool finish() {
    std::size_t separators = 0;
    bool filled = true;
    while (filled && at_ < items_.size()) {
      filled = fill_next();
      if (filled) *items_.from(separators++) = std::malloc(sizeof(ZJsonValue));
    }
    for (std::size_t i = 0; i < separators; ++i) {
      std::free(*items_.from(i));
    }
    return filled;
  }

  /// Releases the items that still have no vector; their containers are owned by what holds them.
  void release() {
    for (; at_ < items_.size(); at_ += 1 + items_below_next()) {
      const bool is_array = next()->type == ZJSON_ARRAY;
      for (std::size_t i = 1; i <= items_below_next(); ++i) {
        delete_item(*items_.from(at_ + i), is_array);
      }
    }
  }

 private:
  static constexpr std::size_t kLargeBlock = 1024;

  // The first container that still waits.
  ZJsonValue *next() { return static_cast<ZJsonValue *>(*items_.from(at_)); }
  std::size_t items_below_next() {
    const ZJsonValue *container = next();
    return static_cast<std::size_t>(container->type == ZJSON_ARRAY ? container->array->count
                                                                   : container->object->count);
  }

  bool fill_next() {
    void *const *items = items_.from(at_ + 1);
    ZJsonValue *container = next();
    const bool filled = container->type == ZJSON_ARRAY
                            ? fill(*container->array, &ZJsonArray::items, items)
                            : fill(*container->object, &ZJsonObject::members, items);
    if (filled) at_ += 1 + items_below_next();
    return filled;
  }

  template <class Container, class Item>
  static bool fill(Container &container, Item **Container::*slots, void *const *items) {
    container.*slots = new_vector<Item>(items, static_cast<std::size_t>(container.count),
                                        static_cast<std::size_t>(container.capacity));
    return container.*slots != nullptr;
  }

  ItemList items_;  // a container and its items, the next container and its items, ...
  std::size_t at_ = 0;
};

}  // namespace zorvcrt
