// Broken-down times of seconds, by arithmetic alone.
#include "timestamps_utc.hpp"

#include <cerrno>

namespace zorvcrt {

namespace {

constexpr char kZoneName[] = "UTC";

}  // namespace

bool utc::not_representable() {
  errno = EOVERFLOW;
  return false;
}

bool utc_record(int64_t seconds, tm &record) {
  if (!utc::is_representable(seconds)) return false;
  const int64_t days = floor_divide(seconds, kSecondsPerDay);
  const auto second_of_day = static_cast<int32_t>(seconds - days * kSecondsPerDay);
  const CivilDay civil = civil_from_days(days);

  record = {};
  record.tm_sec = second_of_day % kSecondsPerMinute;
  record.tm_min = second_of_day / kSecondsPerMinute % 60;
  record.tm_hour = second_of_day / kSecondsPerHour;
  record.tm_mday = civil.day;
  record.tm_mon = civil.month;
  record.tm_year = static_cast<int>(civil.year - kTmEpochYear);
  record.tm_wday = civil.weekday;
  record.tm_yday = civil.day_of_year;
  record.tm_zone = kZoneName;
  return true;
}

}  // namespace zorvcrt
