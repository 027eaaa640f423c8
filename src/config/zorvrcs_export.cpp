// Export of settings to the environment, one by one and as a whole.
#include "zorvrcs_export.hpp"

#include <cstdlib>

#include "whitespace.hpp"
#include "zorvrcs_expand.hpp"

namespace zorvcrt::settings {

namespace {

// Its presence counts, whatever its value. It may be a setting itself, and then ends the export it is part
// of.
constexpr char kNoExport[] = "__QUORCONF_NOENV";

bool is_export_forbidden() {
  return std::getenv(kNoExport) != nullptr;
}

}  // namespace

void export_setting(const char *name, const char *value) {
  if (!is_export_forbidden()) ::setenv(name, value, 1);
}

void export_missing(const Tree &tree) {
  if (is_export_forbidden()) return;
  const Tree::Sections &sections = tree.sections();
  for (auto section = sections.rbegin(); section != sections.rend(); ++section) {
    for (const Item *item = section->last(); item != nullptr; item = section->before(*item)) {
      ::setenv(item->name.get(), item->value.get(), 0);
      if (view_of(item->name.get()) == kNoExport) return;
    }
  }
}

void add_setting(Tree &tree, int32_t level, const char *name, const char *value) {
  const UniqueMalloc<char> own_name = copy_of(trimmed(name));
  const UniqueMalloc<char> own_value = copy_of(trimmed_front(value));
  if (own_name == nullptr || own_value == nullptr) return;
  store_expanded(tree, level, own_name.get(), own_value.get());
  if ((level & QUOR_LEVEL_NONPRIVILEGED) != 0) export_setting(own_name.get(), own_value.get());
}

}  // namespace zorvcrt::settings
