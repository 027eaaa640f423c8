// One log line at a level that is known only at run time.
#pragma once

#include <logger.h>

#include <cstdint>

namespace tools {

/// Writes @p message, cut to what a line of the level holds. Information and debug lines carry no number.
/// @param level 1 (fatal) to 5 (debug)
void log_line(Logger *logger, uint32_t level, const char *location, int32_t error, const char *message);

}  // namespace tools
