// ZfxTimeToUTC against the C library's mktime() with the zone switched around it.
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <random>
#include <thread>
#include <vector>

#include "files.hpp"
#include "records.hpp"
#include "rfc2822.h"
#include "timestamps.h"

namespace {

using records::record;
using records::same;
using records::text;

constexpr long kFirstSecond = -67768040609740800;  // 1 January of the lowest tm_year
constexpr long kLastSecond = 67768036191676799;    // the end of the highest one

// Compares one conversion with what the library's mktime() has made of the same record.
void expect_as_mktime(const tm &given, time_t expected, const tm &expected_record) {
  tm fields = given;
  uint64_t seconds = 12345;
  const int64_t result = ZfxTimeToUTC(&seconds, &fields);
  ASSERT_EQ(result, expected < 0 ? -1 : 0) << text(given);
  ASSERT_EQ(seconds, expected < 0 ? 0U : static_cast<uint64_t>(expected)) << text(given);
  ASSERT_TRUE(same(fields, expected_record))
      << text(given) << "\n  gives   " << text(fields) << "\n  and not " << text(expected_record);
}

void compare_by_switching_the_zone(const tm &given) {
  tm expected_record = given;
  const time_t expected = records::seconds_by_switching_the_zone(expected_record);
  expect_as_mktime(given, expected, expected_record);
}

// For many records: the caller has made UTC the zone already.
void compare_under_empty_zone(const tm &given) {
  tm expected_record = given;
  const time_t expected = std::mktime(&expected_record);
  expect_as_mktime(given, expected, expected_record);
}

// Records of every kind: ordinary, with fields out of range, far out of range and at the ends of int.
class RandomRecords {
 public:
  explicit RandomRecords(unsigned seed) : random_(seed) {}

  int below(int bound) { return static_cast<int>(random_() % static_cast<unsigned>(bound)); }

  tm next(int daylight) {
    tm fields{};
    fields.tm_year = field(70, 200);
    fields.tm_mon = field(0, 11);
    fields.tm_mday = field(1, 31);
    fields.tm_hour = field(0, 23);
    fields.tm_min = field(0, 59);
    fields.tm_sec = field(0, 59);
    fields.tm_wday = field(0, 6);
    fields.tm_yday = field(0, 365);
    fields.tm_gmtoff = field(0, 3600);
    fields.tm_isdst = daylight;
    return fields;
  }

 private:
  int field(int low, int high) {
    switch (below(8)) {
      case 0:
        return low - 1000 + below(2000 + high - low);
      case 1:
        return static_cast<int>(random_());
      case 2:
        return below(2) == 0 ? INT_MIN + below(3) : INT_MAX - below(3);
      default:
        return low + below(high - low + 1);
    }
  }

