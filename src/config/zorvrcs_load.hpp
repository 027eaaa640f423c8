// Finding and reading all settings files.
#pragma once

#include <cstdint>

#include "zorvrcs_tree.hpp"

namespace zorvcrt::settings {

/// All that outlives a call.
struct Settings {
  Tree *tree = nullptr;           // owned; null before the first load
  char *path = nullptr;           // owned; the settings path when one was chosen, null for the default
  bool path_is_explicit = false;  // also when a load under __KERNEL_DEVELOPER has forgotten the path since
};

void forget_tree(Settings &settings);
void forget_path(Settings &settings);

/// Reads the settings files into a new tree. A tree that is there already is replaced; its settings are added
/// to the new one and win over the files. Returns 0, or QUOR_LOAD_FAILURE with errno telling why; then the
/// new tree, in which nothing was read from files, stays in place.
int32_t load(Settings &settings);

}  // namespace zorvcrt::settings
