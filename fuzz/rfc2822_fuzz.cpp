// Mail dates against the states of the scanner said again one by one, and mktime() behind them.
#include "rfc2822.h"

#include <array>

#include "check.hpp"
#include "input.hpp"
#include "iso8601.h"
#include "plain_time.hpp"

namespace {

constexpr std::array kWeekdays{"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
constexpr std::array kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

struct Scan {
  const std::string &text;
  int state = 0;
  int32_t day = 0, month = 0, year = 0, hour = 0, minute = 0, second = 0;
  std::size_t zone_start = 0;
  std::string zone = {};

  static void add(int32_t &number, char c) {
    number = plain::wrapped(int64_t{plain::wrapped(int64_t{number} * 10)} + (c - '0'));
  }
  template <class Names>
  [[nodiscard]] int find(const Names &names, std::size_t at) const {
    for (std::size_t i = 0; i < names.size(); ++i) {
      if (text.compare(at, 3, names[i]) == 0) return static_cast<int>(i) + 1;
    }
    return 0;
  }
  bool number(char c, int32_t &value, char end, int next) {
    if (c == end) {
      state = next;
      return true;
    }
    add(value, c);
    return c >= '0' && c <= '9';
  }
  bool first_digit(char c, int32_t &value, int next) {
    value = c - '0';
    state = next;
    return c >= '0' && c <= '9';
  }

  bool step(std::size_t at) {
    const char c = text[at];
    const bool space = c == ' ' || c == '\t' || c == '\n' || c == '\r';
    switch (state) {
      case 0:
        state = find(kWeekdays, at) != 0 ? 1 : 2;
        return true;
      case 1:
      case 6:
        if (c == ' ') ++state;
        return true;
      case 2:
        return first_digit(c, day, 3);
      case 3:
        add(day, c);
        state = 4;
        return c == ' ' || (c >= '0' && c <= '9');
      case 4:
        state = 5;
        return c == ' ';
      case 5:
        month = find(kMonths, at);
        state = 6;
        return month != 0;
      case 7:
        return first_digit(c, year, 8);
      case 8:
        return number(c, year, ' ', 9);
      case 9:
        return number(c, hour, ':', 10);
      case 10:
        return number(c, minute, ':', 11);
      case 11:
        return number(c, second, ' ', 12);
      case 12:
        zone_start = at;
        state = space ? 14 : 13;
        return true;
      case 13:
        if (!space) return true;
        zone = fuzz::c_text(text.substr(zone_start, at - zone_start));
        state = 14;
        return true;
      default:
        return true;
    }
  }

  bool scan() {
    for (std::size_t at = 0; at < text.size(); ++at) {
      if (!step(at)) return false;
    }
    return true;
  }
};

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  static const bool is_utc = plain::use_utc();
  const std::string text(reinterpret_cast<const char *>(data), size);
  const auto copy = fuzz::exact_copy(text);
  Scan scan{text};
  tm expected_fields = {};
  expected_fields.tm_sec = 77;  // what a failure leaves as it was
  tm fields = expected_fields;
  tm either_fields = expected_fields;
  uint64_t expected = 0;
  if (is_utc && scan.scan()) {
    expected_fields = {};
    expected_fields.tm_year = scan.year <= 99 ? scan.year : plain::wrapped(int64_t{scan.year} - 1900);
    expected_fields.tm_mon = scan.month - 1;
    expected_fields.tm_mday = scan.day;
    expected_fields.tm_hour = scan.hour;
    expected_fields.tm_min = scan.minute;
    expected_fields.tm_sec = scan.second;
    expected_fields.tm_isdst = -1;
    expected = plain::parsed_seconds(expected_fields, scan.zone);
  }
  fuzz::check_equal(ZfxParseRfc2822(copy.get(), text.size(), &fields), expected, "seconds");
  fuzz::check_equal(plain::fields(fields), plain::fields(expected_fields), "fields as written");

  if (expected == 0) expected = ZfxParseIso8601(copy.get(), text.size(), &expected_fields);
  fuzz::check_equal(ZfxParseTimestamp(copy.get(), text.size(), &either_fields), expected, "of either kind");
  fuzz::check_equal(plain::fields(either_fields), plain::fields(expected_fields), "fields of either kind");
  return 0;
}
