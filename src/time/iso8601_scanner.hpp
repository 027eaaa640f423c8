// Dates of the ISO 8601 family, taken apart.
#pragma once

#include <cstdint>
#include <string_view>

#include "written_time.hpp"

namespace zorvcrt {

struct IsoTime : WrittenTime {
  char zone_sign = '+';
  int32_t zone_hours = 0;
  int32_t zone_minutes = 0;
};

/// Tells whether the text is acceptable, and what stands in it; what it does not reach is 0.
bool scan_iso8601(std::string_view text, IsoTime &written);

}  // namespace zorvcrt
