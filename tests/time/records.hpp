// Broken-down times in tests: written in one line, compared and printed field by field, and the conversion to
// UTC by way of the environment, as the C library would do it.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <optional>
#include <string>

#include "timestamps.h"

namespace records {

inline tm record(int year, int month, int day, int hour = 0, int minute = 0, int second = 0,
                 int daylight = 0) {
  tm fields{};
  fields.tm_year = year - 1900;
  fields.tm_mon = month - 1;
  fields.tm_mday = day;
  fields.tm_hour = hour;
  fields.tm_min = minute;
  fields.tm_sec = second;
  fields.tm_isdst = daylight;
  return fields;
}

inline std::string text(const tm &fields) {
  std::string result;
  for (const long value :
       {long{fields.tm_year}, long{fields.tm_mon}, long{fields.tm_mday}, long{fields.tm_hour},
        long{fields.tm_min}, long{fields.tm_sec}, long{fields.tm_wday}, long{fields.tm_yday},
        long{fields.tm_isdst}, fields.tm_gmtoff}) {
    result += std::to_string(value) + " ";
  }
  return result + (fields.tm_zone == nullptr ? "(none)" : fields.tm_zone);
}

/// "year-month-day hour:minute:second" as the record holds them.
inline std::string date_and_time(const tm &fields) {
  char result[128];
  std::snprintf(result, sizeof result, "%d-%d-%d %d:%d:%d", fields.tm_year, fields.tm_mon, fields.tm_mday,
                fields.tm_hour, fields.tm_min, fields.tm_sec);
  return result;
}

inline bool same(const tm &a, const tm &b) {
  const auto zone_of = [](const tm &fields) { return fields.tm_zone == nullptr ? "(none)" : fields.tm_zone; };
  return a.tm_year == b.tm_year && a.tm_mon == b.tm_mon && a.tm_mday == b.tm_mday && a.tm_hour == b.tm_hour &&
         a.tm_min == b.tm_min && a.tm_sec == b.tm_sec && a.tm_wday == b.tm_wday && a.tm_yday == b.tm_yday &&
         a.tm_isdst == b.tm_isdst && a.tm_gmtoff == b.tm_gmtoff && std::strcmp(zone_of(a), zone_of(b)) == 0;
}

/// The process's time zone for a while.
class TimeZone {
 public:
  explicit TimeZone(const char *zone) {
    if (const char *before = std::getenv("TZ")) before_ = before;
    set(zone);
  }
  ~TimeZone() { set(before_ ? before_->c_str() : nullptr); }
  TimeZone(const TimeZone &) = delete;
  TimeZone &operator=(const TimeZone &) = delete;

 private:
  static void set(const char *zone) {
    if (zone == nullptr) {
      ::unsetenv("TZ");
    } else {
      ::setenv("TZ", zone, 1);
    }
    ::tzset();
  }

  std::optional<std::string> before_;
};

/// The seconds that mktime() gives for a record read as UTC, with the zone switched and put back around it.
inline time_t seconds_by_switching_the_zone(tm &fields) {
  const TimeZone utc("");
  return std::mktime(&fields);
}

/// A count of seconds as its time in UTC; "0" for the result 0.
inline std::string utc_text(uint64_t seconds) {
  if (seconds == 0) return "0";
  char result[64];
  return ZfxFormatIso8601(static_cast<time_t>(seconds), result, sizeof result);
}

// A record that no text gives, to see what is left alone.
inline tm untouched() {
  tm fields{};
  fields.tm_year = 1111;
  fields.tm_mon = 2222;
  fields.tm_gmtoff = 3333;
  fields.tm_zone = "before";
  return fields;
}

}  // namespace records
