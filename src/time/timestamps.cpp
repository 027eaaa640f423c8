// The exported conversions of broken-down times, and the formatter.
#include "timestamps.h"

#include <array>
#include <string_view>

#include "fixed_text.hpp"
#include "timestamps_utc.hpp"
#include "timestamps_zone.hpp"

namespace {

// Between these years all of a time has a fixed width, and strftime() takes five times as long.
constexpr int kFirstPlainYear = 1000 - 1900;
constexpr int kLastPlainYear = 9999 - 1900;

using IsoText = std::array<char, 19>;

void put_pair(IsoText &text, std::size_t offset, int value) {
  text[offset] = static_cast<char>('0' + value / 10);
  text[offset + 1] = static_cast<char>('0' + value % 10);
}

IsoText plain_text(const tm &record) {
  IsoText text = {'0', '0', '0', '0', '-', '0', '0', '-', '0', '0',
                  ' ', '0', '0', ':', '0', '0', ':', '0', '0'};
  const int year = record.tm_year + 1900;
  put_pair(text, 0, year / 100);
  put_pair(text, 2, year % 100);
  put_pair(text, 5, record.tm_mon + 1);
  put_pair(text, 8, record.tm_mday);
  put_pair(text, 11, record.tm_hour);
  put_pair(text, 14, record.tm_min);
  put_pair(text, 17, record.tm_sec);
  return text;
}

void format_any_year(const tm &record, char *buffer, std::size_t capacity) {
  if (std::strftime(buffer, capacity, "%Y-%m-%d %H:%M:%S", &record) == 0) *buffer = '\0';
}

}  // namespace

int64_t ZfxTimeToUTC(uint64_t *seconds, struct tm *record) {
  if (seconds != nullptr) *seconds = 0;
  if (record == nullptr) return -1;
  int64_t utc = 0;
  if (!zorvcrt::utc_seconds(*record, utc) || !zorvcrt::utc_record(utc, *record) || utc < 0) return -1;
  if (seconds != nullptr) *seconds = static_cast<uint64_t>(utc);
  return 0;
}

int32_t ZfxTimestampToUTC(struct tm *record, const char *zone) {
  const std::string_view text = zorvcrt::view_of(zone);
  if (text.empty()) return 0;
  if (record == nullptr) return -1;
  return zorvcrt::shift_by_zone(*record, text) ? 0 : -1;
}

char *ZfxFormatIso8601(time_t seconds, char *buffer, int32_t capacity) {
  if (buffer == nullptr || capacity < 1) return buffer;
  *buffer = '\0';
  tm record;
  if (!zorvcrt::utc_record(seconds, record)) return buffer;
  if (record.tm_year < kFirstPlainYear || record.tm_year > kLastPlainYear) {
    format_any_year(record, buffer, static_cast<std::size_t>(capacity));
    return buffer;
  }
  const IsoText text = plain_text(record);
  if (static_cast<std::size_t>(capacity) > text.size()) {
    zorvcrt::copy_text(buffer, capacity, {text.data(), text.size()});
  }
  return buffer;
}
