// The list of owned texts: an array of slots, with a binary search whose every probe is fixed, because it
// decides where among equal texts a new one goes.
#include "strptrlist.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "fixed_text.hpp"
#include "handles.hpp"

namespace {

constexpr uint64_t kSlotGroup = 32;
constexpr uint64_t kLargestCapacity = UINT64_MAX / sizeof(char *);

using Item = zorvcrt::UniqueBlock<char>;

const char *text_or_empty(const char *text) {
  return text == nullptr ? "" : text;
}

// A copy of n bytes and a terminator; of a null text, n zero bytes. Empty when memory is short.
Item copy_of(const char *text, uint64_t n) {
  if (n == UINT64_MAX) return nullptr;
  Item copy(static_cast<char *>(ZfxMemAlloc(n + 1)));
  if (copy) ZfxMemCopy(copy.get(), text, n);
  return copy;
}

// Moves the slots from the index on up by one and puts the item there; the slots have room.
void insert_at(strptrlist &list, uint64_t index, Item item) {
  char **slot = list.items + index;
  std::memmove(slot + 1, slot, (list.count - index) * sizeof *slot);
  *slot = item.release();
  ++list.count;
}

struct Probe {
  int64_t index;
  bool is_equal;  // the text at the index equals the one looked for
};

// The search over two texts or more: halving to a single place, or ending early at an equal text.
Probe narrowed_down(const strptrlist &list, const char *text) {
  const auto last = static_cast<int64_t>(list.count) - 1;
  int64_t low = 0;
  int64_t high = last;
  int64_t middle = static_cast<int64_t>(list.count) / 2;
  while (low < high) {
    const int order = std::strcmp(text, list.items[middle]);
    if (order == 0) return {middle, true};
    if (order > 0) {
      low = std::min(middle + 1, last);
    } else if (middle == 0) {
      return {(low + 1) / 2, false};
    } else {
      high = middle - 1;
    }
    middle = (low + high + 1) / 2;
  }
  return {middle, false};
}

uint64_t insertion_index(const strptrlist &list, const char *text) {
  const Probe probe = narrowed_down(list, text);
  const bool in_front = probe.is_equal || std::strcmp(text, list.items[probe.index]) <= 0;
  return static_cast<uint64_t>(in_front ? probe.index : probe.index + 1);
}

bool is_slot(const strptrlist *list, int32_t index) {
  return list != nullptr && index >= 0 && static_cast<uint64_t>(index) < list->count;
}

}  // namespace

strptrlist *strptrlist_new(void) {
  auto list = zorvcrt::allocate_record<strptrlist>();
  if (!list) return nullptr;
  list->items = static_cast<char **>(ZfxMemAlloc(kSlotGroup * sizeof(char *)));
  if (list->items == nullptr) return nullptr;
  list->capacity = kSlotGroup;
  return list.release();
}

int32_t strptrlist_ensuresize(strptrlist *list, uint64_t wanted) {
  if (list == nullptr) return -1;
  if (list->capacity > wanted) return 0;
  const uint64_t added = wanted / kSlotGroup * kSlotGroup + kSlotGroup;
  if (wanted > kLargestCapacity || added > kLargestCapacity - list->capacity) return -1;
  void *items = ZfxMemRealloc(list->items, (list->capacity + added) * sizeof(char *));
  if (items == nullptr) return -1;
  list->items = static_cast<char **>(items);
  list->capacity += added;
  return 0;
}

int32_t strptrlist_ladd(strptrlist *list, const char *text, uint64_t n) {
  if (list == nullptr || strptrlist_ensuresize(list, list->count + 1) != 0) return -1;
  Item item = copy_of(text, n);
  if (!item) return -1;
  insert_at(*list, list->count, std::move(item));
  return 0;
}

int32_t strptrlist_add(strptrlist *list, const char *text) {
  return strptrlist_ladd(list, text, zorvcrt::view_of(text).size());
}

char *strptrlist_get(const strptrlist *list, int32_t index) {
  return is_slot(list, index) ? list->items[index] : nullptr;
}

int32_t strptrlist_add_sorted(strptrlist *list, const char *text) {
  if (list == nullptr || list->count == 0) return strptrlist_add(list, text);
  if (strptrlist_ensuresize(list, list->count + 1) != 0) return -1;
  text = text_or_empty(text);
  Item item(ZfxStrDup(text));
  if (!item) return -1;
  insert_at(*list, insertion_index(*list, text), std::move(item));
  return 0;
}

int32_t strptrlist_find_sorted(const strptrlist *list, const char *text) {
  if (list == nullptr || list->count == 0) return -1;
  text = text_or_empty(text);
  const Probe probe = narrowed_down(*list, text);
  const bool found = probe.is_equal || std::strcmp(text, list->items[probe.index]) == 0;
  return found && probe.index <= INT32_MAX ? static_cast<int32_t>(probe.index) : -1;
}

int32_t strptrlist_remove_at(strptrlist *list, int32_t index) {
  if (!is_slot(list, index)) return -1;
  char **slot = list->items + index;
  ZfxMemFree(*slot);
  --list->count;
  std::memmove(slot, slot + 1, (list->count - static_cast<uint64_t>(index)) * sizeof *slot);
  list->items[list->count] = nullptr;
  return 0;
}

void strptrlist_clear(strptrlist *list) {
  if (list == nullptr) return;
  for (uint64_t i = 0; i < list->count; ++i) {
    ZfxMemFree(std::exchange(list->items[i], nullptr));
  }
  list->count = 0;
}

void strptrlist_delete(strptrlist *list) {
  if (list == nullptr) return;
  strptrlist_clear(list);
  ZfxMemFree(list->items);
  ZfxMemFree(list);
}
