// References to other settings inside a value.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fixed_text.hpp"
#include "zorvrcs_tree.hpp"

namespace zorvcrt::settings {

/// Room for an expanded value and its terminator.
inline constexpr std::size_t kExpansionSize = 1024;
using Expansion = FixedText<kExpansionSize>;

/// The text, cut to what an expansion holds, with each $NAME and ${NAME} replaced by the setting, failing
/// that by the environment variable, failing that by nothing.
Expansion expanded(std::string_view text, const Tree &tree);

/// Stores the expanded value at the level; an empty result removes the name.
void store_expanded(Tree &tree, int32_t level, std::string_view name, std::string_view value);

}  // namespace zorvcrt::settings
