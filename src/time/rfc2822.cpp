// The reader of mail dates: one pass over the text by a state machine, then the fields to seconds. What it
// accepts beyond the standard, and what not, is a promise to callers, see rfc2822.h.
#include "rfc2822.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "digits.hpp"
#include "iso8601.h"
#include "name_table.hpp"
#include "timestamps_utc.hpp"
#include "timestamps_zone.hpp"
#include "wrapping.hpp"

namespace {

using zorvcrt::digit_value;
using zorvcrt::is_digit;

// What the scanner expects next.
enum class Expected {
  kWeekday,
  kWeekdayEnd,
  kDay,
  kDayUnits,
  kDayEnd,
  kMonth,
  kMonthEnd,
  kYear,
  kYearDigits,
  kHour,
  kMinute,
  kSecond,
  kZoneStart,
  kZone,
  kDone,
  kFailure,
};

struct WrittenTime {
  int32_t day = 0;
  int32_t month = 0;  // 1 to 12
  int32_t year = 0;
  int32_t hour = 0;
  int32_t minute = 0;
  int32_t second = 0;
  std::string_view zone;
};

constexpr zorvcrt::NameTable kWeekdays(std::array<std::string_view, 7>{"Mon", "Tue", "Wed", "Thu", "Fri",
                                                                       "Sat", "Sun"});
constexpr zorvcrt::NameTable kMonths(std::array<std::string_view, 12>{
    "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"});

std::string_view beginning_of(std::string_view text, std::size_t length) {
  return {text.data(), std::min(length, text.size())};
}

// The white space of mail headers, whatever the locale says.
constexpr bool is_header_space(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// A number grows by a digit, or by a blank, which counts as the digit -16.
void append_digit(int32_t &number, char c) {
  number = zorvcrt::wrapping_add(zorvcrt::wrapping_multiply(number, 10), digit_value(c));
}

class MailDateScanner {
 public:
  explicit MailDateScanner(std::string_view text) : rest_(text) {}

  // Tells whether the text is acceptable; one that ends early is.
  bool scan() {
    Expected expected = Expected::kWeekday;
    while (!rest_.empty() && expected != Expected::kDone && expected != Expected::kFailure) {
      expected = step(expected);
    }
    return expected != Expected::kFailure;
  }

  [[nodiscard]] const WrittenTime &written() const { return written_; }

 private:
  // Every state is entered with a character left. All take at least one but the start of the zone, which only
  // looks at it.
  Expected step(Expected expected) {
    switch (expected) {
      case Expected::kWeekday:
        return weekday();
      case Expected::kWeekdayEnd:
        return skip_past_blank(Expected::kWeekdayEnd, Expected::kDay);
      case Expected::kDay:
        return first_digit(written_.day, Expected::kDayUnits);
      case Expected::kDayUnits:
        return day_units();
      case Expected::kDayEnd:
        return take() == ' ' ? Expected::kMonth : Expected::kFailure;
      case Expected::kMonth:
        return month();
      case Expected::kMonthEnd:
        return skip_past_blank(Expected::kMonthEnd, Expected::kYear);
      case Expected::kYear:
        return first_digit(written_.year, Expected::kYearDigits);
      case Expected::kYearDigits:
        return digits_up_to(' ', written_.year, Expected::kYearDigits, Expected::kHour);
      case Expected::kHour:
        return digits_up_to(':', written_.hour, Expected::kHour, Expected::kMinute);
      case Expected::kMinute:
        return digits_up_to(':', written_.minute, Expected::kMinute, Expected::kSecond);
      case Expected::kSecond:
        return digits_up_to(' ', written_.second, Expected::kSecond, Expected::kZoneStart);
      case Expected::kZoneStart:
        return is_header_space(rest_[0]) ? Expected::kDone : Expected::kZone;
      case Expected::kZone:
        return zone();
      case Expected::kDone:
      case Expected::kFailure:
        break;
    }
    return Expected::kFailure;
  }

  // Takes one character with or without a weekday: this is why a text without one begins with a spare.
  Expected weekday() {
    const bool known = kWeekdays.find(rest_) != 0;
    take();
    return known ? Expected::kWeekdayEnd : Expected::kDay;
  }

  Expected month() {
    written_.month = kMonths.find(rest_);
    if (written_.month == 0) return Expected::kFailure;
    take();
    return Expected::kMonthEnd;
  }

  Expected skip_past_blank(Expected current, Expected next) {
    while (!rest_.empty()) {
      if (take() == ' ') return next;
    }
    return current;
  }

  Expected first_digit(int32_t &number, Expected next) {
    const char c = take();
    if (!is_digit(c)) return Expected::kFailure;
    number = digit_value(c);
    return next;
  }

  Expected day_units() {
    const char c = take();
    if (!is_digit(c) && c != ' ') return Expected::kFailure;
    append_digit(written_.day, c);
    return Expected::kDayEnd;
  }

  Expected digits_up_to(char delimiter, int32_t &number, Expected current, Expected next) {
    while (!rest_.empty()) {
      const char c = take();
      if (c == delimiter) return next;
      if (!is_digit(c)) return Expected::kFailure;
      append_digit(number, c);
    }
    return current;
  }

  // A zone that the text ends in does not count.
  Expected zone() {
    const auto *end = std::find_if(rest_.begin(), rest_.end(), is_header_space);
    const bool counts = end != rest_.end();
    const auto length = static_cast<std::size_t>(end - rest_.begin());
    if (counts) written_.zone = beginning_of(rest_, length);
    rest_.remove_prefix(length);
    return counts ? Expected::kDone : Expected::kZone;
  }

  char take() {
    const char c = rest_[0];
    rest_.remove_prefix(1);
    return c;
  }

  std::string_view rest_;
  WrittenTime written_;
};

// Years of two digits count from 1900, whatever the century.
constexpr int32_t kLastShortYear = 99;
constexpr int32_t kUnknownDaylight = -1;

tm record_of(const WrittenTime &written) {
  tm record{};
  record.tm_year = written.year > kLastShortYear ? written.year - 1900 : written.year;
  record.tm_mon = written.month - 1;
  record.tm_mday = written.day;
  record.tm_hour = written.hour;
  record.tm_min = written.minute;
  record.tm_sec = written.second;
  record.tm_isdst = kUnknownDaylight;
  return record;
}

}  // namespace

uint64_t ZfxParseRfc2822(const char *text, uint64_t length, struct tm *tm_out) {
  if (text == nullptr && length != 0) return 0;
  MailDateScanner scanner({text, length});
  if (!scanner.scan()) return 0;
  tm record = record_of(scanner.written());
  if (tm_out != nullptr) *tm_out = record;
  // A zone is a terminated text, so it ends at a null character; one that is not known leaves the time as
  // UTC.
  const std::string_view zone = scanner.written().zone;
  zorvcrt::shift_by_zone(record, beginning_of(zone, zone.find('\0')));
  const auto seconds = zorvcrt::utc_seconds(record);
  return seconds && *seconds > 0 ? static_cast<uint64_t>(*seconds) : 0;
}

uint64_t ZfxParseTimestamp(const char *text, uint64_t length, struct tm *tm_out) {
  const uint64_t seconds = ZfxParseRfc2822(text, length, tm_out);
  return seconds != 0 ? seconds : ZfxParseIso8601(text, length, tm_out);
}
