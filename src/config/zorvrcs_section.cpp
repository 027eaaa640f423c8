// The list of a level's settings and its hash index.
#include "zorvrcs_section.hpp"

#include <cstdlib>
#include <cstring>
#include <new>

#include "small_block.hpp"

namespace zorvcrt::settings {

namespace {

// Spreads the bits of a word over all of it: a multiplication by 2^64 divided by the golden ratio, which only
// carries upwards, so the upper half is folded into the lower one before and after it.
uint64_t mixed(uint64_t word) {
  word = (word ^ (word >> 32)) * 0x9E3779B97F4A7C15U;
  return word ^ (word >> 32);
}

// Eight bytes a step, of which the last step repeats some: a byte a step would take as long as the rest of a
// look-up.
uint64_t hash_of(std::string_view text) {
  uint64_t hash = text.size();
  uint64_t word = 0;
  if (text.size() < sizeof word) {
    for (const char c : text) {
      word = word << 8 | static_cast<unsigned char>(c);
    }
    return mixed(hash ^ word);
  }
  const char *const last = text.data() + text.size() - sizeof word;
  for (const char *at = text.data(); at < last; at += sizeof word) {
    std::memcpy(&word, at, sizeof word);
    hash = mixed(hash ^ word);
  }
  std::memcpy(&word, last, sizeof word);
  return mixed(hash ^ word);
}

struct ItemDeleter {
  void operator()(Item *item) const {
    item->~Item();
    std::free(item);
  }
};
using UniqueItem = std::unique_ptr<Item, ItemDeleter>;

UniqueItem make_item(const Key &key, std::string_view value) {
  void *block = std::malloc(sizeof(Item));
  if (block == nullptr) return nullptr;
  UniqueItem item(new (block) Item);
  item->name = copy_of(key.name);
  item->value = copy_of(value);
  item->name_size = key.name.size();
  item->hash = key.hash;
  if (item->name == nullptr || item->value == nullptr) return nullptr;
  return item;
}

void link_before(Link &position, Link &link) {
  link.next = &position;
  link.previous = position.previous;
  position.previous->next = &link;
  position.previous = &link;
}

void unlink(Link &link) {
  link.previous->next = link.next;
  link.next->previous = link.previous;
}

}  // namespace

Key::Key(std::string_view text) : name(text), hash(hash_of(text)) {}

UniqueMalloc<char> copy_of(std::string_view text) {
  return UniqueMalloc<char>(new_text(text));
}

ItemIndex::~ItemIndex() {
  if (buckets_ != first_buckets_.data()) std::free(buckets_);
}

Item *ItemIndex::find(const Key &key) const {
  Item *item = bucket(key.hash).head;
  while (item != nullptr &&
         (item->hash != key.hash || std::string_view(item->name.get(), item->name_size) != key.name)) {
    item = item->chained;
  }
  return item;
}

void ItemIndex::insert(Item &item) {
  if (2 * item_count_ >= bucket_count_) grow();  // half full, nearly every chain has one item
  Item *&head = bucket(item.hash).head;
  item.chained = head;
  head = &item;
  ++item_count_;
}

void ItemIndex::remove(const Item &item) {
  Item **place = &bucket(item.hash).head;
  while (*place != &item) {
    place = &(*place)->chained;
  }
  *place = item.chained;
  --item_count_;
}

void ItemIndex::grow() {
  const std::size_t count = 2 * bucket_count_;
  auto *buckets = static_cast<Bucket *>(std::calloc(count, sizeof(Bucket)));
  if (buckets == nullptr) return;
  for (std::size_t i = 0; i < bucket_count_; ++i) {
    while (Item *item = buckets_[i].head) {
      buckets_[i].head = item->chained;
      Item *&head = buckets[item->hash & (count - 1)].head;
      item->chained = head;
      head = item;
    }
  }
  if (buckets_ != first_buckets_.data()) std::free(buckets_);
  buckets_ = buckets;
  bucket_count_ = count;
}

Section::~Section() {
  for (Item *item = first(); item != nullptr;) {
    Item *next = after(*item);
    ItemDeleter()(item);
    item = next;
  }
}

void Section::append(const Key &key, std::string_view value) {
  Item *item = make_item(key, value).release();
  if (item == nullptr) return;
  link_before(items_, *item);
  index_.insert(*item);
}

void Section::erase(Item *item) {
  index_.remove(*item);
  unlink(*item);
  ItemDeleter()(item);
}

}  // namespace zorvcrt::settings
