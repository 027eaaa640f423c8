// ZfxTimestampToUTC: the shift of each zone and the day roll that follows it.
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdio>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <utility>

#include "records.hpp"
#include "timestamps.h"

namespace {

using records::record;
using records::same;
using records::text;

// What becomes of a time of day on a day in the middle of a month: "day hh:mm:ss flag".
std::string shifted(int hour, int minute, int second, const char *zone) {
  tm fields = record(2024, 6, 15, hour, minute, second, 7);
  EXPECT_EQ(ZfxTimestampToUTC(&fields, zone), 0) << zone;
  char result[96];
  std::snprintf(result, sizeof result, "%d %02d:%02d:%02d %d", fields.tm_mday, fields.tm_hour, fields.tm_min,
                fields.tm_sec, fields.tm_isdst);
  return result;
}

TEST(ZfxTimestampToUTC, ChangesNothingForNoZone) {
  const tm given = record(2024, 2, 29, 99, 99, 99, 7);
  for (const char *zone : {static_cast<const char *>(nullptr), ""}) {
    tm fields = given;
    EXPECT_EQ(ZfxTimestampToUTC(&fields, zone), 0);
    EXPECT_TRUE(same(fields, given));
  }
}

TEST(ZfxTimestampToUTC, ClearsOnlyTheDaylightFlagForGreenwich) {
  for (const char *zone : {"GMT", "UTC"}) {
    tm fields = record(2024, 2, 29, 99, 99, 99, 7);
    EXPECT_EQ(ZfxTimestampToUTC(&fields, zone), 0);
    EXPECT_TRUE(same(fields, record(2024, 2, 29, 99, 99, 99, 0))) << text(fields);
  }
}

TEST(ZfxTimestampToUTC, AddsAPlusZoneAndSubtractsAMinusZone) {
  EXPECT_EQ(shifted(12, 30, 15, "+0100"), "15 13:30:15 -1");
  EXPECT_EQ(shifted(12, 30, 15, "-0100"), "15 11:30:15 -1");
  EXPECT_EQ(shifted(12, 30, 15, "+0530"), "15 18:00:15 -1");
  EXPECT_EQ(shifted(12, 30, 15, "-0530"), "15 07:00:15 -1");
}

TEST(ZfxTimestampToUTC, ReadsANumberUpToNinetyNineAsHours) {
  EXPECT_EQ(shifted(12, 0, 0, "+1"), "15 13:00:00 -1");
  EXPECT_EQ(shifted(12, 0, 0, "+01:30"), "15 13:00:00 -1");
  EXPECT_EQ(shifted(12, 0, 0, "+0011"), "15 23:00:00 -1");
  EXPECT_EQ(shifted(12, 0, 0, "+0030"), "16 18:00:00 -1");
  EXPECT_EQ(shifted(0, 0, 0, "+99"), "16 75:00:00 -1");
  EXPECT_EQ(shifted(0, 0, 0, "+100"), "15 01:00:00 -1");
  EXPECT_EQ(shifted(0, 0, 0, "+101"), "15 01:01:00 -1");
  EXPECT_EQ(shifted(0, 0, 0, "+199"), "15 02:39:00 -1");
}

TEST(ZfxTimestampToUTC, ReadsNoDigitsAsNoShiftAndStillSetsTheFlag) {
  EXPECT_EQ(shifted(12, 0, 0, "+"), "15 12:00:00 -1");
  EXPECT_EQ(shifted(12, 0, 0, "-"), "15 12:00:00 -1");
  EXPECT_EQ(shifted(12, 0, 0, "+x1"), "15 12:00:00 -1");
  EXPECT_EQ(shifted(12, 0, 0, "-+1"), "15 12:00:00 -1");
}

TEST(ZfxTimestampToUTC, SubtractsTheHoursOfEachNamedZone) {
  EXPECT_EQ(shifted(12, 0, 0, "EST"), "15 08:00:00 0");
  EXPECT_EQ(shifted(12, 0, 0, "EDT"), "15 07:00:00 1");
  EXPECT_EQ(shifted(12, 0, 0, "CST"), "15 07:00:00 0");
  EXPECT_EQ(shifted(12, 0, 0, "CDT"), "15 06:00:00 1");
  EXPECT_EQ(shifted(12, 0, 0, "MST"), "15 06:00:00 0");
  EXPECT_EQ(shifted(12, 0, 0, "MDT"), "15 05:00:00 1");
  EXPECT_EQ(shifted(12, 0, 0, "PST"), "15 05:00:00 0");
  EXPECT_EQ(shifted(12, 0, 0, "PDT"), "15 04:00:00 1");
  EXPECT_EQ(shifted(12, 0, 0, "CET"), "15 13:00:00 -1");
  EXPECT_EQ(shifted(12, 0, 0, "EET"), "15 13:00:00 -1");
}

TEST(ZfxTimestampToUTC, RefusesAnyOtherTextAndLeavesTheRecord) {
  const tm given = record(2024, 2, 29, 99, 99, 99, 7);
  for (const char *zone :
       {"BST", "gmt", "est", "GMT ", " GMT", "UTCx", "E", "ES", "ESTx", "0100", "Z", "\xff"}) {
    tm fields = given;
    EXPECT_EQ(ZfxTimestampToUTC(&fields, zone), -1) << zone;
    EXPECT_TRUE(same(fields, given)) << zone;
  }
}

TEST(ZfxTimestampToUTC, RollsTheDayAtMidnightAndOnlyThere) {
  EXPECT_EQ(shifted(23, 30, 0, "+0100"), "16 00:30:00 -1");
  EXPECT_EQ(shifted(22, 59, 59, "+0100"), "15 23:59:59 -1");
  EXPECT_EQ(shifted(23, 0, 0, "+0100"), "16 00:00:00 -1");
  EXPECT_EQ(shifted(1, 0, 0, "-0100"), "15 00:00:00 -1");
  EXPECT_EQ(shifted(0, 59, 59, "-0100"), "14 23:59:59 -1");
  EXPECT_EQ(shifted(2, 0, 0, "EST"), "14 22:00:00 0");
}

TEST(ZfxTimestampToUTC, RollsOneDayAtMostAndLeavesTheRestInTheHour) {
  EXPECT_EQ(shifted(12, 0, 0, "+4800"), "16 36:00:00 -1");
  EXPECT_EQ(shifted(12, 20, 10, "-4800"), "14 -11:-39:-50 -1");
  EXPECT_EQ(shifted(25, 99, 99, "+0"), "16 02:40:39 -1");  // also for what was out of range before
}

struct Roll {
  int year, month, day;           // tm_year, tm_mon and tm_mday before
  int to_year, to_month, to_day;  // and after
};

void expect_rolls(const char *zone, int hour, std::initializer_list<Roll> rolls) {
  for (const Roll &roll : rolls) {
    tm fields{};
    fields.tm_year = roll.year;
    fields.tm_mon = roll.month;
    fields.tm_mday = roll.day;
    fields.tm_hour = hour;
    EXPECT_EQ(ZfxTimestampToUTC(&fields, zone), 0);
    tm expected{};
    expected.tm_year = roll.to_year;
    expected.tm_mon = roll.to_month;
    expected.tm_mday = roll.to_day;
    expected.tm_hour = 23 - hour;
    expected.tm_isdst = -1;
    EXPECT_TRUE(same(fields, expected)) << text(fields) << "\n" << text(expected);
  }
}

void expect_back(std::initializer_list<Roll> rolls) {
  expect_rolls("-0100", 0, rolls);
}

void expect_forward(std::initializer_list<Roll> rolls) {
  expect_rolls("+0100", 23, rolls);
}

TEST(ZfxTimestampToUTC, StepsBackWithinAMonthWhateverTheMonth) {
  expect_back({{124, 2, 2, 124, 2, 1},
               {124, -5, 31, 124, -5, 30},
               {124, 40, 100, 124, 40, 99},
               {124, 2, 0, 124, 2, -1},
               {124, 2, -7, 124, 2, -8}});
}

TEST(ZfxTimestampToUTC, StepsBackFromMarchByTheLeapRuleOnYearsSince1900) {
  expect_back({{124, 2, 1, 124, 1, 29},    // 2024
               {123, 2, 1, 123, 1, 28},    // 2023
               {100, 2, 1, 100, 1, 28},    // 2000 counts as 100
               {200, 2, 1, 200, 1, 28},    // 2100
               {0, 2, 1, 0, 1, 29},        // 1900 counts as 0
               {400, 2, 1, 400, 1, 29},    // 2300
               {-4, 2, 1, -4, 1, 29},      // 1896
               {-100, 2, 1, -100, 1, 28},  // 1800
               {-400, 2, 1, -400, 1, 29},  // 1500
               {-1, 2, 1, -1, 1, 28}});
}

TEST(ZfxTimestampToUTC, StepsBackFromJanuaryIntoTheYearBefore) {
  expect_back({{124, 0, 1, 123, 11, 31}, {0, 0, 1, -1, 11, 31}});
}

TEST(ZfxTimestampToUTC, StepsBackFromANegativeMonthToDayZero) {
  expect_back({{124, -1, 1, 124, -1, 0}, {124, INT_MIN, 1, 124, INT_MIN, 0}});
}

TEST(ZfxTimestampToUTC, StepsBackFromTheOtherMonthsByTheTable) {
  expect_back({{124, 1, 1, 124, 0, 30},
               {124, 3, 1, 124, 2, 30},
               {124, 4, 1, 124, 3, 31},
               {124, 5, 1, 124, 4, 30},
               {124, 6, 1, 124, 5, 31},
               {124, 7, 1, 124, 6, 30},
               {124, 8, 1, 124, 7, 31},
               {124, 9, 1, 124, 8, 31},
               {124, 10, 1, 124, 9, 30},
               {124, 11, 1, 124, 10, 31},
               {124, 12, 1, 124, 11, 30},
               {124, 13, 1, 124, 12, 30},
               {124, INT_MAX, 1, 124, INT_MAX - 1, 30}});
}

TEST(ZfxTimestampToUTC, StepsForwardFromTheTwentyEighthOfFebruaryByTheSameLeapRule) {
  expect_forward({{124, 1, 28, 124, 1, 29},
                  {123, 1, 28, 123, 2, 1},
                  {100, 1, 28, 100, 2, 1},
                  {200, 1, 28, 200, 2, 1},
                  {0, 1, 28, 0, 1, 29},
                  {400, 1, 28, 400, 1, 29},
                  {-4, 1, 28, -4, 1, 29},
                  {-100, 1, 28, -100, 2, 1},
                  {-400, 1, 28, -400, 1, 29}});
}

TEST(ZfxTimestampToUTC, StepsForwardFromTheTwentyEighthOfOtherMonthsWithinThem) {
  expect_forward({{123, 0, 28, 123, 0, 29}, {123, 2, 28, 123, 2, 29}, {123, 13, 28, 123, 13, 29}});
}

TEST(ZfxTimestampToUTC, StepsForwardFromTheTwentyNinthOfFebruaryToAThirtieth) {
  expect_forward({{124, 1, 29, 124, 1, 30}});
  tm fields = record(2024, 2, 29, 23, 30);
  ZfxTimestampToUTC(&fields, "+0100");
  uint64_t seconds = 0;
  EXPECT_EQ(ZfxTimeToUTC(&seconds, &fields), 0);
  EXPECT_EQ(seconds, 1709253000U);  // 1 March 2024, 00:30
}

TEST(ZfxTimestampToUTC, StepsForwardFromTheThirtiethByTheMonth) {
  for (int month = -1; month <= 13; ++month) {
    if (month == 3 || month == 5 || month == 8 || month == 10) {
      expect_forward({{124, month, 30, 124, month + 1, 1}});
    } else {
      expect_forward({{124, month, 30, 124, month, 31}});
    }
  }
}

TEST(ZfxTimestampToUTC, StepsForwardFromEveryThirtyFirstToTheNextMonth) {
  for (int month = -1; month <= 13; ++month) {
    expect_forward({{124, month, 31, 124, month + 1, 1}});
  }
}

TEST(ZfxTimestampToUTC, StepsForwardFromAnyOtherDayToTheNextNumber) {
  expect_forward({{124, 1, 27, 124, 1, 28},
                  {124, 1, 1, 124, 1, 2},
                  {124, 1, 0, 124, 1, 1},
                  {124, 1, -1, 124, 1, 0},
                  {124, 1, 32, 124, 1, 33}});
}

TEST(ZfxTimestampToUTC, WrapsInThirtyTwoBits) {
  // 3600 x 1193047 is 4294969200, which is 1904 in 32 bits.
  EXPECT_EQ(shifted(1193047, 0, 0, "+0"), "15 00:31:44 -1");
  EXPECT_EQ(shifted(0, 0, 0, "+119304700"), "15 00:31:44 -1");
  EXPECT_EQ(shifted(0, 0, 0, "+4294967297"), "15 01:00:00 -1");
  EXPECT_EQ(shifted(0, 0, 0, "-4294967297"), "14 23:00:00 -1");
  expect_back({{124, 5, INT_MIN, 124, 5, INT_MAX}, {INT_MIN, 0, 1, INT_MAX, 11, 31}});
  expect_forward({{124, 5, INT_MAX, 124, 5, INT_MIN}, {124, INT_MAX, 31, 124, INT_MIN, 1}});
}

TEST(ZfxTimestampToUTC, ToleratesANullRecord) {
  EXPECT_EQ(ZfxTimestampToUTC(nullptr, nullptr), 0);
  EXPECT_EQ(ZfxTimestampToUTC(nullptr, ""), 0);
  EXPECT_EQ(ZfxTimestampToUTC(nullptr, "+0100"), -1);
  EXPECT_EQ(ZfxTimestampToUTC(nullptr, "GMT"), -1);
}

// The rules once more, written down plainly with numbers that do not wrap.
int plain_shift(tm &fields, const std::string &zone) {
  static const std::map<std::string, std::pair<long, int>> names = {
      {"EST", {4, 0}}, {"EDT", {5, 1}}, {"CST", {5, 0}}, {"CDT", {6, 1}},   {"MST", {6, 0}},
      {"MDT", {7, 1}}, {"PST", {7, 0}}, {"PDT", {8, 1}}, {"CET", {-1, -1}}, {"EET", {-1, -1}}};
  if (zone.empty()) return 0;
  if (zone == "GMT" || zone == "UTC") {
    fields.tm_isdst = 0;
    return 0;
  }
  long time = fields.tm_hour * 3600L + fields.tm_min * 60L + fields.tm_sec;
  int flag = -1;
  if (zone[0] == '+' || zone[0] == '-') {
    const std::size_t end = zone.find_first_not_of("0123456789", 1);
    const std::string digits = zone.substr(1, end == std::string::npos ? end : end - 1);
    const long number = digits.empty() ? 0 : std::stol(digits);
    const long offset = number > 99 ? number / 100 * 3600 + number % 100 * 60 : number * 3600;
    time += zone[0] == '+' ? offset : -offset;
  } else if (const auto named = names.find(zone); named != names.end()) {
    time -= named->second.first * 3600;
    flag = named->second.second;
  } else {
    return -1;
  }
  int &day = fields.tm_mday;
  int &month = fields.tm_mon;
  const int year = fields.tm_year;
  const int february = year % 400 == 0 ? 29 : year % 4 != 0 ? 28 : year % 100 != 0 ? 29 : 28;
  if (time < 0) {
    static const std::map<int, int> before = {{1, 30}, {3, 30}, {4, 31}, {5, 30},  {6, 31},
                                              {7, 30}, {8, 31}, {9, 31}, {10, 30}, {11, 31}};
    time += 86400;
    if (day != 1) {
      --day;
    } else if (month == 2) {
      month = 1;
      day = february;
    } else if (month == 0) {
      --fields.tm_year;
      month = 11;
      day = 31;
    } else if (month < 0) {
      day = 0;
    } else {
      day = month >= 12 ? 30 : before.at(month);
      --month;
    }
  } else if (time > 86399) {
    time -= 86400;
    const bool last = (day == 28 && month == 1 && february == 28) || day == 31 ||
                      (day == 30 && (month == 3 || month == 5 || month == 8 || month == 10));
    if (last) {
      day = 1;
      ++month;
    } else {
      ++day;
    }
  }
  fields.tm_hour = static_cast<int>(time / 3600);
  fields.tm_min = static_cast<int>(time % 3600 / 60);
  fields.tm_sec = static_cast<int>(time % 60);
  fields.tm_isdst = flag;
  return 0;
}

TEST(ZfxTimestampToUTC, AgreesWithThePlainRulesOnRandomZonesAndDates) {
  std::mt19937 random(3);
  const auto below = [&random](int bound) {
    return static_cast<int>(random() % static_cast<unsigned>(bound));
  };
  const std::string alphabet = "+-0123459:ESTCDMPUG";
  const char *const names[] = {"GMT", "UTC", "EST", "EDT", "CST", "CDT",
                               "MST", "MDT", "PST", "PDT", "CET", "EET"};
  for (int round = 0; round < 500000; ++round) {
    std::string zone;
    if (below(3) == 0) {
      zone = names[below(std::size(names))];
    } else {
      for (int length = below(7); length > 0; --length)
        zone += alphabet[static_cast<std::size_t>(below(static_cast<int>(alphabet.size())))];
      if (below(2) == 0) zone.insert(0, below(2) == 0 ? "+" : "-");
    }
    tm fields{};
    fields.tm_year = below(900) - 450;
    fields.tm_mon = below(20) - 4;
    fields.tm_mday = below(2) == 0 ? below(40) - 4 : below(2) == 0 ? 1 : 28 + below(4);
    fields.tm_hour = below(4) == 0 ? below(200) - 100 : below(24);
    fields.tm_min = below(100) - 20;
    fields.tm_sec = below(100) - 20;
    fields.tm_isdst = below(5) - 2;
    tm expected = fields;
    const tm given = fields;
    ASSERT_EQ(ZfxTimestampToUTC(&fields, zone.c_str()), plain_shift(expected, zone)) << zone;
    ASSERT_TRUE(same(fields, expected)) << text(given) << " " << zone << "\n"
                                        << text(fields) << "\n"
                                        << text(expected);
  }
}

}  // namespace
