// The Gregorian calendar in plain arithmetic: days since 1970-01-01 to and from year, month and day. Years
// begin with March, so that the leap day is the last of its year and of the cycle of 400 years.
#pragma once

#include <array>
#include <cstddef>
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

// All dates are shifted by cycles of 400 years, so that none that tm_year can hold is negative.
inline constexpr int64_t kShiftCycles = 6'000'000;
inline constexpr int64_t kShiftYears = kShiftCycles * 400;
inline constexpr int64_t kEpochDay =
    kShiftCycles * 146'097 + 719'468;        // 1970-01-01 from 1 March of year 0, shifted
inline constexpr int64_t kFirstWeekday = 3;  // 1 March of year 0 is a Wednesday

inline constexpr uint32_t kDaysFromMarch = 306;  // 1 March to 1 January
inline constexpr uint32_t kDaysToMarch = 59;     // 1 January to 1 March of a common year

// 1 March to the first of each month, January first.
inline constexpr std::array<int32_t, kMonthsPerYear> kDaysBeforeMonth = {306, 337, 0,   31,  61,  92,
                                                                         122, 153, 184, 214, 245, 275};

}  // namespace calendar

/// Days from 1970-01-01 to the first of a month, 0 to 11, of a year as written within 2,400,000,000 of year
/// 0.
constexpr int64_t days_from_civil(int64_t year, int32_t month) {
  const auto march_year = static_cast<uint64_t>(year + calendar::kShiftYears - (month < 2 ? 1 : 0));
  const uint64_t century = march_year / 100;
  const uint64_t days = march_year * 365 + march_year / 4 - century + century / 4;
  return static_cast<int64_t>(days) + calendar::kDaysBeforeMonth[static_cast<std::size_t>(month)] -
         calendar::kEpochDay;
}

/// The date that lies a number of days behind 1970-01-01, for the years of days_from_civil().
///
/// Year and month are each the quotient of a multiplication by a rounded reciprocal whose remainder holds the
/// next smaller unit: C. Neri, L. Schneider, "Euclidean affine functions and their application to calendar
/// algorithms", 2022. With plain divisions formatting takes a third longer.
constexpr CivilDay civil_from_days(int64_t days) {
  const auto quarters = static_cast<uint64_t>(days + calendar::kEpochDay) * 4 + 3;
  const uint64_t century = quarters / 146'097;
  const auto quarters_of_century = static_cast<uint32_t>(quarters % 146'097) | 3U;
  const uint64_t year_product = uint64_t{2'939'745} * quarters_of_century;
  const auto year_of_century = static_cast<uint32_t>(year_product >> 32);
  const uint32_t day_from_march = static_cast<uint32_t>(year_product) / 2'939'745 / 4;
  const uint32_t month_product = 2'141 * day_from_march + 197'913;
  const uint32_t month_number = month_product >> 16;  // 3 for March to 14 for February

  const bool in_next_year = day_from_march >= calendar::kDaysFromMarch;
  CivilDay civil{};
  civil.year =
      static_cast<int64_t>(century * 100 + year_of_century) - calendar::kShiftYears + (in_next_year ? 1 : 0);
  civil.month = static_cast<int32_t>(month_number - (in_next_year ? 13 : 1));
  civil.day = static_cast<int32_t>((month_product & 0xFFFF) / 2'141) + 1;
  civil.day_of_year = static_cast<int32_t>(in_next_year ? day_from_march - calendar::kDaysFromMarch
                                                        : day_from_march + calendar::kDaysToMarch +
                                                              (is_leap_year(civil.year) ? 1 : 0));
  civil.weekday = static_cast<int32_t>(
      static_cast<uint64_t>(days + calendar::kEpochDay + calendar::kFirstWeekday) % kDaysPerWeek);
  return civil;
}

}  // namespace zorvcrt
