// The ISO 8601 reader: one pass over the text by a state machine, then the fields to seconds. What it accepts
// beyond the standard, and what not, is a promise to callers, see iso8601.h.
#include "iso8601.h"

#include <algorithm>
#include <string_view>

#include "digits.hpp"
#include "timestamps_utc.hpp"
#include "timestamps_zone.hpp"

namespace {

using zorvcrt::digit_value;
using zorvcrt::is_digit;

// What the scanner expects next.
enum class Expected {
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
  kDone,
  kFailure,
};

struct WrittenTime {
  int32_t year = 0;
  int32_t month = 0;  // as written, from 1
  int32_t day = 0;
  int32_t hour = 0;
  int32_t minute = 0;
  int32_t second = 0;
  char zone_sign = '+';
  int32_t zone_hours = 0;
  int32_t zone_minutes = 0;
};

constexpr bool is_date_separator(char c) {
  return c == '-' || c == '.' || c == '/';
}

constexpr bool starts_zone(char c) {
  return c == 'Z' || c == '+' || c == '-';
}

class Iso8601Scanner {
 public:
  explicit Iso8601Scanner(std::string_view text) : rest_(text) {}

  // Tells whether the text is acceptable; one that ends early is.
  bool scan() {
    Expected expected = Expected::kYear;
    while (!rest_.empty() && expected != Expected::kDone && expected != Expected::kFailure) {
      expected = step(expected);
    }
    return expected != Expected::kFailure;
  }

  [[nodiscard]] const WrittenTime &written() const { return written_; }

 private:
  // Every state is entered with a character left and takes at least one.
  Expected step(Expected expected) {
    switch (expected) {
      case Expected::kYear:
        return year();
      case Expected::kDateSeparator:
        return is_date_separator(take()) ? Expected::kMonth : Expected::kFailure;
      case Expected::kMonth:
        return loose_pair(written_.month, Expected::kAfterMonth);
      case Expected::kAfterMonth:
        return after_month();
      case Expected::kDay:
        return loose_pair(written_.day, Expected::kAfterDay);
      case Expected::kAfterDay:
        return is_digit(take()) ? Expected::kFailure : Expected::kTime;
      case Expected::kTime:
        return time();
      case Expected::kMinute:
        return minute();
      case Expected::kSecond:
        return pair_behind_colons(written_.second, Expected::kSecond, Expected::kZone);
      case Expected::kZone:
        return zone();
      case Expected::kZoneHours:
        return zone_hours();
      case Expected::kZoneMinutes:
        return pair_behind_colons(written_.zone_minutes, Expected::kZoneMinutes, Expected::kDone);
      case Expected::kDone:
      case Expected::kFailure:
        break;
    }
    return Expected::kFailure;
  }

  Expected year() {
    switch (digit_run(9)) {
      case 4:
        written_.year = take_number(4);
        return Expected::kDateSeparator;
      case 8:
        written_.year = take_number(4);
        written_.month = take_number(2) % 10;  // the tens of month and day do not count
        written_.day = take_number(2) % 10;
        return Expected::kAfterDay;
      default:
        return Expected::kFailure;
    }
  }

  Expected after_month() {
    const char c = take();
    if (is_date_separator(c)) return Expected::kDay;
    return is_digit(c) ? Expected::kFailure : Expected::kTime;
  }

  Expected time() {
    switch (digit_run(7)) {
      case 2:
        written_.hour = take_number(2);
        return after_lone_hour();
      case 4:
        written_.hour = take_number(2);
        written_.minute = take_number(2);
        return Expected::kZone;
      case 6:
        written_.hour = take_number(2);
        written_.minute = take_number(2);
        written_.second = take_number(2);
        return Expected::kZone;
      default:
        take();
        return Expected::kTime;
    }
  }

