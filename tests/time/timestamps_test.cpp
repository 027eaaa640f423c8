// ZfxFormatIso8601.
#include "timestamps.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <random>
#include <string>

#include "records.hpp"

namespace {

std::string formatted(time_t seconds) {
  char buffer[64];
  EXPECT_EQ(ZfxFormatIso8601(seconds, buffer, sizeof buffer), buffer);
  return buffer;
}

std::string by_strftime(time_t seconds) {
  tm fields{};
  if (::gmtime_r(&seconds, &fields) == nullptr) return "";
  char buffer[64] = "";
  std::strftime(buffer, sizeof buffer, "%Y-%m-%d %H:%M:%S", &fields);
  return buffer;
}

TEST(ZfxFormatIso8601, WritesDateAndTimeInUtcWithABlankBetween) {
  const records::TimeZone caller("Asia/Tokyo");
  EXPECT_EQ(formatted(1709208000), "2024-02-29 12:00:00");
  EXPECT_EQ(formatted(0), "1970-01-01 00:00:00");
  EXPECT_EQ(formatted(-1), "1969-12-31 23:59:59");
}

TEST(ZfxFormatIso8601, WritesTheWholeTextOrAnEmptyOneAndNothingPastTheCapacity) {
  for (int32_t capacity = 1; capacity <= 24; ++capacity) {
    for (const time_t seconds : {time_t{1709208000}, time_t{253402300800}}) {
      char buffer[32];
      std::memset(buffer, '?', sizeof buffer);
      EXPECT_EQ(ZfxFormatIso8601(seconds, buffer, capacity), buffer);
      const std::string whole = by_strftime(seconds);
      EXPECT_EQ(buffer, static_cast<std::size_t>(capacity) > whole.size() ? whole : "") << capacity;
      EXPECT_EQ(buffer[capacity], '?') << capacity;
    }
  }
}

TEST(ZfxFormatIso8601, LeavesABufferWithoutRoomAlone) {
  for (const int32_t capacity : {0, -1, INT_MIN}) {
    char buffer[4] = "abc";
    EXPECT_EQ(ZfxFormatIso8601(0, buffer, capacity), buffer);
    EXPECT_STREQ(buffer, "abc");
  }
  EXPECT_EQ(ZfxFormatIso8601(0, nullptr, 32), nullptr);
}

TEST(ZfxFormatIso8601, WritesOtherYearsAsStrftimeDoes) {
  EXPECT_EQ(formatted(253402300799), "9999-12-31 23:59:59");
  EXPECT_EQ(formatted(253402300800), "10000-01-01 00:00:00");
  EXPECT_EQ(formatted(-30610224000), "1000-01-01 00:00:00");
  for (const time_t seconds :
       {-30610224001L, -62135596801L, -62167219201L, 67768036191676799L, -67768040609740800L}) {
    EXPECT_EQ(formatted(seconds), by_strftime(seconds)) << seconds;
  }
}

TEST(ZfxFormatIso8601, GivesAnEmptyTextForYearsThatCannotBeRepresented) {
  for (const time_t seconds : {67768036191676800L, -67768040609740801L, LONG_MAX, LONG_MIN}) {
    EXPECT_EQ(formatted(seconds), "") << seconds;
  }
}

TEST(ZfxFormatIso8601, EqualsStrftimeOnRandomTimes) {
  std::mt19937_64 random(5);
  for (int round = 0; round < 200000; ++round) {
    const auto wide = static_cast<time_t>(random()) >> (random() % 40);
    const auto seconds = round % 2 == 0 ? wide : static_cast<time_t>(random() % 8000000000);
    ASSERT_EQ(formatted(seconds), by_strftime(seconds)) << seconds;
  }
}

}  // namespace