  std::mt19937 random_;
};

TEST(ZfxTimeToUTC, EqualsTheSwitchOfTheZoneOnRandomRecords) {
  for (const char *zone : {"Europe/Berlin", "Asia/Kolkata", "XYZ-13:45", ""}) {
    const records::TimeZone caller(zone);
    RandomRecords records(20261121);
    for (int round = 0; round < 5000; ++round) {
      // What mktime() remembers of its last zone must not matter.
      if (round % 7 == 0) {
        tm local = records.next(records.below(3) - 1);
        std::mktime(&local);
      }
      ASSERT_NO_FATAL_FAILURE(compare_by_switching_the_zone(records.next(-records.below(2))));
    }
  }
}

TEST(ZfxTimeToUTC, EqualsTheSwitchOfTheZoneForPositiveDaylightFlags) {
  const records::TimeZone caller("America/New_York");
  RandomRecords records(7);
  for (const int daylight : {1, 2, INT_MAX}) {
    for (int round = 0; round < 2000; ++round) {
      ASSERT_NO_FATAL_FAILURE(compare_by_switching_the_zone(records.next(daylight)));
    }
  }
}

// ZORVCRT_TEST_SCALE=100 makes this a long run.
TEST(ZfxTimeToUTC, EqualsMktimeUnderAnEmptyZoneOnManyRandomRecords) {
  const char *scale = std::getenv("ZORVCRT_TEST_SCALE");
  const long rounds = 300000L * (scale == nullptr ? 1 : std::atol(scale));
  const records::TimeZone utc("");
  RandomRecords records(11);
  for (long round = 0; round < rounds; ++round) {
    const int daylight = records.below(400) == 0 ? 1 : -records.below(2);
    ASSERT_NO_FATAL_FAILURE(compare_under_empty_zone(records.next(daylight)));
  }
}

TEST(ZfxTimeToUTC, EqualsMktimeOnEveryDayOfSixHundredYears) {
  const records::TimeZone utc("");
  for (int day = 1; day <= 219146; ++day) {
    ASSERT_NO_FATAL_FAILURE(compare_under_empty_zone(record(1790, 1, day, 7, 8, 9, -1)));
  }
}

// Every way to write a time near an end: the fields that are not the year may carry it over the end and back.
TEST(ZfxTimeToUTC, EqualsTheSwitchOfTheZoneNearBothEnds) {
  const records::TimeZone utc("");
  tm fields{};
  fields.tm_min = 59;
  for (const int year : {INT_MIN, INT_MIN + 1, INT_MAX - 1, INT_MAX}) {
    for (const int month : {-12, -1, 0, 11, 12}) {
      for (const int day : {0, 1, 31, 32}) {
        for (const int hour : {-1, 0, 1, 23}) {
          for (const int second : {INT_MIN, -3601, -60, -1, 0, 59, 60, 3600, INT_MAX}) {
            fields.tm_year = year;
            fields.tm_mon = month;
            fields.tm_mday = day;
            fields.tm_hour = hour;
            fields.tm_sec = second;
            fields.tm_isdst = -1;
            ASSERT_NO_FATAL_FAILURE(compare_under_empty_zone(fields));
          }
        }
      }
    }
  }
}

// mktime() takes milliseconds for each of these: it looks for daylight saving in years that do not exist.
TEST(ZfxTimeToUTC, EqualsTheSwitchOfTheZoneNearBothEndsForAPositiveDaylightFlag) {
  const records::TimeZone utc("");
  for (const bool is_last : {false, true}) {
    for (const int minutes : {-61, -60, -59, -1, 0, 1, 59, 60, 61}) {
      for (const int second : {-3601, -1, 0, 59, 60, 3600}) {
        tm fields{};
        fields.tm_year = is_last ? INT_MAX : INT_MIN;
        fields.tm_mon = is_last ? 12 : 0;
        fields.tm_mday = 1;
        fields.tm_min = minutes;
        fields.tm_sec = second;
        fields.tm_isdst = 1;
        ASSERT_NO_FATAL_FAILURE(compare_under_empty_zone(fields));
      }
    }
  }
}

// The guess that mktime() keeps from call to call starts its search elsewhere; at the ends it must still
// arrive.
TEST(ZfxTimeToUTC, EqualsTheSwitchOfTheZoneAtTheEndsWhateverTheZoneBefore) {
  for (const char *zone : {"XYZ-24:59:59", "XYZ+24:59:59", "XYZ-0:0:1", "XYZ+0:0:1"}) {
    for (const bool is_last : {false, true}) {
      for (int offset = -100; offset <= 100; offset += 5) {
        for (const int daylight : {-1, 0, 1}) {
          const records::TimeZone caller(zone);
          tm before = record(2024, 2, 29);
          std::mktime(&before);
          tm fields{};
          fields.tm_year = is_last ? INT_MAX : INT_MIN;
          fields.tm_mon = is_last ? 12 : 0;
          fields.tm_mday = 1;
          fields.tm_sec = offset;
          fields.tm_isdst = daylight;
          ASSERT_NO_FATAL_FAILURE(compare_by_switching_the_zone(fields));
        }
      }
    }
  }
}

TEST(ZfxTimeToUTC, RefusesWhatLiesBeyondTheEndsAndLeavesItAsItWas) {
  tm fields = record(0, 1, 1);
  fields.tm_year = INT_MAX;
  fields.tm_mon = 12;
  const tm given = fields;
  uint64_t seconds = 12345;
  errno = 0;
  EXPECT_EQ(ZfxTimeToUTC(&seconds, &fields), -1);
  EXPECT_EQ(errno, EOVERFLOW);
  EXPECT_EQ(seconds, 0U);
  EXPECT_TRUE(same(fields, given));

  fields.tm_sec = -1;  // the minute that the search begins with lies beyond the end already
  EXPECT_EQ(ZfxTimeToUTC(&seconds, &fields), -1);
  fields.tm_min = -1;
  fields.tm_sec = 59;
  EXPECT_EQ(ZfxTimeToUTC(&seconds, &fields), 0);
  EXPECT_EQ(seconds, static_cast<uint64_t>(kLastSecond));
}

TEST(ZfxTimeToUTC, ReachesTheFirstSecondButNotADaylightHourBeforeIt) {
  tm fields{};
  fields.tm_year = INT_MIN;
  fields.tm_mday = 1;
  tm daylight = fields;
  EXPECT_EQ(ZfxTimeToUTC(nullptr, &fields), -1);
  EXPECT_EQ(fields.tm_wday, 4);  // normalised: it can be represented and only lies before the epoch
  const time_t first = kFirstSecond;
  tm back{};
  ASSERT_NE(::gmtime_r(&first, &back), nullptr);
  EXPECT_EQ(back.tm_year, INT_MIN);

  daylight.tm_isdst = 1;
  daylight.tm_sec = 4000;  // more than the hour, but the hour alone lies before the beginning
  EXPECT_EQ(ZfxTimeToUTC(nullptr, &daylight), -1);
  EXPECT_EQ(daylight.tm_sec, 4000);
}

TEST(ZfxTimeToUTC, TakesOneHourOffForAPositiveDaylightFlagOnly) {
  for (const int daylight : {INT_MIN, -1, 0, 1, 2, INT_MAX}) {
    tm fields = record(2024, 2, 29, 12, 0, 0, daylight);
    uint64_t seconds = 0;
    EXPECT_EQ(ZfxTimeToUTC(&seconds, &fields), 0);
    EXPECT_EQ(seconds, daylight > 0 ? 1709204400U : 1709208000U) << daylight;
    EXPECT_EQ(fields.tm_hour, daylight > 0 ? 11 : 12) << daylight;
    EXPECT_EQ(fields.tm_isdst, 0);
  }
}

TEST(ZfxTimeToUTC, SplitsAtTheEpoch) {
  uint64_t seconds = 12345;
  tm before = record(1969, 12, 31, 23, 59, 59);
  EXPECT_EQ(ZfxTimeToUTC(&seconds, &before), -1);
  EXPECT_EQ(seconds, 0U);
  seconds = 12345;
  tm epoch = record(1970, 1, 1);
  EXPECT_EQ(ZfxTimeToUTC(&seconds, &epoch), 0);
  EXPECT_EQ(seconds, 0U);
  tm next = record(1970, 1, 1, 0, 0, 1);
  EXPECT_EQ(ZfxTimeToUTC(&seconds, &next), 0);
  EXPECT_EQ(seconds, 1U);
}

TEST(ZfxTimeToUTC, NormalisesTimesBeforeTheEpochToo) {
  tm fields = record(1969, 13, 0, 25, 61, 61);
  EXPECT_EQ(ZfxTimeToUTC(nullptr, &fields), 0);
  tm early = record(1960, 13, 0, 25, 61, 61);
  EXPECT_EQ(ZfxTimeToUTC(nullptr, &early), -1);
  tm expected = record(1961, 1, 1, 2, 2, 1);
  expected.tm_wday = 0;
  expected.tm_yday = 0;
  expected.tm_zone = "UTC";
  EXPECT_TRUE(same(early, expected)) << text(early);
}

TEST(ZfxTimeToUTC, LeavesTheCallersZoneAsItIs) {
  for (const char *zone : {"Europe/Berlin", "", static_cast<const char *>(nullptr)}) {
    const records::TimeZone caller(zone);
    tm fields = record(2024, 2, 29, 12);
    ZfxTimeToUTC(nullptr, &fields);
    EXPECT_STREQ(std::getenv("TZ"), zone);
  }
}

TEST(ZfxTimeToUTC, ToleratesNullArguments) {
  uint64_t seconds = 12345;
  EXPECT_EQ(ZfxTimeToUTC(&seconds, nullptr), -1);
  EXPECT_EQ(seconds, 0U);
  EXPECT_EQ(ZfxTimeToUTC(nullptr, nullptr), -1);
  tm fields = record(1970, 1, 2);
  EXPECT_EQ(ZfxTimeToUTC(nullptr, &fields), 0);
  EXPECT_EQ(fields.tm_wday, 5);
}

TEST(ZfxTimeToUTC, ServesManyThreadsAtOnceInAnyZone) {
  const records::TimeZone caller("America/New_York");
  std::vector<std::thread> threads;
  std::vector<int> failures(8, 0);
  for (int &failed : failures) {
    threads.emplace_back([&failed] {
      for (int day = 1; day < 2000; ++day) {
        tm fields = record(1970, 1, day, 12);
        uint64_t seconds = 0;
        ZfxTimeToUTC(&seconds, &fields);
        tm local{};
        const time_t now = day;
        ::localtime_r(&now, &local);
        char text[32];
        ZfxFormatIso8601(static_cast<time_t>(seconds), text, sizeof text);
        if (seconds != static_cast<uint64_t>(day - 1) * 86400 + 43200 || local.tm_gmtoff != -18000 ||
            ZfxParseTimestamp(text, std::strlen(text), nullptr) != seconds) {
          ++failed;
        }
      }
    });
  }
  for (std::thread &thread : threads)
    thread.join();
  EXPECT_EQ(failures, std::vector<int>(8, 0));
}

}  // namespace
