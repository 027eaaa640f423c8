// The Gregorian calendar in plain arithmetic: days since 1970-01-01 to and from year, month and day. Years
// are counted from March, so that the leap day is the last of its year and of the cycle of 400 years.
#pragma once

#include <cstdint>

namespace zorvcrt {

inline constexpr int32_t kSecondsPerMinute = 60;
inline constexpr int32_t kSecondsPerHour = 3600;
inline constexpr int32_t kSecondsPerDay = 86400;
inline constexpr int32_t kMonthsPerYear = 12;
inline constexpr int32_t kDaysPerWeek = 7;
inline constexpr int64_t kTmEpochYear = 1900;  // tm_year counts from here

/// A date, and where it lies in its week and year.
struct CivilDay {
  int64_t year;         // as written: 2024
  int32_t month;        // 0-11
  int32_t day;          // 1-31
  int32_t weekday;      // 0 Sunday to 6 Saturday
  int32_t day_of_year;  // 0-365
};

constexpr int64_t floor_divide(int64_t dividend, int64_t divisor) {
  return dividend / divisor - (dividend % divisor < 0 ? 1 : 0);
}

constexpr bool is_leap_year(int64_t year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

/// Tells whether a month, 0 to 11, is April, June, September or November.
constexpr bool has_thirty_days(int32_t month) {
  return month == 3 || month == 5 || month == 8 || month == 10;
}

namespace calendar {

inline constexpr int64_t kDaysPerCycle = 146097;  // 400 years
inline constexpr int64_t kEpochDay = 719468;      // 1970-01-01, counted from 0000-03-01
inline constexpr int32_t kDaysFromMarch = 306;    // 1 March to 1 January
inline constexpr int32_t kDaysToMarch = 59;       // 1 January to 1 March of a common year
inline constexpr int32_t kEpochWeekday = 4;       // a Thursday

// 1 March to the first of a month, 0 for March to 11 for February: 31 and 30 days in turn, but for two 31s
// every five months.
constexpr int32_t days_before_month(int32_t month_from_march) {
  return (153 * month_from_march + 2) / 5;
}

}  // namespace calendar

/// Days from 1970-01-01 to the first of a month, 0 to 11, of a year as written.
constexpr int64_t days_from_civil(int64_t year, int32_t month) {
  const bool before_march = month < 2;
  const int64_t march_year = year - (before_march ? 1 : 0);
  const int64_t cycle = floor_divide(march_year, 400);
  const auto year_of_cycle = static_cast<int32_t>(march_year - cycle * 400);
  const int32_t days = year_of_cycle * 365 + year_of_cycle / 4 - year_of_cycle / 100 +
                       calendar::days_before_month(before_march ? month + 10 : month - 2);
  return cycle * calendar::kDaysPerCycle + days - calendar::kEpochDay;
}

/// The date that lies a number of days behind 1970-01-01.
constexpr CivilDay civil_from_days(int64_t days) {
  const int64_t cycle = floor_divide(days + calendar::kEpochDay, calendar::kDaysPerCycle);
  const auto day_of_cycle =
      static_cast<int32_t>(days + calendar::kEpochDay - cycle * calendar::kDaysPerCycle);
  // Take the leap days passed so far out of the count, and every year has 365 days.
  const int32_t year_of_cycle =
      (day_of_cycle - day_of_cycle / 1460 + day_of_cycle / 36524 - day_of_cycle / 146096) / 365;
  const int32_t day_from_march =
      day_of_cycle - (year_of_cycle * 365 + year_of_cycle / 4 - year_of_cycle / 100);
  const int32_t month_from_march = (5 * day_from_march + 2) / 153;

  const bool in_next_year = month_from_march >= 10;
  CivilDay civil{};
  civil.year = cycle * 400 + year_of_cycle + (in_next_year ? 1 : 0);
  civil.month = in_next_year ? month_from_march - 10 : month_from_march + 2;
  civil.day = day_from_march - calendar::days_before_month(month_from_march) + 1;
  civil.day_of_year = in_next_year
                          ? day_from_march - calendar::kDaysFromMarch
                          : day_from_march + calendar::kDaysToMarch + (is_leap_year(civil.year) ? 1 : 0);
  const auto weekday = static_cast<int32_t>((days + calendar::kEpochWeekday) % kDaysPerWeek);
  civil.weekday = weekday < 0 ? weekday + kDaysPerWeek : weekday;
  return civil;
}

}  // namespace zorvcrt
