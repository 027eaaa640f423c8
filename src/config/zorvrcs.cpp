// The exported functions over the process-wide settings tree.
#include "zorvrcs.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

#include "fixed_text.hpp"
#include "whitespace.hpp"
#include "zorvrcs_export.hpp"
#include "zorvrcs_load.hpp"

namespace {

namespace settings = zorvcrt::settings;
using zorvcrt::settings::Item;
using zorvcrt::settings::Section;
using zorvcrt::settings::Settings;
using zorvcrt::settings::Tree;

constexpr char kBlockSizeSetting[] = "QUOR_BLOCK_SIZE";
constexpr const char *kSmallBlock = "2048";
constexpr const char *kLargeBlock = "4096";
constexpr long kSmallBlockLimit = 2048;

constinit Settings process_settings;

// Read together with what the environment has; null when there is no such setting.
const char *query(const char *name, int32_t mask) {
  if ((mask & QUOR_LEVEL_NONPRIVILEGED) != 0) {
    if (const char *value = std::getenv(name); value != nullptr) return value;
  }
  return process_settings.tree == nullptr ? nullptr : process_settings.tree->find(name, mask);
}

void settle_block_size(Tree &tree) {
  const char *wanted = query(kBlockSizeSetting, QUOR_LEVEL_ALL);
  const bool is_large = wanted != nullptr && std::strtol(wanted, nullptr, 10) > kSmallBlockLimit;
  settings::add_setting(tree, QUOR_LEVEL_NONPRIVILEGED, kBlockSizeSetting,
                        is_large ? kLargeBlock : kSmallBlock);
}

int32_t load_when_missing() {
  if (process_settings.tree != nullptr) return 0;
  const int32_t failure = settings::load(process_settings);
  if (failure == 0 && process_settings.tree != nullptr) {
    settings::export_missing(*process_settings.tree);
    settle_block_size(*process_settings.tree);
  }
  return failure;
}

void end_process_on(int32_t failure) {
  if (failure == 0) return;
  std::perror("Cannot load config file! (#9091) ");
  std::exit(failure);
}

// The tree, loaded when it was not there; null only when memory ran out.
Tree *loaded_tree() {
  end_process_on(load_when_missing());
  return process_settings.tree;
}

void print_section(const Section &section) {
  const bool is_privileged = section.level() == QUOR_LEVEL_PRIVILEGED;
  const char *other = section.level() == QUOR_LEVEL_GROUP ? "Group" : "Non-privileged";
  std::printf("Table level : %s\n", is_privileged ? "Privileged" : other);
  for (const Item *item = section.first(); item != nullptr; item = section.after(*item)) {
    const char *exported = is_privileged ? nullptr : std::getenv(item->name.get());
    std::printf("\t%s\t%s\n", item->name.get(), exported != nullptr ? exported : item->value.get());
  }
}

// The chosen path, too, is given back when the library goes.
__attribute__((destructor)) void unload_path() {
  settings::forget_path(process_settings);
}

}  // namespace

int32_t QuorConfCreate(void) {
  end_process_on(load_when_missing());
  return 0;
}

int32_t QuorConfExists(void) {
  return load_when_missing() == 0 && process_settings.tree != nullptr ? 1 : 0;
}

const char *QuorConfQuery(const char *name, int32_t mask) {
  if (name == nullptr) return nullptr;
  end_process_on(load_when_missing());
  return query(name, mask);
}

void QuorConfUpdate(const char *name, const char *value) {
  if (name == nullptr) return;
  Tree *tree = loaded_tree();
  if (tree == nullptr) return;
  if (value != nullptr && *value != '\0') {
    settings::add_setting(*tree, QUOR_LEVEL_NONPRIVILEGED, name, value);
    return;
  }
  // A copy, since the name may be the one that is removed.
  const auto own_name = settings::copy_of(zorvcrt::trimmed(name));
  if (own_name != nullptr && tree->remove(QUOR_LEVEL_NONPRIVILEGED, own_name.get())) {
    settings::export_setting(own_name.get(), "");
  }
}

void QuorConfRemove(void) {
  settings::forget_tree(process_settings);
}

void QuorConfSetPath(const char *path) {
  // Copied first: the path may be a setting of the tree that is forgotten here.
  auto own_path = settings::copy_of(zorvcrt::view_of(path));
  const bool is_explicit = path != nullptr && *path != '\0';
  if (is_explicit && own_path == nullptr) return;
  QuorConfRemove();
  settings::forget_path(process_settings);
  process_settings.path_is_explicit = is_explicit;
  if (!process_settings.path_is_explicit) return;
  process_settings.path = own_path.release();
  end_process_on(settings::load(process_settings));
  if (process_settings.tree != nullptr) settings::export_missing(*process_settings.tree);
}

void *QuorConfStart(void) {
  Tree *tree = loaded_tree();
  return tree == nullptr ? nullptr : tree->rewind();
}

const char *QuorConfNext(int32_t *level, const char **value) {
  if (process_settings.tree == nullptr) return nullptr;
  int32_t item_level = 0;
  const Item *item = process_settings.tree->advance(item_level);
  if (item == nullptr) return nullptr;
  if (level != nullptr) *level = item_level;
  if (value != nullptr) *value = item->value.get();
  return item->name.get();
}

void QuorConfPrint(void) {
  const Tree *tree = loaded_tree();
  if (tree == nullptr) return;
  for (const Section &section : tree->sections()) {
    if (section.exists()) print_section(section);
  }
}

__attribute__((destructor)) void unload_zorvrcs(void) {
  QuorConfRemove();
}
