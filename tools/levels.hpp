// The names that the command line has for the levels of settings and of log lines.
#pragma once

#include <cstdint>
#include <string>

namespace tools {

/// The mask for "privileged", "group", "nonprivileged" or "all"; throws Misuse for anything else.
int32_t settings_mask(const std::string &name);

/// The name of one level of the settings tree (1, 2 or 4).
const char *settings_level_name(int32_t level);

/// The log level for "fatal", "error", "warning", "info", "debug" or a number from 1 to 5; throws Misuse for
/// anything else.
uint32_t log_level(const std::string &name);

}  // namespace tools
