// Broken-down times read as UTC, with the results of mktime() under an empty TZ and none of its cost.
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>

namespace zorvcrt {

/// The seconds of a broken-down time, whose fields may lie outside their ranges; nothing, and errno
/// EOVERFLOW, when it cannot be represented.
std::optional<int64_t> utc_seconds(const tm &record);

/// The broken-down time of seconds; nothing when its year does not fit tm_year.
std::optional<tm> utc_record(int64_t seconds);

}  // namespace zorvcrt
