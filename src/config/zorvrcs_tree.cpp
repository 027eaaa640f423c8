// Look-ups and changes across the levels, and the walk over all settings.
#include "zorvrcs_tree.hpp"

#include <cstdlib>
#include <new>

namespace zorvcrt::settings {

Section &Tree::section(int32_t level) {
  for (Section &section : sections_) {
    if (section.level() == level) return section;
  }
  return sections_.back();
}

std::size_t Tree::size() const {
  std::size_t size = 0;
  for (const Section &section : sections_) {
    size += section.size();
  }
  return size;
}

const char *Tree::find(std::string_view name, int32_t mask) const {
  const Key key(name);
  for (auto section = sections_.rbegin(); section != sections_.rend(); ++section) {
    if ((section->level() & mask) == 0) continue;
    if (const Item *item = section->find(key); item != nullptr) return item->value.get();
  }
  return nullptr;
}

void Tree::store(int32_t level, std::string_view name, std::string_view value) {
  const Key key(name);
  Section &target = section(level);
  target.establish();
  Item *item = target.find(key);
  if (item == nullptr) {
    if (!value.empty()) target.append(key, value);
  } else if (value.empty()) {
    erase(target, item);
  } else if (UniqueMalloc<char> copy = copy_of(value); copy != nullptr) {
    item->value = std::move(copy);
  }
}

bool Tree::remove(int32_t level, std::string_view name) {
  Section &target = section(level);
  Item *item = target.find(Key(name));
  if (item != nullptr) erase(target, item);
  return item != nullptr;
}

void Tree::note_variable(std::string_view name) {
  const Key key(name);
  for (const Section &section : sections_) {
    if (Item *item = section.find(key); item != nullptr) item->has_variable = true;
  }
}

void Tree::erase(Section &section, Item *item) {
  if (item == cursor_item_) cursor_item_ = section.after(*item);
  section.erase(item);
}

Item *Tree::rewind() {
  cursor_section_ = 0;
  cursor_item_ = sections_.front().first();
  settle_cursor();
  return cursor_item_;
}

const Item *Tree::advance(int32_t &level) {
  settle_cursor();
  const Item *item = cursor_item_;
  if (item != nullptr) {
    const Section &current = sections_[cursor_section_];
    level = current.level();
    cursor_item_ = current.after(*item);
  }
  return item;
}

// Moves on to the next section that has items, and behind the last one for good when there is none.
void Tree::settle_cursor() {
  while (cursor_item_ == nullptr && cursor_section_ < sections_.size()) {
    if (++cursor_section_ < sections_.size()) cursor_item_ = sections_[cursor_section_].first();
  }
}

UniqueTree make_tree() {
  void *block = std::malloc(sizeof(Tree));
  return UniqueTree(block == nullptr ? nullptr : new (block) Tree);
}

void TreeDeleter::operator()(Tree *tree) const {
  tree->~Tree();
  std::free(tree);
}

}  // namespace zorvcrt::settings
