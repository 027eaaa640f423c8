// The settings tree: the three levels in ascending order, look-ups across them, and the cursor of a walk.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>

#include "zorvrcs.h"
#include "zorvrcs_section.hpp"

namespace zorvcrt::settings {

class Tree {
 public:
  using Sections = std::array<Section, 3>;

  /// All levels, the lowest first, whether they have occurred or not.
  [[nodiscard]] const Sections &sections() const { return sections_; }

  /// The number of settings on all levels.
  [[nodiscard]] std::size_t size() const;

  /// Makes the level occur; see Section::exists().
  void establish(int32_t level) { section(level).establish(); }

  /// The value of the name at the highest level of the mask that has it, or null.
  [[nodiscard]] const char *find(std::string_view name, int32_t mask) const;

  /// Gives a name a value at a level: replaces or appends, or with an empty value removes.
  void store(int32_t level, std::string_view name, std::string_view value);

  /// Removes a name from a level; tells whether it was there.
  bool remove(int32_t level, std::string_view name);

  /// Notes at all levels that there is an environment variable of the name.
  void note_variable(std::string_view name);

  /// Puts the cursor on the first item of all and returns that, or null.
  Item *rewind();

  /// The item at the cursor, which moves on, and its level; null at the end and before the first rewind().
  const Item *advance(int32_t &level);

 private:
  // A level that is not one of the three is never stored to; it would count as non-privileged.
  Section &section(int32_t level);
  void settle_cursor();
  void erase(Section &section, Item *item);

  Sections sections_{Section(QUOR_LEVEL_PRIVILEGED), Section(QUOR_LEVEL_GROUP),
                     Section(QUOR_LEVEL_NONPRIVILEGED)};
  std::size_t cursor_section_ = sections_.size();
  Item *cursor_item_ = nullptr;  // the item that comes next, null when the section is used up
};

struct TreeDeleter {
  void operator()(Tree *tree) const;
};
using UniqueTree = std::unique_ptr<Tree, TreeDeleter>;

/// An empty tree, or nothing when memory ran out.
UniqueTree make_tree();

}  // namespace zorvcrt::settings
