// Whether the calling process is in one of the groups that a section header names.
#pragma once

#include <string_view>

namespace zorvcrt::settings {

/// Tells whether one of the names, which white space or ',' separates, is a group among the supplementary
/// groups of the process. Neither its user nor its primary group counts.
bool is_member_of_any(std::string_view names);

}  // namespace zorvcrt::settings
