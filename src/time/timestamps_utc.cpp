// Broken-down times to and from seconds by arithmetic alone. Switching TZ instead would cost a thousand times
// as much and need a lock around the whole process.
#include "timestamps_utc.hpp"

#include <algorithm>
#include <cerrno>
#include <climits>

#include "calendar.hpp"

namespace zorvcrt {

namespace {

// What tm_year can hold is what can be represented.
constexpr int64_t kFirstSecond = days_from_civil(INT_MIN + kTmEpochYear, 0) * kSecondsPerDay;
constexpr int64_t kLastSecond = days_from_civil(INT_MAX + kTmEpochYear + 1, 0) * kSecondsPerDay - 1;

constexpr char kZoneName[] = "UTC";

constexpr bool is_representable(int64_t seconds) {
  return kFirstSecond <= seconds && seconds <= kLastSecond;
}

std::optional<int64_t> not_representable() {
  errno = EOVERFLOW;
  return std::nullopt;
}

}  // namespace

std::optional<int64_t> utc_seconds(const tm &record) {
  const int64_t years = floor_divide(record.tm_mon, kMonthsPerYear);
  const auto month = static_cast<int32_t>(record.tm_mon - years * kMonthsPerYear);
  const int64_t days = days_from_civil(kTmEpochYear + record.tm_year + years, month) + record.tm_mday - 1;
  const int32_t second = std::clamp(record.tm_sec, 0, kSecondsPerMinute - 1);

  // mktime() looks for the minute first, takes the daylight hour off and then adds the seconds outside the
  // minute; each of the three times has to be representable.
  int64_t seconds = days * kSecondsPerDay + int64_t{record.tm_hour} * kSecondsPerHour +
                    int64_t{record.tm_min} * kSecondsPerMinute + second;
  if (!is_representable(seconds)) return not_representable();
  if (record.tm_isdst > 0) {
    seconds -= kSecondsPerHour;
    if (!is_representable(seconds)) return not_representable();
  }
  seconds += int64_t{record.tm_sec} - second;
  if (!is_representable(seconds)) return not_representable();
  return seconds;
}

std::optional<tm> utc_record(int64_t seconds) {
  if (!is_representable(seconds)) return std::nullopt;
  const int64_t days = floor_divide(seconds, kSecondsPerDay);
  const auto second_of_day = static_cast<int32_t>(seconds - days * kSecondsPerDay);
  const CivilDay civil = civil_from_days(days);

  tm record{};
  record.tm_sec = second_of_day % kSecondsPerMinute;
  record.tm_min = second_of_day / kSecondsPerMinute % 60;
  record.tm_hour = second_of_day / kSecondsPerHour;
  record.tm_mday = civil.day;
  record.tm_mon = civil.month;
  record.tm_year = static_cast<int>(civil.year - kTmEpochYear);
  record.tm_wday = civil.weekday;
  record.tm_yday = civil.day_of_year;
  record.tm_zone = kZoneName;
  return record;
}

}  // namespace zorvcrt
