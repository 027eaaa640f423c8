#include "iso8601.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "guarded_text.hpp"
#include "records.hpp"
#include "timestamps.h"
#include "transition_table.hpp"

namespace {

using records::same;
using records::text;
using records::untouched;

uint64_t parse(std::string_view written, tm *fields = nullptr) {
  return ZfxParseIso8601(written.data(), written.size(), fields);
}

// The fields of an accepted text, "year-month-day hour:minute:second" as tm holds them; "failure" for others.
std::string fields_of(std::string_view written) {
  tm fields = untouched();
  const uint64_t seconds = parse(written, &fields);
  if (same(fields, untouched())) {
    EXPECT_EQ(seconds, 0U) << written;
    return "failure";
  }
  EXPECT_EQ(fields.tm_wday + fields.tm_yday + fields.tm_isdst, 0);
  EXPECT_EQ(fields.tm_gmtoff, 0);
  EXPECT_EQ(fields.tm_zone, nullptr);
  return records::date_and_time(fields);
}

std::string utc(std::string_view written) {
  return records::utc_text(parse(written));
}

TEST(ZfxParseIso8601, ReadsDateTimeAndZone) {
  EXPECT_EQ(parse("2024-02-29T12:00:00Z"), 1709208000U);
  EXPECT_EQ(fields_of("2024-02-29T12:34:56Z"), "124-1-29 12:34:56");
}

TEST(ZfxParseIso8601, TakesATimeWithoutZoneAsUtc) {
  const records::TimeZone caller("America/New_York");
  EXPECT_EQ(parse("2024-02-29 12:00:00"), 1709208000U);
}

TEST(ZfxParseIso8601, AcceptsATextThatStopsEarly) {
  EXPECT_EQ(utc("2024-02-29"), "2024-02-29 00:00:00");
  EXPECT_EQ(parse("2024"), 1701302400U);  // month 0 and day 0: 30 November 2023
  EXPECT_EQ(utc("2024-"), "2023-11-30 00:00:00");
  EXPECT_EQ(utc("2024-02"), "2024-01-31 00:00:00");
  EXPECT_EQ(utc("2024-02-"), "2024-01-31 00:00:00");
  EXPECT_EQ(utc("2024-02-29T"), "2024-02-29 00:00:00");
  EXPECT_EQ(utc("2024-02-29T12"), "2024-02-29 12:00:00");
  EXPECT_EQ(utc("2024-02-29T12:"), "2024-02-29 12:00:00");
  EXPECT_EQ(utc("2024-02-29T12:34"), "2024-02-29 12:34:00");
  EXPECT_EQ(utc("2024-02-29T12:34:"), "2024-02-29 12:34:00");
  EXPECT_EQ(utc("2024-02-29T12:34:56"), "2024-02-29 12:34:56");
  EXPECT_EQ(utc("2024-02-29T12:34:56+"), "2024-02-29 12:34:56");
  EXPECT_EQ(utc("2024-02-29T12:34:56+01"), "2024-02-29 13:34:56");
  EXPECT_EQ(utc("2024-02-29T12:34:56+01:"), "2024-02-29 13:34:56");
}

TEST(ZfxParseIso8601, GivesZeroAndTheFieldsForAnEmptyText) {
  EXPECT_EQ(parse(""), 0U);
  EXPECT_EQ(fields_of(""), "0--1-0 0:0:0");
}

TEST(ZfxParseIso8601, WantsAYearOfFourDigits) {
  for (const char *written : {"9-01-01", "99-01-01", "999-01-01", "12345-01-01", "123456-01-01",
                              "1234567-01-01", "123456789", "-2024", " 2024", "Z", "x"}) {
    EXPECT_EQ(fields_of(written), "failure") << written;
  }
}

TEST(ZfxParseIso8601, TakesYearsBelowOneHundredAsTwentiethCentury) {
  EXPECT_EQ(fields_of("0000-01-01"), "0-0-1 0:0:0");
  EXPECT_EQ(fields_of("0099-01-01"), "99-0-1 0:0:0");
  EXPECT_EQ(utc("0099-01-01"), "1999-01-01 00:00:00");
  EXPECT_EQ(fields_of("0100-01-01"), "-1800-0-1 0:0:0");
  EXPECT_EQ(fields_of("1899-01-01"), "-1-0-1 0:0:0");
  EXPECT_EQ(fields_of("9999-01-01"), "8099-0-1 0:0:0");
}

TEST(ZfxParseIso8601, CountsOnlyTheSecondDigitsOfMonthAndDayInTheBasicForm) {
  EXPECT_EQ(fields_of("20231225"), "123-1-5 0:0:0");
  EXPECT_EQ(fields_of("20239999"), "123-8-9 0:0:0");
  EXPECT_EQ(parse("20240229T120000Z"), 1707480000U);  // 9 February
  EXPECT_EQ(utc("20240209T1200"), "2024-02-09 12:00:00");
}

TEST(ZfxParseIso8601, SeparatesTheDateByAnyOfThreeCharacters) {
  for (const char first : {'-', '.', '/'}) {
    for (const char second : {'-', '.', '/'}) {
      std::string written = "2024-02-29";
      written[4] = first;
      written[7] = second;
      EXPECT_EQ(fields_of(written), "124-1-29 0:0:0") << written;
    }
  }
  for (const char *written : {"2024T", "2024 02", "2024:02", "2024Z", "2024,02", "2024_02"}) {
    EXPECT_EQ(fields_of(written), "failure") << written;
  }
}

TEST(ZfxParseIso8601, WantsADigitAndAnotherCharacterForTheMonth) {
  EXPECT_EQ(fields_of("2024-5"), "failure");
  EXPECT_EQ(fields_of("2024-x5"), "failure");
  EXPECT_EQ(fields_of("2024--5"), "failure");
  EXPECT_EQ(fields_of("2024-5x"), "124-49-0 0:0:0");  // a second character that is no digit counts 0
  EXPECT_EQ(fields_of("2024-5-"), "124-49-0 0:0:0");
  EXPECT_EQ(fields_of("2024-5-10"), "failure");  // the separator is used up, and a digit follows
  EXPECT_EQ(fields_of("2024-5--10"), "124-49-10 0:0:0");
}

TEST(ZfxParseIso8601, RefusesADigitBehindTheMonth) {
  EXPECT_EQ(fields_of("2024-021"), "failure");
}

TEST(ZfxParseIso8601, TakesAnyOtherCharacterBehindTheMonthAsTheStartOfTheTime) {
  EXPECT_EQ(fields_of("2024-05T10"), "124-4-0 10:0:0");
  EXPECT_EQ(fields_of("2024-05:10"), "124-4-0 10:0:0");
  EXPECT_EQ(fields_of("2024-05\xff"
                      "10"),
            "124-4-0 10:0:0");
}

TEST(ZfxParseIso8601, WantsADigitAndAnotherCharacterForTheDay) {
  EXPECT_EQ(fields_of("2024-05-1"), "failure");
  EXPECT_EQ(fields_of("2024-05-x1"), "failure");
  EXPECT_EQ(fields_of("2024-05-1x"), "124-4-10 0:0:0");
  EXPECT_EQ(fields_of("2024-05-1T10"), "failure");
  EXPECT_EQ(fields_of("2024-05-1TT10"), "124-4-10 10:0:0");
}

TEST(ZfxParseIso8601, RefusesADigitBehindTheDay) {
  EXPECT_EQ(fields_of("2024-05-123"), "failure");
}

TEST(ZfxParseIso8601, StartsTheTimeBehindAnyOneCharacter) {
  for (const char separator : {'T', ' ', 't', '-', ':', 'Z', '\0', '\xff'}) {
    std::string written = "2024-05-10T11:12:13";
    written[10] = separator;
    EXPECT_EQ(fields_of(written), "124-4-10 11:12:13") << written;
  }
}

TEST(ZfxParseIso8601, ReadsTheTimeInItsFiveForms) {
  EXPECT_EQ(fields_of("2024-05-10T11"), "124-4-10 11:0:0");
  EXPECT_EQ(fields_of("2024-05-10T1112"), "124-4-10 11:12:0");
  EXPECT_EQ(fields_of("2024-05-10T111213"), "124-4-10 11:12:13");
  EXPECT_EQ(fields_of("2024-05-10T11:12"), "124-4-10 11:12:0");
  EXPECT_EQ(fields_of("2024-05-10T11:12:13"), "124-4-10 11:12:13");
}

TEST(ZfxParseIso8601, PassesOverCharactersUntilTheRunOfDigitsIsATime) {
  EXPECT_EQ(fields_of("2024-05-10T1"), "124-4-10 0:0:0");
  EXPECT_EQ(fields_of("2024-05-10T123"), "124-4-10 23:0:0");
  EXPECT_EQ(fields_of("2024-05-10T12345"), "124-4-10 23:45:0");
  EXPECT_EQ(fields_of("2024-05-10T1234567"), "124-4-10 23:45:67");
  EXPECT_EQ(fields_of("2024-05-10T12345678"), "124-4-10 34:56:78");
  EXPECT_EQ(fields_of("2024-05-10T0000000000000000123456"), "124-4-10 12:34:56");
  EXPECT_EQ(fields_of("2024-05-10T  at 12:34:56"), "124-4-10 12:34:56");
  EXPECT_EQ(fields_of("2024-05-10T1x2y12"), "124-4-10 12:0:0");
}

TEST(ZfxParseIso8601, PassesOverALongRunOfDigitsInLinearTime) {
  const std::string written = "2024-05-10T" + std::string(4000000, '1') + "x12";
  EXPECT_EQ(fields_of(written), "failure");  // the last six digits are the time, and "x" is no zone
}

TEST(ZfxParseIso8601, WantsAColonOrAZoneBehindALoneHour) {
  EXPECT_EQ(utc("2024-05-10T11Z"), "2024-05-10 11:00:00");
  EXPECT_EQ(utc("2024-05-10T11+01"), "2024-05-10 12:00:00");
  EXPECT_EQ(utc("2024-05-10T11-01"), "2024-05-10 10:00:00");
  for (const char *written : {"2024-05-10T11 ", "2024-05-10T11.5", "2024-05-10T11x", "2024-05-10T11z"}) {
    EXPECT_EQ(fields_of(written), "failure") << written;
  }
}

TEST(ZfxParseIso8601, WantsAZoneBehindFourAndSixDigits) {
  EXPECT_EQ(utc("2024-05-10T1112Z"), "2024-05-10 11:12:00");
  EXPECT_EQ(utc("2024-05-10T111213Z"), "2024-05-10 11:12:13");
  EXPECT_EQ(fields_of("2024-05-10T1112:13"), "failure");
  EXPECT_EQ(fields_of("2024-05-10T1112 "), "failure");
  EXPECT_EQ(fields_of("2024-05-10T111213 "), "failure");
}

TEST(ZfxParseIso8601, WantsTwoDigitsForTheMinute) {
  EXPECT_EQ(fields_of("2024-05-10T11:1"), "failure");
  EXPECT_EQ(fields_of("2024-05-10T11:1:13"), "failure");
  EXPECT_EQ(fields_of("2024-05-10T11:x"), "failure");
  EXPECT_EQ(fields_of("2024-05-10T11:Z"), "failure");
  EXPECT_EQ(fields_of("2024-05-10T11:123"), "failure");
  EXPECT_EQ(fields_of("2024-05-10T11:12 "), "failure");
}

TEST(ZfxParseIso8601, SkipsRepeatedColons) {
  EXPECT_EQ(fields_of("2024-05-10T11:::12::13+01"), "124-4-10 11:12:13");
  EXPECT_EQ(utc("2024-05-10T11:::12::13+01::30"), "2024-05-10 12:42:13");
  EXPECT_EQ(fields_of("2024-05-10T11::"), "124-4-10 11:0:0");
  EXPECT_EQ(fields_of("2024-05-10T11:12::"), "124-4-10 11:12:0");
}

TEST(ZfxParseIso8601, RefusesAZoneDirectlyBehindTheMinute) {
  EXPECT_EQ(fields_of("2024-02-29T10:30Z"), "failure");
  EXPECT_EQ(fields_of("2024-02-29T10:30+01:00"), "failure");
  EXPECT_EQ(fields_of("2024-02-29T10:30-01:00"), "failure");
}

TEST(ZfxParseIso8601, WantsTwoDigitsForTheSecond) {
  EXPECT_EQ(fields_of("2024-05-10T11:12:1"), "failure");
  EXPECT_EQ(fields_of("2024-05-10T11:12:1Z"), "failure");
  EXPECT_EQ(fields_of("2024-05-10T11:12:x"), "failure");
  EXPECT_EQ(fields_of("2024-05-10T11:12:Z"), "failure");
}

TEST(ZfxParseIso8601, RefusesAFractionOfASecondAndEverythingElseThatIsNoZone) {
  EXPECT_EQ(fields_of("2024-02-29T12:00:00.5Z"), "failure");
  EXPECT_EQ(fields_of("2024-02-29T10:30:15.250Z"), "failure");
  EXPECT_EQ(fields_of("2024-02-29T12:00:00 Z"), "failure");
  EXPECT_EQ(fields_of("2024-02-29T12:00:00z"), "failure");
  EXPECT_EQ(fields_of("2024-02-29T12:00:000"), "failure");
}

TEST(ZfxParseIso8601, AddsAPlusZoneAndSubtractsAMinusZone) {
  EXPECT_EQ(parse("2024-02-29T120000+0100"), 1709211600U);
  EXPECT_EQ(utc("2024-02-29T12:00:00+01:00"), "2024-02-29 13:00:00");
  EXPECT_EQ(utc("2024-02-29T12:00:00-01:00"), "2024-02-29 11:00:00");
  EXPECT_EQ(utc("2024-02-29T12:00:00+0530"), "2024-02-29 17:30:00");
  EXPECT_EQ(utc("2024-02-29T12:00:00-05:30"), "2024-02-29 06:30:00");
  EXPECT_EQ(utc("2024-02-29T12:00:00+00:00"), "2024-02-29 12:00:00");
}

TEST(ZfxParseIso8601, TakesAZoneOfLessThanAnHourAsThatManyHours) {
  EXPECT_EQ(utc("2024-02-10T00:00:00+00:30"), "2024-02-11 06:00:00");
  EXPECT_EQ(utc("2024-02-10T00:00:00-0001"), "2024-02-09 23:00:00");
  EXPECT_EQ(utc("2024-02-10T00:00:00+0100"), "2024-02-10 01:00:00");
}

TEST(ZfxParseIso8601, WantsTwoOrFourDigitsForTheZone) {
  for (const char *zone : {"+1", "+123", "+12345", "+x", "+Z", "+:", "+ 01", "+01 ", "+01Z", "+01x", "+01:3",
                           "+01:3x", "+01:x"}) {
    EXPECT_EQ(fields_of(std::string("2024-02-29T12:00:00") + zone), "failure") << zone;
  }
}

TEST(ZfxParseIso8601, IgnoresWhatStandsBehindACompleteZone) {
  EXPECT_EQ(parse("2024-02-29T12:00:00Zjunk"), 1709208000U);
  EXPECT_EQ(parse("2024-02-29T12:00:00+0000 and so on"), 1709208000U);
  EXPECT_EQ(parse("2024-02-29T12:00:00+00:00:00"), 1709208000U);
}

TEST(ZfxParseIso8601, HandsBackTheFieldsBeforeTheZoneIsApplied) {
  EXPECT_EQ(fields_of("2024-02-29T23:00:00+0500"), "124-1-29 23:0:0");
  EXPECT_EQ(utc("2024-02-29T23:00:00+0500"), "2024-03-01 04:00:00");
}

TEST(ZfxParseIso8601, CarriesFieldsOutOfRange) {
  EXPECT_EQ(utc("2024-13-00"), "2024-12-31 00:00:00");
  EXPECT_EQ(utc("2024-02-30T25:61:61Z"), "2024-03-02 02:02:01");
  EXPECT_EQ(fields_of("2024-99-99T99:99:99Z"), "124-98-99 99:99:99");
}

TEST(ZfxParseIso8601, RollsAnHourPastMidnightByTheLeapRuleOfTheZones) {
  EXPECT_EQ(utc("2000-02-28T23:00:00Z"), "2000-02-28 23:00:00");
  EXPECT_EQ(utc("2000-02-28T25:00:00Z"), "2000-03-01 01:00:00");  // no 29 February there
  EXPECT_EQ(utc("2024-02-28T25:00:00Z"), "2024-02-29 01:00:00");
}

TEST(ZfxParseIso8601, GivesZeroAndTheFieldsUpToTheEpoch) {
  EXPECT_EQ(fields_of("1970-01-01T00:00:00Z"), "70-0-1 0:0:0");
  EXPECT_EQ(parse("1970-01-01T00:00:00Z"), 0U);
  EXPECT_EQ(parse("1970-01-01T00:00:01Z"), 1U);
  EXPECT_EQ(parse("1969-12-31T23:59:59Z"), 0U);
  EXPECT_EQ(fields_of("1969-12-31T23:59:59Z"), "69-11-31 23:59:59");
}

TEST(ZfxParseIso8601, ToleratesNullArguments) {
  EXPECT_EQ(ZfxParseIso8601(nullptr, 0, nullptr), 0U);
  tm fields = untouched();
  EXPECT_EQ(ZfxParseIso8601(nullptr, 10, &fields), 0U);
  EXPECT_TRUE(same(fields, untouched()));
  EXPECT_EQ(ZfxParseIso8601("2024-02-29T12:00:00Z", 20, nullptr), 1709208000U);
}

TEST(ZfxParseIso8601, ReadsNothingBehindTheLength) {
  EXPECT_EQ(ZfxParseIso8601("2024-02-29T12:00:00+0100", 20, nullptr), 1709208000U);
  EXPECT_EQ(ZfxParseIso8601("20240229", 4, nullptr), 1701302400U);
  for (const char *written :
       {"2024-02-29T12:34:56+01:30x", "20240229T123456-0130", "2024.5x", "2024-05-1", "2024-05T1:::2"}) {
    guarded::for_every_beginning(written, [](const char *beginning, std::size_t length) {
      ZfxParseIso8601(beginning, length, nullptr);
    });
  }
}

TEST(ZfxParseIso8601, GivesBackEveryFormattedTime) {
  std::mt19937_64 random(17);
  for (int round = 0; round < 200000; ++round) {
    const uint64_t seconds = 1 + random() % 253402300799;  // up to the end of 9999
    char written[32];
    ZfxFormatIso8601(static_cast<time_t>(seconds), written, sizeof written);
    ASSERT_EQ(parse(written), seconds) << written;
  }
}

const std::vector<model::Row> kRows = {
    {"Year", "9999~", "YYYY", "DateSeparator"},
    {"Year", "99999999~", "YYYY_M_D", "AfterDay"},
    {"DateSeparator", "|", "_", "Month"},
    {"Month", "99", "MM", "AfterMonth"},
    {"Month", "9*", "M0", "AfterMonth"},
    {"AfterMonth", "|", "_", "Day"},
    {"AfterMonth", "~", "_", "Time"},
    {"Day", "99", "DD", "AfterDay"},
    {"Day", "9*", "D0", "AfterDay"},
    {"AfterDay", "~", "_", "Time"},
    {"Time", "99$", "hh", "Done"},
    {"Time", "99:", "hh", "Minute"},
    {"Time", "99?", "hh", "Zone"},
    {"Time", "99~", "", "Failure"},
    {"Time", "9999~", "hhmm", "Zone"},
    {"Time", "999999~", "hhmmss", "Zone"},
    {"Time", "*", "_", "Time"},
    {"Minute", ":", "_", "Minute"},
    {"Minute", "99$", "mm", "Second"},
    {"Minute", "99:", "mm", "Second"},
    {"Minute", "99?", "mm", "Second"},
    {"Second", ":", "_", "Second"},
    {"Second", "99", "ss", "Zone"},
    {"Zone", "Z", "_", "Done"},
    {"Zone", "+", "=", "ZoneHours"},
    {"Zone", "-", "=", "ZoneHours"},
    {"ZoneHours", "99~", "HH", "ZoneMinutes"},
    {"ZoneHours", "9999~", "HHII", "Done"},
    {"ZoneMinutes", ":", "_", "ZoneMinutes"},
    {"ZoneMinutes", "99", "II", "Done"},
    {"Done", "*", "_", "Done"},
};

// What the table makes of a text, with the zone applied through its text.
uint64_t model_seconds(const std::string &written, tm &fields) {
  const model::Result result = model::run(kRows, "Year", written);
  if (!result.accepted) return 0;
  const auto &field = result.field;
  tm record{};
  record.tm_year = field['Y'] > 99 ? field['Y'] - 1900 : field['Y'];
  record.tm_mon = field['M'] - 1;
  record.tm_mday = field['D'];
  record.tm_hour = field['h'];
  record.tm_min = field['m'];
  record.tm_sec = field['s'];
  fields = record;
  char zone[16];
  std::snprintf(zone, sizeof zone, "%c%02d%02d", result.zone == "-" ? '-' : '+', field['H'], field['I']);
  ZfxTimestampToUTC(&record, zone);
  uint64_t seconds = 0;
  return ZfxTimeToUTC(&seconds, &record) == 0 ? seconds : 0;
}

void expect_as_model(const std::string &written) {
  tm expected = untouched();
  const uint64_t expected_seconds = model_seconds(written, expected);
  tm fields = untouched();
  ASSERT_EQ(parse(written, &fields), expected_seconds) << '"' << written << '"';
  ASSERT_TRUE(same(fields, expected)) << '"' << written << "\"\n" << text(fields) << "\n" << text(expected);
}

TEST(ZfxParseIso8601, AgreesWithATransitionTableWhateverOneCharacterIs) {
  for (const std::string usual : {"2024-02-29T12:34:56Z", "2024-02-29T12:34:56+01:30", "20240229T123456Z"}) {
    ASSERT_NO_FATAL_FAILURE(model::for_every_character_changed(usual, expect_as_model));
  }
}

TEST(ZfxParseIso8601, AgreesWithATransitionTableOnRandomTexts) {
  model::Texts texts({"2024",     "2000",  "0099", "20240229", "-",   ".",     "/",      "02",   "5",
                      "28",       "29",    "31",   "T",        " ",   ":",     "12",     "1200", "120000",
                      "23:59:59", "10:30", "Z",    "+",        "+01", "-0100", "+01:30", "Zjunk"},
                     std::string("0123456789-./:+ TZz\0\xff", 21),
                     {"2024-02-29T12:00:00Z", "2024-02-29 23:59:59+01:30", "20240229T120000-0130",
                      "2000-02-28T25Z", "2024-05T10", "2024-02-29T10:30", "1999/12/31T235959"});
  int accepted = 0;
  for (int round = 0; round < 200000; ++round) {
    const std::string written = texts.next();
    ASSERT_NO_FATAL_FAILURE(expect_as_model(written));
    accepted += parse(written) != 0 ? 1 : 0;
  }
  EXPECT_GT(accepted, 20000);
}

}  // namespace
