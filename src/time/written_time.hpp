// What both date readers find in a text, as it is written there.
#pragma once

#include <cstdint>
#include <ctime>

namespace zorvcrt {

struct WrittenTime {
  int32_t year = 0;
  int32_t month = 0;  // from 1
  int32_t day = 0;
  int32_t hour = 0;
  int32_t minute = 0;
  int32_t second = 0;
};

/// The fields in the counting of tm. Years up to 99 are those of the twentieth century.
inline tm record_of(const WrittenTime &written, int daylight) {
  constexpr int32_t kLastShortYear = 99;
  tm record{};
  record.tm_year = written.year > kLastShortYear ? written.year - 1900 : written.year;
  record.tm_mon = written.month - 1;
  record.tm_mday = written.day;
  record.tm_hour = written.hour;
  record.tm_min = written.minute;
  record.tm_sec = written.second;
  record.tm_isdst = daylight;
  return record;
}

}  // namespace zorvcrt
