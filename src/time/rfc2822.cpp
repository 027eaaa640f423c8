// The reader of mail dates: one pass over the text by a state machine, then the fields to seconds. What it
// accepts beyond the standard, and what not, is a promise to callers, see rfc2822.h.
#include "rfc2822.h"

#include <array>
#include <cstddef>
#include <string_view>

#include "block_pattern.hpp"
#include "digits.hpp"
#include "iso8601.h"
#include "name_table.hpp"
#include "timestamps_utc.hpp"
#include "timestamps_zone.hpp"
#include "wrapping.hpp"
#include "written_time.hpp"

namespace {

using zorvcrt::BlockPattern;
using zorvcrt::digit_value;
using zorvcrt::DigitBlock;
using zorvcrt::is_digit;
using zorvcrt::NameTable;

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
  kZone,
  kDone,
  kFailure,
};

struct MailTime : zorvcrt::WrittenTime {
  std::string_view zone;  // a part of the text, empty without a zone that counts
};

constexpr int32_t kUnknownDaylight = -1;

constexpr NameTable kWeekdays(std::array<std::string_view, 7>{"Mon", "Tue", "Wed", "Thu", "Fri", "Sat",
                                                              "Sun"});
constexpr NameTable kMonths(std::array<std::string_view, 12>{"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul",
                                                             "Aug", "Sep", "Oct", "Nov", "Dec"});

// The white space of mail headers, whatever the locale says.
constexpr bool is_header_space(char c) {
  return static_cast<unsigned char>(c) <= ' ' && (c == ' ' || c == '\t' || c == '\n' || c == '\r');
}

// A number grows by a digit, or by a blank, which counts as the digit -16.
void append_digit(int32_t &number, char c) {
  number = zorvcrt::wrapping_add(zorvcrt::wrapping_multiply(number, 10), digit_value(c));
}

// The usual form in blocks, which overlap.
constexpr BlockPattern kDayAndMonth("00 ??? 0");
constexpr BlockPattern kYearAndHour("0000 00:");
constexpr BlockPattern kTimeOfDay("0:00:00 ");
constexpr std::size_t kDayOffset = 5;
constexpr std::size_t kMonthOffset = 8;
constexpr std::size_t kYearOffset = 12;
constexpr std::size_t kTimeOffset = 18;
constexpr std::size_t kUsualLength = 26;

class MailDateScanner {
 public:
  explicit MailDateScanner(std::string_view text) : rest_(text) {}

  // Tells whether the text is acceptable; one that ends early is.
  bool scan() {
    Expected expected = usual_form();
    while (!rest_.empty() && expected != Expected::kDone && expected != Expected::kFailure) {
      expected = step(expected);
    }
    return expected != Expected::kFailure;
  }

  [[nodiscard]] const MailTime &written() const { return written_; }

 private:
  // "Thu, 29 Feb 2024 12:00:00 ", the form of nearly all texts, is taken in three steps and the zone;
  // character by character it takes two thirds longer. Anything else begins with the weekday.
  Expected usual_form() {
    if (rest_.size() < kUsualLength) return Expected::kWeekday;
    const uint64_t date = kDayAndMonth.difference(rest_.data() + kDayOffset);
    const uint64_t year = kYearAndHour.difference(rest_.data() + kYearOffset);
    const uint64_t time = kTimeOfDay.difference(rest_.data() + kTimeOffset);
    const int32_t month = kMonths.find({rest_.data() + kMonthOffset, kMonths.kNameLength});
    if (kWeekdays.find(rest_) == 0 || rest_[3] == ' ' || rest_[4] != ' ' || month == 0 ||
        !kDayAndMonth.matches(date) || !kYearAndHour.matches(year) || !kTimeOfDay.matches(time)) {
      return Expected::kWeekday;
    }
    written_.day = DigitBlock(date).pair(0);
    written_.month = month;
    written_.year = DigitBlock(year).pair(0) * 100 + DigitBlock(year).pair(2);
    written_.hour = DigitBlock(year).pair(5);
    written_.minute = DigitBlock(time).pair(2);
    written_.second = DigitBlock(time).pair(5);
    rest_.remove_prefix(kUsualLength);
    return zone();
  }

  // Every state is entered with a character left. All take at least one but the zone, which may be empty and
  // is the last.
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
        return digits_up_to(' ', written_.second, Expected::kSecond, Expected::kZone);
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
    std::size_t length = 0;
    while (length < rest_.size() && !is_header_space(rest_[length])) {
      ++length;
    }
    if (length < rest_.size()) written_.zone = {rest_.data(), length};
    return Expected::kDone;
  }

  char take() {
    const char c = rest_[0];
    rest_.remove_prefix(1);
    return c;
  }

  std::string_view rest_;
  MailTime written_;
};

}  // namespace

uint64_t ZfxParseRfc2822(const char *text, uint64_t length, struct tm *tm_out) {
  if (text == nullptr && length != 0) return 0;
  MailDateScanner scanner({text, length});
  if (!scanner.scan()) return 0;
  tm record = zorvcrt::record_of(scanner.written(), kUnknownDaylight);
  if (tm_out != nullptr) *tm_out = record;
  zorvcrt::shift_by_zone(record, scanner.written().zone);  // a name not known leaves the time as UTC
  int64_t seconds = 0;
  return zorvcrt::utc_seconds(record, seconds) && seconds > 0 ? static_cast<uint64_t>(seconds) : 0;
}

uint64_t ZfxParseTimestamp(const char *text, uint64_t length, struct tm *tm_out) {
  const uint64_t seconds = ZfxParseRfc2822(text, length, tm_out);
  return seconds != 0 ? seconds : ZfxParseIso8601(text, length, tm_out);
}
