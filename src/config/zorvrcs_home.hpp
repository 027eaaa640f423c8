// Where the installation lies.
#pragma once

#include <cstddef>

#include "fixed_text.hpp"

namespace zorvcrt::settings {

inline constexpr std::size_t kHomeSize = 1024;

/// The installation's home: the folder above the one that holds the main library, else above the one that
/// holds the running program. Empty when it cannot be told.
FixedText<kHomeSize> installation_home();

}  // namespace zorvcrt::settings
