// One level of the settings: named values in the order in which they were added, with an index by name, so
// that neither reading nor asking walks the list.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "handles.hpp"

namespace zorvcrt::settings {

/// A name that is looked for, hashed once for all levels.
struct Key {
  explicit Key(std::string_view text);

  std::string_view name;
  uint64_t hash;
};

struct Link {
  Link *next = this;
  Link *previous = this;
};

/// A setting; its texts are its own and its value is never empty.
struct Item : Link {
  UniqueMalloc<char> name;
  UniqueMalloc<char> value;
  std::size_t name_size = 0;
  uint64_t hash = 0;
  Item *chained = nullptr;    // the next item of the same bucket
  bool has_variable = false;  // found or set in the environment by the export of the tree
};

/// The items by the hash of their names. Without memory to grow it only gets slower.
class ItemIndex {
 public:
  ItemIndex() = default;
  ItemIndex(const ItemIndex &) = delete;
  ItemIndex &operator=(const ItemIndex &) = delete;
  ~ItemIndex();

  [[nodiscard]] std::size_t size() const { return item_count_; }
  [[nodiscard]] Item *find(const Key &key) const;
  void insert(Item &item);
  void remove(const Item &item);

 private:
  struct Bucket {
    Item *head;
  };

  void grow();
  [[nodiscard]] Bucket &bucket(uint64_t hash) const { return buckets_[hash & (bucket_count_ - 1)]; }

  std::array<Bucket, 16> first_buckets_{};
  Bucket *buckets_ = first_buckets_.data();
  std::size_t bucket_count_ = first_buckets_.size();  // always a power of two
  std::size_t item_count_ = 0;
};

class Section {
 public:
  explicit Section(int32_t level) : level_(level) {}
  Section(const Section &) = delete;
  Section &operator=(const Section &) = delete;
  ~Section();

  [[nodiscard]] int32_t level() const { return level_; }

  /// Whether the level has occurred, be it without a setting that was kept.
  [[nodiscard]] bool exists() const { return exists_; }
  void establish() { exists_ = true; }

  [[nodiscard]] std::size_t size() const { return index_.size(); }

  /// The walk over the items; null is behind either end.
  [[nodiscard]] Item *first() const { return item_or_end(items_.next); }
  [[nodiscard]] Item *last() const { return item_or_end(items_.previous); }
  [[nodiscard]] Item *after(const Item &item) const { return item_or_end(item.next); }
  [[nodiscard]] Item *before(const Item &item) const { return item_or_end(item.previous); }

  [[nodiscard]] Item *find(const Key &key) const { return index_.find(key); }

  /// Adds a new name at the end. Without memory the setting is lost.
  void append(const Key &key, std::string_view value);
  void erase(Item *item);

 private:
  [[nodiscard]] Item *item_or_end(Link *link) const {
    return link == &items_ ? nullptr : static_cast<Item *>(link);
  }

  int32_t level_;
  bool exists_ = false;
  Link items_;  // the ring's sentinel
  ItemIndex index_;
};

/// A copy of the text on the process heap, or nothing when memory ran out.
UniqueMalloc<char> copy_of(std::string_view text);

}  // namespace zorvcrt::settings