  [[nodiscard]] Expected after_lone_hour() const {
    if (rest_.empty()) return Expected::kDone;
    if (rest_[0] == ':') return Expected::kMinute;
    return starts_zone(rest_[0]) ? Expected::kZone : Expected::kFailure;
  }

  // What follows the minute is looked at here, and again by the second, which takes no zone: a zone cannot
  // follow "hh:mm".
  Expected minute() {
    const Expected next = pair_behind_colons(written_.minute, Expected::kMinute, Expected::kSecond);
    if (next != Expected::kSecond || rest_.empty()) return next;
    return rest_[0] == ':' || starts_zone(rest_[0]) ? next : Expected::kFailure;
  }

  Expected zone() {
    switch (take()) {
      case 'Z':
        return Expected::kDone;
      case '+':
        return Expected::kZoneHours;
      case '-':
        written_.zone_sign = '-';
        return Expected::kZoneHours;
      default:
        return Expected::kFailure;
    }
  }

  Expected zone_hours() {
    switch (digit_run(5)) {
      case 2:
        written_.zone_hours = take_number(2);
        return Expected::kZoneMinutes;
      case 4:
        written_.zone_hours = take_number(2);
        written_.zone_minutes = take_number(2);
        return Expected::kDone;
      default:
        return Expected::kFailure;
    }
  }

  // A digit and one more character, which counts 0 when it is none.
  Expected loose_pair(int32_t &value, Expected next) {
    if (!is_digit(rest_[0]) || rest_.size() < 2) return Expected::kFailure;
    const int32_t tens = digit_value(take());
    const char units = take();
    value = tens * 10 + (is_digit(units) ? digit_value(units) : 0);
    return next;
  }

  // Two digits, or a colon before them.
  Expected pair_behind_colons(int32_t &value, Expected current, Expected next) {
    if (rest_[0] == ':') {
      take();
      return current;
    }
    if (digit_run(2) != 2) return Expected::kFailure;
    value = take_number(2);
    return next;
  }

  // The digits from here on, at most limit: a longer run is not told apart, so that none is counted twice.
  [[nodiscard]] std::size_t digit_run(std::size_t limit) const {
    const std::size_t end = std::min(limit, rest_.size());
    std::size_t count = 0;
    while (count < end && is_digit(rest_[count])) {
      ++count;
    }
    return count;
  }

  char take() {
    const char c = rest_[0];
    rest_.remove_prefix(1);
    return c;
  }

  int32_t take_number(std::size_t digits) {
    int32_t number = 0;
    for (std::size_t i = 0; i < digits; ++i) {
      number = number * 10 + digit_value(rest_[i]);
    }
    rest_.remove_prefix(digits);
    return number;
  }

  std::string_view rest_;
  WrittenTime written_;
};

// Years of two digits, written with four, are those of the twentieth century.
constexpr int32_t kLastShortYear = 99;

tm record_of(const WrittenTime &written) {
  tm record{};
  record.tm_year = written.year > kLastShortYear ? written.year - 1900 : written.year;
  record.tm_mon = written.month - 1;
  record.tm_mday = written.day;
  record.tm_hour = written.hour;
  record.tm_min = written.minute;
  record.tm_sec = written.second;
  return record;
}

}  // namespace

uint64_t ZfxParseIso8601(const char *text, uint64_t length, struct tm *tm_out) {
  if (text == nullptr && length != 0) return 0;
  Iso8601Scanner scanner({text, length});
  if (!scanner.scan()) return 0;
  const WrittenTime &written = scanner.written();
  tm record = record_of(written);
  if (tm_out != nullptr) *tm_out = record;
  // The zone goes on as the number that its text "+hhmm" is read as: one below an hour counts as hours.
  zorvcrt::shift_by_numeric_zone(record, written.zone_sign, written.zone_hours * 100 + written.zone_minutes);
  const auto seconds = zorvcrt::utc_seconds(record);
  return seconds && *seconds > 0 ? static_cast<uint64_t>(*seconds) : 0;
}
