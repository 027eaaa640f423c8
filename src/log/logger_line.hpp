// The levels and the lines of a logger.
#pragma once

#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "logger.h"

namespace zorvcrt {

struct LevelRule {
  std::string_view name;       // as printed
  std::size_t message_bound;   // characters of a message, its terminator included
  int32_t max_text_precision;  // of a text argument that is sure to fit
};

/// By level number; level 0 is that of no line.
inline constexpr std::array<LevelRule, 6> kLevels{{
    {"       ", 0, 1},
    {"  FATAL", 8192, 8000},
    {"  ERROR", 8192, 8000},
    {"WARNING", 8192, 8000},
    {"   INFO", 8191, 8000},
    {"  DEBUG", 65535, 60000},
}};

/// Formats a message and writes its line, if the logger writes lines of the level at all. The number shows in
/// fatal, error and warning lines. A null logger writes nothing.
void __print_log(const Logger *logger, uint32_t level, const char *location, int32_t number,
                 const char *format, std::va_list arguments) ZFX_PRINTF(5, 0);

}  // namespace zorvcrt
