// Broken-down times and zone texts: the shift against its tables, UTC against mktime(), the written form
// against strftime().
#include "check.hpp"
#include "input.hpp"
#include "plain_time.hpp"
#include "timestamps.h"

namespace {

// Most fields near their ranges, some anywhere.
int field(fuzz::Input &input, int kind) {
  return kind == 0   ? input.integer<int32_t>()
         : kind == 1 ? input.integer<int16_t>()
                     : input.integer<int8_t>();
}

void check_seconds(tm record) {
  tm expected_record = record;
  int64_t expected = 0;
  const bool known = plain::utc_seconds(expected_record, expected);
  uint64_t seconds = 1;
  const int64_t result = ZfxTimeToUTC(&seconds, &record);
  fuzz::check_equal(result, int64_t{known && expected >= 0 ? 0 : -1}, "result");
  fuzz::check_equal(seconds, known && expected >= 0 ? static_cast<uint64_t>(expected) : uint64_t{0},
                    "seconds");
  fuzz::check_equal(plain::fields(record), plain::fields(expected_record), "normalised fields");
}

void check_written(int64_t seconds, int32_t capacity) {
  std::string expected;
  const time_t time = seconds;
  tm record = {};
  char text[64] = "";
  if (::gmtime_r(&time, &record) != nullptr) std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &record);
  expected = text;
  if (expected.size() >= static_cast<std::size_t>(capacity)) expected.clear();
  const auto area = std::make_unique<char[]>(static_cast<std::size_t>(capacity));
  fuzz::check(ZfxFormatIso8601(time, area.get(), capacity) == area.get(), "the area is the result");
  fuzz::check_equal(std::string(area.get()), expected, "written time");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  static const bool is_utc = plain::use_utc();
  fuzz::check(is_utc, "TZ is empty");
  fuzz::Input input(data, size);
  const int kind = input.within(0, 3);
  tm record = {};
  record.tm_year = field(input, kind);
  record.tm_mon = field(input, kind);
  record.tm_mday = field(input, kind);
  record.tm_hour = field(input, kind);
  record.tm_min = field(input, kind);
  record.tm_sec = field(input, kind);
  record.tm_isdst = input.within(-1, 1);
  const int64_t seconds = kind == 0 ? input.integer<int64_t>() : input.integer<int32_t>();
  const int32_t capacity = input.within(1, 40);
  const std::string zone = fuzz::c_text(input.rest());

  check_seconds(record);
  check_written(seconds, capacity);
  tm expected = record;
  const int32_t expected_result = plain::shift(expected, zone);
  const auto copy = fuzz::exact_copy(zone.c_str(), zone.size() + 1);
  fuzz::check_equal(ZfxTimestampToUTC(&record, copy.get()), expected_result, "result for a zone");
  fuzz::check_equal(plain::fields(record), plain::fields(expected), "shifted fields");
  check_seconds(record);
  return 0;
}
