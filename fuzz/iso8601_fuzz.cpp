// ISO 8601 texts against the states of the scanner said again one by one, and mktime() behind them.
#include "iso8601.h"

#include "check.hpp"
#include "input.hpp"
#include "plain_time.hpp"

namespace {

enum State {
  kYear,
  kDateSeparator,
  kMonth,
  kAfterMonth,
  kDay,
  kAfterDay,
  kTime,
  kMinute,
  kSecond,
  kZone,
  kZoneHours,
  kZoneMinutes,
  kDone
};

struct Scan {
  const std::string &text;
  std::size_t at = 0;
  State state = kYear;
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
  int zone_sign = 1, zone_hours = 0, zone_minutes = 0;

  [[nodiscard]] bool digit(std::size_t i) const {
    return i < text.size() && text[i] >= '0' && text[i] <= '9';
  }
  [[nodiscard]] int value(std::size_t i) const { return digit(i) ? text[i] - '0' : 0; }
  [[nodiscard]] bool is_one_of(const char *set) const {
    return std::string(set).find(text[at]) != std::string::npos;
  }
  [[nodiscard]] std::size_t run() const {
    std::size_t end = at;
    while (digit(end)) {
      ++end;
    }
    return end - at;
  }
  int pair() {
    const int number = value(at) * 10 + value(at + 1);
    at += 2;
    return number;
  }

  // Each state uses up what it reads; false is a failure.
  bool step() {
    switch (state) {
      case kYear: {
        const std::size_t digits = run();
        if (digits != 4 && digits != 8) return false;
        year = pair() * 100;
        year += pair();
        if (digits == 8) month = pair() % 10;
        if (digits == 8) day = pair() % 10;
        state = digits == 8 ? kAfterDay : kDateSeparator;
        return true;
      }
      case kDateSeparator:
        state = kMonth;
        return is_one_of("-./") && ++at != 0;
      case kMonth:
      case kDay: {
        if (!digit(at) || at + 1 == text.size()) return false;
        (state == kMonth ? month : day) = pair();
        state = state == kMonth ? kAfterMonth : kAfterDay;
        return true;
      }
      case kAfterMonth:
      case kAfterDay:
        if (digit(at)) return false;
        state = state == kAfterMonth && is_one_of("-./") ? kDay : kTime;
        ++at;
        return true;
      case kTime:
        return time();
      case kMinute:
      case kSecond:
      case kZoneMinutes:
        return colon_or_pair();
      case kZone:
        if (!is_one_of("Z+-")) return false;
        zone_sign = text[at] == '-' ? -1 : 1;
        state = text[at++] == 'Z' ? kDone : kZoneHours;
        return true;
      case kZoneHours: {
        const std::size_t digits = run();
        if (digits != 2 && digits != 4) return false;
        zone_hours = pair();
        if (digits == 4) zone_minutes = pair();
        state = digits == 4 ? kDone : kZoneMinutes;
        return true;
      }
      case kDone:
        at = text.size();
        return true;
    }
    return false;
  }

  bool time() {
    const std::size_t digits = run();
    if (digits != 2 && digits != 4 && digits != 6) {
      ++at;
      return true;
    }
    hour = pair();
    if (digits >= 4) minute = pair();
    if (digits == 6) second = pair();
    state = kZone;
    if (digits != 2 || at == text.size()) return true;
    if (text[at] == ':') state = kMinute;
    return is_one_of(":+-Z");
  }

  bool colon_or_pair() {
    if (text[at] == ':') {
      ++at;
      return true;
    }
    if (!digit(at) || !digit(at + 1)) return false;
    const int number = pair();
    if (state == kMinute) {
      minute = number;
      state = kSecond;
      return at == text.size() || is_one_of(":+-Z");
    }
    (state == kSecond ? second : zone_minutes) = number;
    state = state == kSecond ? kZone : kDone;
    return true;
  }

  bool scan() {
    while (at < text.size()) {
      if (!step()) return false;
    }
    return true;
  }
};

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  static const bool is_utc = plain::use_utc();
  const std::string text(reinterpret_cast<const char *>(data), size);
  Scan scan{text};
  tm expected_fields = {};
  expected_fields.tm_sec = 77;  // what a failure leaves as it was
  uint64_t expected = 0;
  tm fields = expected_fields;
  if (is_utc && scan.scan()) {
    expected_fields = {};
    expected_fields.tm_year = scan.year > 99 ? scan.year - 1900 : scan.year;
    expected_fields.tm_mon = scan.month - 1;
    expected_fields.tm_mday = scan.day;
    expected_fields.tm_hour = scan.hour;
    expected_fields.tm_min = scan.minute;
    expected_fields.tm_sec = scan.second;
    char zone[32];
    std::snprintf(zone, sizeof zone, "%c%02d%02d", scan.zone_sign < 0 ? '-' : '+', scan.zone_hours,
                  scan.zone_minutes);
    expected = plain::parsed_seconds(expected_fields, zone);
  }
  const uint64_t seconds = ZfxParseIso8601(fuzz::exact_copy(text).get(), text.size(), &fields);
  fuzz::check_equal(seconds, expected, "seconds");
  fuzz::check_equal(plain::fields(fields), plain::fields(expected_fields), "fields as written");
  return 0;
}
