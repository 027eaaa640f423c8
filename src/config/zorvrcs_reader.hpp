// The format of a settings file.
#pragma once

#include <cstdint>
#include <cstdio>

#include "zorvrcs_tree.hpp"

namespace zorvcrt::settings {

/// Reads a settings file to its end into the tree. Only lines whose level is in the mask are kept.
void read_settings(FILE *file, int32_t mask, Tree &tree);

}  // namespace zorvcrt::settings
