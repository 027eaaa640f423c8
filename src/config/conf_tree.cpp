// Building, changing and releasing the tree of a configuration, on the process heap.
#include "conf_tree.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace zorvcrt {

namespace {

constexpr std::size_t kSmallestBlock = 1024;
constexpr std::size_t kLargestBlock = 65536;

// Writes a text and its terminator. Gives the address behind it.
char *put_text(char *area, std::string_view text) {
  if (!text.empty()) std::memcpy(area, text.data(), text.size());
  area[text.size()] = '\0';
  return area + text.size() + 1;
}

Entry *new_entry(Arena &arena, std::string_view key, std::string_view value) {
  void *room = arena.take(sizeof(Entry) + key.size() + value.size() + 2);
  if (room == nullptr) return nullptr;
  auto *entry = static_cast<Entry *>(std::memset(room, 0, sizeof(Entry)));
  entry->key = static_cast<char *>(room) + sizeof(Entry);
  entry->value = put_text(entry->key, key);
  put_text(entry->value, value);
  entry->hash = name_hash(key);
  return entry;
}

Section *new_section(Arena &arena, std::string_view name) {
  void *room = arena.take(sizeof(Section) + name.size() + 1);
  if (room == nullptr) return nullptr;
  auto *section = static_cast<Section *>(std::memset(room, 0, sizeof(Section)));
  section->name = static_cast<char *>(room) + sizeof(Section);
  put_text(section->name, name);
  section->hash = name_hash(name);
  section->arena = &arena;
  return section;
}

void release_section(Section &section) {
  section.index.release();
  if (!section.has_own_values) return;
  for (Entry *entry = section.first(); entry != nullptr; entry = entry->next_node()) {
    if (entry->owns_value) std::free(entry->value);
  }
}

}  // namespace

void *Arena::take(std::size_t size) {
  size = (size + alignof(void *) - 1) / alignof(void *) * alignof(void *);
  if (size > left_) {
    const std::size_t room = std::max({size, next_size_, kSmallestBlock});
    auto *block = static_cast<Block *>(std::malloc(sizeof(Block) + room));
    if (block == nullptr) return nullptr;
    block->next = blocks_;
    blocks_ = block;
    free_ = reinterpret_cast<char *>(block + 1);
    left_ = room;
    next_size_ = std::min(2 * room, kLargestBlock);
  }
  left_ -= size;
  return std::exchange(free_, free_ + size);
}

void Arena::adopt(Arena &other) {
  if (other.blocks_ == nullptr) return;
  Block *last = other.blocks_;
  while (last->next != nullptr) {
    last = last->next;
  }
  last->next = std::exchange(blocks_, std::exchange(other.blocks_, nullptr));
  other.left_ = 0;
}

void Arena::release() {
  while (blocks_ != nullptr) {
    std::free(std::exchange(blocks_, blocks_->next));
  }
  left_ = 0;
}

Configuration *new_configuration(const char *file_name) {
  auto *configuration = static_cast<Configuration *>(std::calloc(1, sizeof(Configuration)));
  if (configuration == nullptr) return nullptr;
  configuration->file_name = ::strdup(file_name);
  configuration->last = new_section(configuration->arena, "");
  configuration->sections = configuration->last;
  if (configuration->file_name != nullptr && configuration->last != nullptr) return configuration;
  delete_configuration(configuration);
  return nullptr;
}

void delete_configuration(Configuration *configuration) {
  for (Section *section = configuration->first(); section != nullptr; section = section->next_node()) {
    release_section(*section);
  }
  configuration->index.release();
  configuration->arena.release();
  std::free(configuration->file_name);
  std::free(configuration);
}

Section *append_section(Configuration &configuration, std::string_view name) {
  Section *section = new_section(configuration.arena, name);
  if (section != nullptr) append_foreign_section(configuration, *section);
  return section;
}

void append_foreign_section(Configuration &configuration, Section &section) {
  section.arena = &configuration.arena;
  section.next = nullptr;
  configuration.last->next = &section;
  configuration.last = &section;
  configuration.index.add_last(&section, configuration.first()->next_node());
}

Entry *append_entry(Section &section, std::string_view key, std::string_view value) {
  Entry *entry = new_entry(*section.arena, key, value);
  if (entry == nullptr) return nullptr;
  (section.last == nullptr ? section.entries : section.last->next) = entry;
  section.last = entry;
  section.index.add_last(entry, section.first());
  return entry;
}

Entry *prepend_entry(Section &section, std::string_view key, std::string_view value) {
  Entry *entry = new_entry(*section.arena, key, value);
  if (entry == nullptr) return nullptr;
  entry->next = section.entries;
  section.entries = entry;
  if (section.last == nullptr) section.last = entry;
  section.index.add_first(entry, section.first());
  return entry;
}

bool set_value(Section &section, Entry &entry, const char *value) {
  char *copy = ::strdup(value);
  if (copy == nullptr) return false;
  if (entry.owns_value) std::free(entry.value);
  entry.value = copy;
  entry.owns_value = true;
  section.has_own_values = true;
  return true;
}

Section *find_section(const Configuration &configuration, const char *name) {
  if (*name == '\0') return configuration.first();
  return configuration.index.find(name, configuration.first()->next_node());
}

}  // namespace zorvcrt
