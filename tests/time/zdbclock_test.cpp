#include "zdbclock.h"

#include <gtest/gtest.h>

#include <climits>
#include <ctime>
#include <random>
#include <vector>

namespace {

std::vector<uint64_t> split(int64_t a, int64_t b) {
  ZfxHrTimeDiff difference;
  pphrtimediff(&difference, a, b);
  return {difference.total,        difference.hours,        difference.minutes,    difference.seconds,
          difference.milliseconds, difference.microseconds, difference.nanoseconds};
}

uint64_t nanoseconds_of(clockid_t clock) {
  timespec now{};
  ::clock_gettime(clock, &now);
  return static_cast<uint64_t>(now.tv_sec) * 1000000000U + static_cast<uint64_t>(now.tv_nsec);
}

TEST(Fphrtime, ReadsTheMonotonicClockInNanoseconds) {
  const uint64_t before = nanoseconds_of(CLOCK_MONOTONIC);
  const uint64_t reading = fphrtime();
  const uint64_t after = nanoseconds_of(CLOCK_MONOTONIC);
  EXPECT_LE(before, reading);
  EXPECT_LE(reading, after);
}

TEST(Fphrtimms, ReadsTheRealTimeClockInMilliseconds) {
  // A clock that is set between the readings is read again.
  for (int attempt = 0; attempt < 5; ++attempt) {
    const uint64_t before = nanoseconds_of(CLOCK_REALTIME) / 1000000;
    const uint64_t reading = fphrtimms();
    const uint64_t after = nanoseconds_of(CLOCK_REALTIME) / 1000000;
    if (before <= reading && reading <= after) return;
  }
  FAIL() << "not the real-time clock";
}

TEST(Pphrtimediff, SplitsAnIntervalWhicheverReadingIsTheLater) {
  const std::vector<uint64_t> expected = {3723004005006, 1, 2, 3, 4, 5, 6};
  EXPECT_EQ(split(3723004005006, 0), expected);
  EXPECT_EQ(split(0, 3723004005006), expected);
  EXPECT_EQ(split(-3723004005006, 0), expected);
  EXPECT_EQ(split(3723004005006 + 7, 7), expected);
}

TEST(Pphrtimediff, CarriesEachUnitAtItsLimit) {
  EXPECT_EQ(split(5, 5), (std::vector<uint64_t>{0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(split(999, 0), (std::vector<uint64_t>{999, 0, 0, 0, 0, 0, 999}));
  EXPECT_EQ(split(1000, 0), (std::vector<uint64_t>{1000, 0, 0, 0, 0, 1, 0}));
  EXPECT_EQ(split(999999, 0), (std::vector<uint64_t>{999999, 0, 0, 0, 0, 999, 999}));
  EXPECT_EQ(split(1000000, 0), (std::vector<uint64_t>{1000000, 0, 0, 0, 1, 0, 0}));
  EXPECT_EQ(split(999999999, 0), (std::vector<uint64_t>{999999999, 0, 0, 0, 999, 999, 999}));
  EXPECT_EQ(split(1000000000, 0), (std::vector<uint64_t>{1000000000, 0, 0, 1, 0, 0, 0}));
  EXPECT_EQ(split(59999999999, 0), (std::vector<uint64_t>{59999999999, 0, 0, 59, 999, 999, 999}));
  EXPECT_EQ(split(60000000000, 0), (std::vector<uint64_t>{60000000000, 0, 1, 0, 0, 0, 0}));
  EXPECT_EQ(split(3599999999999, 0), (std::vector<uint64_t>{3599999999999, 0, 59, 59, 999, 999, 999}));
  EXPECT_EQ(split(3600000000000, 0), (std::vector<uint64_t>{3600000000000, 1, 0, 0, 0, 0, 0}));
  EXPECT_EQ(split(360000000000000, 0), (std::vector<uint64_t>{360000000000000, 100, 0, 0, 0, 0, 0}));
}

TEST(Pphrtimediff, MeasuresReadingsAtBothEndsOfTheirType) {
  EXPECT_EQ(split(INT64_MAX, INT64_MIN)[0], UINT64_MAX);
  EXPECT_EQ(split(INT64_MIN, INT64_MAX)[0], UINT64_MAX);
  EXPECT_EQ(split(INT64_MIN, 0)[0], uint64_t{1} << 63);
}

TEST(Pphrtimediff, PutsTogetherToTheTotalForRandomReadings) {
  std::mt19937_64 random(23);
  for (int round = 0; round < 100000; ++round) {
    const auto parts = split(static_cast<int64_t>(random()), static_cast<int64_t>(random()));
    ASSERT_EQ(((((parts[1] * 60 + parts[2]) * 60 + parts[3]) * 1000 + parts[4]) * 1000 + parts[5]) * 1000 +
                  parts[6],
              parts[0]);
    for (std::size_t unit = 2; unit < parts.size(); ++unit)
      ASSERT_LT(parts[unit], unit < 4 ? 60U : 1000U);
  }
}

TEST(Pphrtimediff, IgnoresANullRecord) {
  pphrtimediff(nullptr, 1, 2);
}

}  // namespace
