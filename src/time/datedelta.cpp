// Date arithmetic in the local calendar.
#include "datedelta.h"

#include <array>
#include <cerrno>
#include <climits>
#include <optional>

#include "CompareString.h"
#include "calendar.hpp"
#include "digits.hpp"
#include "wrapping.hpp"
#include "zorvrcs.h"

namespace {

using zorvcrt::kSecondsPerDay;
using zorvcrt::kTmEpochYear;

constexpr int32_t kUnitDay = 1;
constexpr int32_t kUnitWeek = 2;
constexpr int32_t kUnitMonth = 3;
constexpr int32_t kUnitYear = 4;

constexpr int32_t kKeepDay = 1;        // a mode of every unit
constexpr int32_t kKeepMonthOnly = 3;  // a mode of years

constexpr uint32_t kPackMonth = 2;
constexpr uint32_t kPackDay = 4;

constexpr int kJanuary = 0;
constexpr int kFebruary = 1;

constexpr char kFirstWeekdaySetting[] = "QUOR_FIRST_WEEKDAY";
constexpr int32_t kSunday = 0;
constexpr int32_t kMonday = 1;
constexpr std::array<const char *, zorvcrt::kDaysPerWeek> kWeekdays = {"SUN", "MON", "TUE", "WED",
                                                                       "THU", "FRI", "SAT"};

std::optional<tm> local_record(time_t seconds) {
  // localtime_r() need not look at TZ anew, as mktime() does; the two must not speak of different zones.
  tzset();
  tm record{};
  if (localtime_r(&seconds, &record) == nullptr) return std::nullopt;
  return record;
}

// The record's daylight flag is kept: it is the base's, and with it the distance from UTC.
time_t seconds_in_year(tm record, int64_t year) {
  if (year < INT_MIN || year > INT_MAX) {
    errno = EOVERFLOW;
    return -1;
  }
  record.tm_year = static_cast<int>(year);
  return mktime(&record);
}

time_t later_by(time_t base, int32_t seconds) {
  return static_cast<time_t>(static_cast<uint64_t>(base) + static_cast<uint64_t>(int64_t{seconds}));
}

int32_t first_weekday() {
  const char *setting = QuorConfQuery(kFirstWeekdaySetting, QUOR_LEVEL_ALL);
  if (setting == nullptr) return kMonday;
  if (zorvcrt::is_digit(*setting)) {
    const int32_t number = zorvcrt::digit_value(*setting);
    return number < zorvcrt::kDaysPerWeek ? number : kSunday;
  }
  for (std::size_t day = 0; day < kWeekdays.size(); ++day) {
    if (ZfxStrLenNoCaseEquals(setting, kWeekdays[day], 3) != 0) return static_cast<int32_t>(day);
  }
  return kMonday;
}

time_t move_days(time_t base, int32_t amount) {
  return later_by(base, zorvcrt::wrapping_multiply(amount, kSecondsPerDay));
}

time_t move_weeks(time_t base, const tm &local, int32_t amount, int32_t mode) {
  const int32_t days = local.tm_wday - first_weekday();
  const int32_t days_into_week = days < 0 ? days + zorvcrt::kDaysPerWeek : days;
  const time_t target =
      later_by(base, zorvcrt::wrapping_multiply(amount, zorvcrt::kDaysPerWeek * kSecondsPerDay));
  return mode == kKeepDay ? target : later_by(target, -days_into_week * kSecondsPerDay);
}

bool is_leap_day_of_common_year(const tm &record, int64_t year) {
  return record.tm_mon == kFebruary && record.tm_mday == 29 && !zorvcrt::is_leap_year(year + kTmEpochYear);
}

time_t move_months(tm record, int32_t amount, int32_t mode) {
  const int64_t months = int64_t{record.tm_mon} + amount;
  const int64_t years = zorvcrt::floor_divide(months, zorvcrt::kMonthsPerYear);
  const int64_t year = record.tm_year + years;
  record.tm_mon = static_cast<int>(months - years * zorvcrt::kMonthsPerYear);
  if (mode != kKeepDay) {
    record.tm_mday = 1;
  } else if (record.tm_mday == 31 && zorvcrt::has_thirty_days(record.tm_mon)) {
    record.tm_mday = 30;
  } else if (is_leap_day_of_common_year(record, year)) {
    record.tm_mday = 28;
  }
  return seconds_in_year(record, year);
}

time_t move_years(tm record, int32_t amount, int32_t mode) {
  const int64_t year = int64_t{record.tm_year} + amount;
  if (mode == kKeepDay) {
    if (is_leap_day_of_common_year(record, year)) record.tm_mday = 28;
  } else {
    record.tm_mday = 1;
    if (mode != kKeepMonthOnly) record.tm_mon = kJanuary;
  }
  return seconds_in_year(record, year);
}

std::optional<time_t> move_in_calendar(time_t base, int32_t amount, int32_t unit, int32_t mode) {
  const auto local = local_record(base);
  if (!local) return std::nullopt;
  switch (unit) {
    case kUnitWeek:
      return move_weeks(base, *local, amount, mode);
    case kUnitMonth:
      return move_months(*local, amount, mode);
    case kUnitYear:
      return move_years(*local, amount, mode);
    default:
      return std::nullopt;
  }
}

uint32_t packed_date(time_t seconds, int32_t flags) {
  const auto local = local_record(seconds);
  if (!local) return 0;
  const auto wanted = static_cast<uint32_t>(flags);
  const auto year = static_cast<uint32_t>(zorvcrt::wrapping_add(local->tm_year, kTmEpochYear));
  const uint32_t month = (wanted & kPackMonth) != 0 ? static_cast<uint32_t>(local->tm_mon) + 1 : 0;
  const uint32_t day = (wanted & kPackDay) != 0 ? static_cast<uint32_t>(local->tm_mday) : 0;
  return (year * 16 + month) * 32 + day;
}

}  // namespace

int32_t ZfxDateDelta(time_t base, int32_t amount, int32_t unit, int32_t mode, int32_t flags, time_t *out_time,
                     uint32_t *out_packed) {
  const auto moved = unit == kUnitDay ? move_days(base, amount) : move_in_calendar(base, amount, unit, mode);
  if (!moved) return -1;
  if (out_time != nullptr) *out_time = *moved;
  if (out_packed != nullptr) *out_packed = packed_date(*moved, flags);
  return 0;
}
