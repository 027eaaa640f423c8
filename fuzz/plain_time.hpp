// Zones and UTC said again: the shift of a broken-down time by the letter of its tables, and seconds as the C
// library's mktime() tells them with an empty TZ.
#pragma once

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

namespace plain {

/// To be called once before any of the others.
inline bool use_utc() {
  ::setenv("TZ", "", 1);
  ::tzset();
  return true;
}

/// What mktime() says; false when the time cannot be represented.
inline bool utc_seconds(tm &record, int64_t &seconds) {
  tm copy = record;
  copy.tm_wday = -1;
  errno = 0;
  seconds = std::mktime(&copy);
  const bool known = seconds != -1 || copy.tm_wday != -1;
  if (known) record = copy;
  return known;
}

inline int32_t wrapped(int64_t value) {
  return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(value)));
}

inline bool is_leap(int32_t year) {
  return year % 400 == 0 || (year % 4 == 0 && year % 100 != 0);
}

inline void step_back(tm &record) {
  static const int kDays[] = {31, 30, 0, 30, 31, 30, 31, 30, 31, 31, 30, 31};
  if (record.tm_mday != 1) {
    record.tm_mday = wrapped(int64_t{record.tm_mday} - 1);
  } else if (record.tm_mon == 0) {
    record.tm_year = wrapped(int64_t{record.tm_year} - 1);
    record.tm_mon = 11;
    record.tm_mday = 31;
  } else if (record.tm_mon < 0) {
    record.tm_mday = 0;
  } else {
    const int month = record.tm_mon--;
    record.tm_mday = month == 2 ? (is_leap(record.tm_year) ? 29 : 28) : month < 12 ? kDays[month] : 30;
  }
}

inline void step_forward(tm &record) {
  const int day = record.tm_mday;
  const int month = record.tm_mon;
  const bool ends_month = day == 31 || (day == 28 && month == 1 && !is_leap(record.tm_year)) ||
                          (day == 30 && (month == 3 || month == 5 || month == 8 || month == 10));
  record.tm_mday = ends_month ? 1 : wrapped(int64_t{day} + 1);
  if (ends_month) record.tm_mon = wrapped(int64_t{month} + 1);
}

struct Zone {
  const char *name;
  int64_t hours;
  int daylight;
};

/// Shifts a time by a zone; -1 and no change for a zone that is none.
inline int32_t shift(tm &record, const std::string &zone) {
  static const Zone kZones[] = {{"EST", 4, 0},   {"EDT", 5, 1},  {"CST", 5, 0}, {"CDT", 6, 1},
                                {"MST", 6, 0},   {"MDT", 7, 1},  {"PST", 7, 0}, {"PDT", 8, 1},
                                {"CET", -1, -1}, {"EET", -1, -1}};
  if (zone.empty()) return 0;
  if (zone == "GMT" || zone == "UTC") {
    record.tm_isdst = 0;
    return 0;
  }
  int64_t offset = 0;
  int daylight = -1;
  if (zone[0] == '+' || zone[0] == '-') {
    int32_t number = 0;
    for (std::size_t i = 1; i < zone.size() && zone[i] >= '0' && zone[i] <= '9'; ++i) {
      number = wrapped(int64_t{number} * 10 + (zone[i] - '0'));
    }
    const int64_t hours = number > 99 ? number / 100 : number;
    offset = hours * 3600 + (number > 99 ? number % 100 * 60 : 0);
    if (zone[0] == '-') offset = -offset;
  } else {
    const Zone *known = nullptr;
    for (const Zone &each : kZones) {
      if (zone == each.name) known = &each;
    }
    if (known == nullptr) return -1;
    offset = -known->hours * 3600;
    daylight = known->daylight;
  }
  int64_t seconds = wrapped(int64_t{record.tm_hour} * 3600 + int64_t{record.tm_min} * 60 + record.tm_sec);
  seconds = wrapped(seconds + offset);
  if (seconds < 0) {
    step_back(record);
    seconds += 86400;
  } else if (seconds > 86399) {
    step_forward(record);
    seconds -= 86400;
  }
  record.tm_hour = static_cast<int>(seconds / 3600);
  record.tm_min = static_cast<int>(seconds % 3600 / 60);
  record.tm_sec = static_cast<int>(seconds % 60);
  record.tm_isdst = daylight;
  return 0;
}

/// The seconds of a parsed date: the record shifted by the zone, and 0 for the epoch, before it and beyond.
inline uint64_t parsed_seconds(tm record, const std::string &zone) {
  shift(record, zone);
  int64_t seconds = 0;
  return utc_seconds(record, seconds) && seconds > 0 ? static_cast<uint64_t>(seconds) : 0;
}

/// The fields of a record, for comparing and printing.
inline std::vector<int64_t> fields(const tm &record) {
  return {record.tm_year, record.tm_mon,  record.tm_mday, record.tm_hour,  record.tm_min,
          record.tm_sec,  record.tm_wday, record.tm_yday, record.tm_isdst, record.tm_gmtoff};
}

}  // namespace plain
