// The tables behind the names of levels.
#include "levels.hpp"

#include <zorvcrt.h>

#include <array>

#include "command.hpp"

namespace tools {

namespace {

struct NamedMask {
  const char *name;
  int32_t mask;
};

constexpr std::array kMasks = {
    NamedMask{"privileged", QUOR_LEVEL_PRIVILEGED}, NamedMask{"group", QUOR_LEVEL_GROUP},
    NamedMask{"nonprivileged", QUOR_LEVEL_NONPRIVILEGED}, NamedMask{"all", QUOR_LEVEL_ALL}};

// At the index of each its number less 1.
constexpr std::array kLogLevels = {"fatal", "error", "warning", "info", "debug"};

}  // namespace

int32_t settings_mask(const std::string &name) {
  for (const NamedMask &known : kMasks) {
    if (name == known.name) return known.mask;
  }
  throw Misuse("unknown level '" + name + "': privileged, group, nonprivileged or all");
}

const char *settings_level_name(int32_t level) {
  for (const NamedMask &known : kMasks) {
    if (level == known.mask) return known.name;
  }
  return "unknown";
}

uint32_t log_level(const std::string &name) {
  for (uint32_t i = 0; i < kLogLevels.size(); ++i) {
    if (name == kLogLevels[i] || name == std::to_string(i + 1)) return i + 1;
  }
  throw Misuse("unknown level '" + name + "': fatal, error, warning, info, debug or 1 to 5");
}

}  // namespace tools
