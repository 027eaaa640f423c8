// The way of settings into the process environment.
#pragma once

#include <cstdint>

#include "zorvrcs_tree.hpp"

namespace zorvcrt::settings {

/// Sets an environment variable unless `__QUORCONF_NOENV` forbids all export. A name that the system refuses
/// is passed over in silence.
void export_setting(const char *name, const char *value);

/// Sets the variables of all settings that the environment does not have yet. To be called once for a tree.
void export_missing(Tree &tree);

/// Adds one setting at a level as a line of a file would, after removing white space around the name and in
/// front of the value; at the non-privileged level the variable is set, too, to the value as it was given.
/// Both texts may belong to the tree or to the environment.
void add_setting(Tree &tree, int32_t level, const char *name, const char *value);

}  // namespace zorvcrt::settings
