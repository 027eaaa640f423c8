// The shift of a broken-down time by a written zone, and the day roll that goes with it. The direction of
// numeric zones, the hours of the names and both tables of the day roll are promises to callers, see
// timestamps.h; sums wrap in 32 bits.
#include "timestamps_zone.hpp"

#include <algorithm>
#include <array>

#include "calendar.hpp"
#include "digits.hpp"
#include "name_table.hpp"
#include "wrapping.hpp"

namespace zorvcrt {

namespace {

struct NamedZone {
  std::string_view name;
  int32_t hours;     // subtracted; with 0 the time stays as it is written, in range or not
  int32_t daylight;  // the flag that the record gets
};

constexpr std::array<NamedZone, 12> kNamedZones = {{
    {"GMT", 0, 0},
    {"UTC", 0, 0},
    {"EST", 4, 0},
    {"EDT", 5, 1},
    {"CST", 5, 0},
    {"CDT", 6, 1},
    {"MST", 6, 0},
    {"MDT", 7, 1},
    {"PST", 7, 0},
    {"PDT", 8, 1},
    {"CET", -1, -1},
    {"EET", -1, -1},
}};

consteval auto names_of(const std::array<NamedZone, kNamedZones.size()> &zones) {
  std::array<std::string_view, kNamedZones.size()> names;
  for (std::size_t i = 0; i < zones.size(); ++i) {
    names[i] = zones[i].name;
  }
  return names;
}

constexpr NameTable kZoneNames(names_of(kNamedZones));

constexpr int32_t kUnknownDaylight = -1;
constexpr int32_t kLargestHoursAlone = 99;  // a larger number is hours x 100 + minutes

constexpr int kFebruary = 1;
constexpr int kMarch = 2;
constexpr int kDecember = 11;

// The day set when the first of a month is left backwards, by that month; March has a rule of its own. The
// last entry serves every month above December.
constexpr std::array<int32_t, 13> kDayBeforeFirst = {31, 30, 0, 30, 31, 30, 31, 30, 31, 31, 30, 31, 30};

// The leap rule of the day roll counts years since 1900, so that 2000 (100) is common and 2024 (124) is not.
bool rolls_as_leap_year(int years_since_1900) {
  return years_since_1900 % 400 == 0 || (years_since_1900 % 4 == 0 && years_since_1900 % 100 != 0);
}

void step_back_one_day(tm &record) {
  if (record.tm_mday != 1) {
    record.tm_mday = wrapping_subtract(record.tm_mday, 1);
  } else if (record.tm_mon < 0) {
    record.tm_mday = 0;
  } else if (record.tm_mon == 0) {
    record.tm_year = wrapping_subtract(record.tm_year, 1);
    record.tm_mon = kDecember;
    record.tm_mday = kDayBeforeFirst[0];
  } else if (record.tm_mon == kMarch) {
    record.tm_mon = kFebruary;
    record.tm_mday = rolls_as_leap_year(record.tm_year) ? 29 : 28;
  } else {
    record.tm_mday = kDayBeforeFirst[static_cast<std::size_t>(std::min(record.tm_mon, kMonthsPerYear))];
    record.tm_mon -= 1;
  }
}

// Tells whether the day behind this one is the first of the next month. A 29 February is followed by a 30th.
bool ends_month(const tm &record) {
  switch (record.tm_mday) {
    case 28:
      return record.tm_mon == kFebruary && !rolls_as_leap_year(record.tm_year);
    case 30:
      return has_thirty_days(record.tm_mon);
    case 31:
      return true;
    default:
      return false;
  }
}

void step_forward_one_day(tm &record) {
  if (ends_month(record)) {
    record.tm_mday = 1;
    record.tm_mon = wrapping_add(record.tm_mon, 1);
  } else {
    record.tm_mday = wrapping_add(record.tm_mday, 1);
  }
}

int32_t second_of_day(const tm &record) {
  return wrapping_add(wrapping_add(wrapping_multiply(record.tm_hour, kSecondsPerHour),
                                   wrapping_multiply(record.tm_min, kSecondsPerMinute)),
                      record.tm_sec);
}

// At most one day is rolled, once: what lies further away stays in the hour.
void set_second_of_day(tm &record, int32_t second) {
  if (second < 0) {
    step_back_one_day(record);
    second += kSecondsPerDay;
  } else if (second >= kSecondsPerDay) {
    step_forward_one_day(record);
    second -= kSecondsPerDay;
  }
  record.tm_hour = second / kSecondsPerHour;
  record.tm_min = second % kSecondsPerHour / kSecondsPerMinute;
  record.tm_sec = second % kSecondsPerMinute;
}

void shift(tm &record, int32_t seconds) {
  set_second_of_day(record, wrapping_add(second_of_day(record), seconds));
}

bool ends_at(std::string_view zone, std::size_t offset) {
  return zone.size() == offset || zone[offset] == '\0';
}

int32_t number_behind_sign(std::string_view zone) {
  int32_t number = 0;
  for (std::size_t i = 1; i < zone.size() && is_digit(zone[i]); ++i) {
    number = wrapping_add(wrapping_multiply(number, 10), digit_value(zone[i]));
  }
  return number;
}

}  // namespace

void shift_by_numeric_zone(tm &record, char sign, int32_t number) {
  const bool has_minutes = number > kLargestHoursAlone;
  const int32_t hours = has_minutes ? number / 100 : number;
  const int32_t minutes = has_minutes ? number % 100 : 0;
  const int32_t offset = wrapping_add(wrapping_multiply(hours, kSecondsPerHour), minutes * kSecondsPerMinute);
  shift(record, sign == '-' ? wrapping_subtract(0, offset) : offset);
  record.tm_isdst = kUnknownDaylight;
}

bool shift_by_zone(tm &record, std::string_view zone) {
  if (ends_at(zone, 0)) return true;
  if (zone[0] == '+' || zone[0] == '-') {
    shift_by_numeric_zone(record, zone[0], number_behind_sign(zone));
    return true;
  }
  const int32_t number = kZoneNames.find(zone);
  if (number == 0 || !ends_at(zone, kZoneNames.kNameLength)) return false;
  const NamedZone &named = kNamedZones[static_cast<std::size_t>(number) - 1];
  if (named.hours != 0) shift(record, -named.hours * kSecondsPerHour);
  record.tm_isdst = named.daylight;
  return true;
}

}  // namespace zorvcrt
