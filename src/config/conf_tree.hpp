// The tree behind a Config: the public records with what finds, appends and releases their parts. Sections,
// entries and the texts read with them lie in large shared blocks, because a block for each of them takes
// twice the time of reading the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "conf.h"
#include "name_index.hpp"

namespace zorvcrt {

/// Memory that is given back all at once. Zero bytes are an empty arena.
class Arena {
 public:
  /// Room for size bytes, aligned for pointers; null when memory is short.
  void *take(std::size_t size);
  /// Takes over all that another arena holds.
  void adopt(Arena &other);
  void release();

 private:
  struct Block {
    Block *next;
  };
  Block *blocks_;
  char *free_;
  std::size_t left_;
  std::size_t next_size_;
};

struct Entry : ConfigEntry {
  Entry *next_in_bucket;
  uint32_t hash;
  bool owns_value;  // the value is a heap block of its own and no part of the arena

  [[nodiscard]] Entry *next_node() const { return static_cast<Entry *>(next); }
};

struct Section : ConfigSection {
  Section *next_in_bucket;
  uint32_t hash;
  bool has_own_values;  // some entry owns its value
  Entry *last;
  Arena *arena;
  NameIndex<Entry> index;

  [[nodiscard]] Section *next_node() const { return static_cast<Section *>(next); }
  [[nodiscard]] Entry *first() const { return static_cast<Entry *>(entries); }
};

struct Configuration : Config {
  Section *last;
  Arena arena;
  NameIndex<Section> index;  // of the sections behind the unnamed one

  [[nodiscard]] Section *first() const { return static_cast<Section *>(sections); }
};

inline const char *name_of(const Entry &entry) {
  return entry.key;
}
inline const char *name_of(const Section &section) {
  return section.name;
}

/// A configuration with the unnamed section only; null when memory is short.
Configuration *new_configuration(const char *file_name);
void delete_configuration(Configuration *configuration);

/// Appends an empty section; null when memory is short.
Section *append_section(Configuration &configuration, std::string_view name);

/// Appends a section that was taken out of another configuration, whose arena is adopted later.
void append_foreign_section(Configuration &configuration, Section &section);

/// Add an entry at the end or at the head of a section; null when memory is short.
Entry *append_entry(Section &section, std::string_view key, std::string_view value);
Entry *prepend_entry(Section &section, std::string_view key, std::string_view value);

/// Gives an entry a copy of the value; false when memory is short.
bool set_value(Section &section, Entry &entry, const char *value);

Section *find_section(const Configuration &configuration, const char *name);
inline Entry *find_entry(const Section &section, const char *key) {
  return section.index.find(key, section.first());
}

/// Reads a file into a new configuration; null when it cannot be opened or memory is short.
Configuration *read_configuration(const char *file_name);

/// Reads an open file; null for null and when memory is short.
Configuration *read_configuration(const char *file_name, FILE *file);

}  // namespace zorvcrt
