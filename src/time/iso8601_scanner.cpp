// The state machine that reads dates of the ISO 8601 family, one pass over the text. What it accepts beyond
// the standard, and what not, is a promise to callers, see iso8601.h.
#include "iso8601_scanner.hpp"

#include <algorithm>
#include <cstddef>

#include "block_pattern.hpp"
#include "digits.hpp"

namespace zorvcrt {

namespace {

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

constexpr bool is_date_separator(char c) {
  return c == '-' || c == '.' || c == '/';
}

constexpr bool starts_zone(char c) {
  return c == 'Z' || c == '+' || c == '-';
}

// The usual form in blocks, which overlap.
constexpr BlockPattern kYearAndMonth("0000-00-");
constexpr BlockPattern kDayAndHour("00?00:00");
constexpr BlockPattern kTimeOfDay("00:00:00");
constexpr std::size_t kDayOffset = 8;
constexpr std::size_t kTimeOffset = 11;
constexpr std::size_t kUsualLength = 19;

class Iso8601Scanner {
 public:
  Iso8601Scanner(std::string_view text, IsoTime &written) : rest_(text), written_(written) {}

  // Tells whether the text is acceptable; one that ends early is.
  bool scan() {
    Expected expected = usual_form();
    while (!rest_.empty() && expected != Expected::kDone && expected != Expected::kFailure) {
      expected = step(expected);
    }
    return expected != Expected::kFailure;
  }

 private:
  // "2024-02-29T12:00:00", the form of nearly all texts, is taken in three steps to where the zone is
  // expected; character by character it takes half as long again. Anything else begins with the year.
  Expected usual_form() {
    if (rest_.size() < kUsualLength) return Expected::kYear;
    const uint64_t date = kYearAndMonth.difference(rest_.data());
    const uint64_t day = kDayAndHour.difference(rest_.data() + kDayOffset);
    const uint64_t time = kTimeOfDay.difference(rest_.data() + kTimeOffset);
    if (!kYearAndMonth.matches(date) || !kDayAndHour.matches(day) || !kTimeOfDay.matches(time) ||
        is_digit(rest_[kTimeOffset - 1])) {
      return Expected::kYear;
    }
    written_.year = DigitBlock(date).pair(0) * 100 + DigitBlock(date).pair(2);
    written_.month = DigitBlock(date).pair(5);
    written_.day = DigitBlock(day).pair(0);
    written_.hour = DigitBlock(time).pair(0);
    written_.minute = DigitBlock(time).pair(3);
    written_.second = DigitBlock(time).pair(6);
    rest_.remove_prefix(kUsualLength);
    return Expected::kZone;
  }

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
  IsoTime &written_;
};

}  // namespace

bool scan_iso8601(std::string_view text, IsoTime &written) {
  written = {};
  return Iso8601Scanner(text, written).scan();
}

}  // namespace zorvcrt
