// Broken-down times read as UTC, with the results of mktime() under an empty TZ. Switching TZ instead would
// cost a hundred times as much and need a lock around the whole process.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>
#include <ctime>

#include "calendar.hpp"

namespace zorvcrt {

namespace utc {

// What tm_year can hold is what can be represented.
inline constexpr int64_t kFirstSecond = days_from_civil(INT_MIN + kTmEpochYear, 0) * kSecondsPerDay;
inline constexpr int64_t kLastSecond = days_from_civil(INT_MAX + kTmEpochYear + 1, 0) * kSecondsPerDay - 1;

constexpr bool is_representable(int64_t seconds) {
  return kFirstSecond <= seconds && seconds <= kLastSecond;
}

/// Sets errno to EOVERFLOW. Always false.
bool not_representable();

}  // namespace utc

// The results of both functions are no std::optional: one that comes back in registers is stored as a byte
// and loaded as eight, which have to wait for it, and that is an eighth of the time of an ISO 8601 date.

/// The seconds of a broken-down time, whose fields may lie outside their ranges. False, and errno EOVERFLOW,
/// when it cannot be represented.
[[nodiscard]] inline bool utc_seconds(const tm &record, int64_t &seconds) {
  int64_t year = kTmEpochYear + record.tm_year;
  int32_t month = record.tm_mon;
  if (month < 0 || month >= kMonthsPerYear) {
    const int64_t years = floor_divide(month, kMonthsPerYear);
    year += years;
    month = static_cast<int32_t>(month - years * kMonthsPerYear);
  }
  const int64_t days = days_from_civil(year, month) + record.tm_mday - 1;
  const int32_t second = std::clamp(record.tm_sec, 0, kSecondsPerMinute - 1);

  // mktime() looks for the minute first, takes the daylight hour off and then adds the seconds outside the
  // minute; each of the three times has to be representable.
  seconds = days * kSecondsPerDay + int64_t{record.tm_hour} * kSecondsPerHour +
            int64_t{record.tm_min} * kSecondsPerMinute + second;
  if (!utc::is_representable(seconds)) return utc::not_representable();
  if (record.tm_isdst > 0) {
    seconds -= kSecondsPerHour;
    if (!utc::is_representable(seconds)) return utc::not_representable();
  }
  seconds += int64_t{record.tm_sec} - second;
  return utc::is_representable(seconds) || utc::not_representable();
}

/// The broken-down time of seconds. False when its year does not fit tm_year.
[[nodiscard]] bool utc_record(int64_t seconds, tm &record);

}  // namespace zorvcrt
