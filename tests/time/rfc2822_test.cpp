#include "rfc2822.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "guarded_text.hpp"
#include "iso8601.h"
#include "records.hpp"
#include "timestamps.h"
#include "transition_table.hpp"

namespace {

using records::same;
using records::text;
using records::untouched;

uint64_t parse(std::string_view written, tm *fields = nullptr) {
  return ZfxParseRfc2822(written.data(), written.size(), fields);
}

uint64_t parse_either(std::string_view written, tm *fields = nullptr) {
  return ZfxParseTimestamp(written.data(), written.size(), fields);
}

// The fields of an accepted text, "year-month-day hour:minute:second" as tm holds them; "failure" for others.
std::string fields_of(std::string_view written) {
  tm fields = untouched();
  const uint64_t seconds = parse(written, &fields);
  if (same(fields, untouched())) {
    EXPECT_EQ(seconds, 0U) << written;
    return "failure";
  }
  EXPECT_EQ(fields.tm_isdst, -1);
  EXPECT_EQ(fields.tm_wday + fields.tm_yday, 0);
  EXPECT_EQ(fields.tm_gmtoff, 0);
  EXPECT_EQ(fields.tm_zone, nullptr);
  return records::date_and_time(fields);
}

std::string utc(std::string_view written) {
  return records::utc_text(parse(written));
}

std::string utc_in_zone(const std::string &zone) {
  return utc("Thu, 15 Feb 2024 12:00:00 " + zone);
}

TEST(ZfxParseRfc2822, ReadsDateTimeAndZone) {
  EXPECT_EQ(parse("Thu, 29 Feb 2024 12:00:00 GMT "), 1709208000U);
  EXPECT_EQ(parse("Thu, 29 Feb 2024 12:00:00 +0100 "), 1709211600U);
  EXPECT_EQ(fields_of("Thu, 29 Feb 2024 12:34:56 +0100 "), "124-1-29 12:34:56");
}

TEST(ZfxParseRfc2822, WantsWhiteSpaceBehindTheZoneForItToCount) {
  EXPECT_EQ(parse("Thu, 29 Feb 2024 12:00:00 +0100"), 1709208000U);
  for (const char *end : {" ", "\t", "\n", "\r", "\r\n", " and more"}) {
    EXPECT_EQ(parse(std::string("Thu, 29 Feb 2024 12:00:00 +0100") + end), 1709211600U) << end;
  }
  for (const char *end : {"\v", "\f", ",", "(CET)", "\xa0"}) {
    EXPECT_EQ(parse(std::string("Thu, 29 Feb 2024 12:00:00 +0100") + end), 1709208000U) << end;
  }
}

TEST(ZfxParseRfc2822, KnowsEveryWeekday) {
  for (const char *weekday : {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"}) {
    EXPECT_EQ(parse(std::string(weekday) + ", 29 Feb 2024 12:00:00 "), 1709208000U) << weekday;
    EXPECT_EQ(parse(std::string(weekday) + "day,x 29 Feb 2024 12:00:00 "), 1709208000U) << weekday;
  }
}

TEST(ZfxParseRfc2822, LosesTheFirstCharacterOfATextWithoutWeekday) {
  EXPECT_EQ(parse(" 29 Feb 2024 12:00:00 GMT "), 1709208000U);
  EXPECT_EQ(parse("x29 Feb 2024 12:00:00 GMT "), 1709208000U);
  EXPECT_EQ(parse("929 Feb 2024 12:00:00 GMT "), 1709208000U);
  EXPECT_EQ(fields_of("29 Feb 2024 12:00:00 GMT "), "failure");  // 9 and a blank, and then the "F"
}

TEST(ZfxParseRfc2822, TellsNamesApartByCase) {
  EXPECT_EQ(fields_of("thu, 29 Feb 2024 12:00:00 GMT "), "failure");
  EXPECT_EQ(fields_of("THU, 29 Feb 2024 12:00:00 GMT "), "failure");
  EXPECT_EQ(fields_of("Thu, 29 feb 2024 12:00:00 GMT "), "failure");
  EXPECT_EQ(fields_of("Thu, 29 FEB 2024 12:00:00 GMT "), "failure");
}

TEST(ZfxParseRfc2822, SkipsFromTheWeekdayToABlankOnly) {
  EXPECT_EQ(parse("Thu\t,\n 29 Feb 2024 12:00:00 GMT "), 1709208000U);
  EXPECT_EQ(fields_of("Thu,\t29 Feb 2024 12:00:00 GMT "), "failure");
  EXPECT_EQ(fields_of("Thu,  29 Feb 2024 12:00:00 GMT "), "failure");
}

TEST(ZfxParseRfc2822, CountsABlankAsTheDigitMinusSixteenOfTheDay) {
  EXPECT_EQ(fields_of("Thu, 1 Feb 2024 12:00:00 GMT "), "failure");
  EXPECT_EQ(fields_of("Thu, 1  Feb 2024 12:00:00 GMT "), "124-1--6 12:0:0");
  EXPECT_EQ(fields_of("Thu, 9  Feb 2024 12:00:00 GMT "), "124-1-74 12:0:0");
  EXPECT_EQ(utc("Thu, 1  Feb 2024 12:00:00 GMT "), "2024-01-25 12:00:00");
}

TEST(ZfxParseRfc2822, WantsADayOfTwoCharactersAndABlank) {
  for (const char *day : {"x1", "1x", " 1", "1\t", "291", "29,", "29\t"}) {
    EXPECT_EQ(fields_of(std::string("Thu, ") + day + " Feb 2024 12:00:00 GMT "), "failure") << day;
  }
}

TEST(ZfxParseRfc2822, KnowsEveryMonth) {
  const char *const months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  int number = 0;
  for (const char *month : months) {
    const std::string expected = "124-" + std::to_string(number++) + "-29 12:0:0";
    EXPECT_EQ(fields_of(std::string("Thu, 29 ") + month + " 2024 12:00:00 "), expected);
    EXPECT_EQ(fields_of(std::string("Thu, 29 ") + month + "\tx 2024 12:00:00 "), expected);
  }
  for (const char *month : {"Foo", "Fe", "F", "", " Feb", "02"}) {
    EXPECT_EQ(fields_of(std::string("Thu, 29 ") + month + " 2024 12:00:00 "), "failure") << month;
  }
}

TEST(ZfxParseRfc2822, TakesYearsUpToNinetyNineAsYearsSince1900) {
  EXPECT_EQ(fields_of("Thu, 29 Feb 24 12:00:00 GMT "), "24-1-29 12:0:0");
  EXPECT_EQ(parse("Thu, 29 Feb 24 12:00:00 GMT "), 0U);  // 1924 lies before the epoch
  EXPECT_EQ(utc("Thu, 28 Feb 99 12:00:00 GMT "), "1999-02-28 12:00:00");
  EXPECT_EQ(fields_of("Thu, 28 Feb 100 12:00:00 GMT "), "-1800-1-28 12:0:0");
  EXPECT_EQ(fields_of("Thu, 28 Feb 0 12:00:00 GMT "), "0-1-28 12:0:0");
}

TEST(ZfxParseRfc2822, WantsOnlyDigitsAndABlankForTheYear) {
  for (const char *year : {"x", "x2024", "2024x", "2024:", "-2024", "2024\t"}) {
    EXPECT_EQ(fields_of(std::string("Thu, 29 Feb ") + year + " 12:00:00 GMT "), "failure") << year;
  }
}

TEST(ZfxParseRfc2822, ReadsAnyNumberOfDigitsForHourMinuteAndSecond) {
  EXPECT_EQ(fields_of("Thu, 29 Feb 2024 1:2:3 "), "124-1-29 1:2:3");
  EXPECT_EQ(fields_of("Thu, 29 Feb 2024 001:0002:00003 "), "124-1-29 1:2:3");
  EXPECT_EQ(fields_of("Thu, 29 Feb 2024 ::  "), "124-1-29 0:0:0");
  EXPECT_EQ(utc("Thu, 29 Feb 2024 123:456:789 "), "2024-03-05 10:49:09");
}

TEST(ZfxParseRfc2822, WantsSeconds) {
  EXPECT_EQ(fields_of("Thu, 29 Feb 2024 12:00 GMT "), "failure");
  EXPECT_EQ(fields_of("Thu, 29 Feb 2024 12 GMT "), "failure");
}

TEST(ZfxParseRfc2822, RefusesAnythingButDigitsInTheTime) {
  for (const char *time : {"x:00:00", "12:x:00", "12:00:x", "12.00.00", "12:00:00:00", "12:00:00.5",
                           "12:00:00Z", " 12:00:00", "-1:00:00", "12: 00:00"}) {
    EXPECT_EQ(fields_of(std::string("Thu, 29 Feb 2024 ") + time + " GMT "), "failure") << time;
  }
}

TEST(ZfxParseRfc2822, TakesWhiteSpaceAtTheStartOfTheZoneAsNoZone) {
  for (const char *zone : {" +0100 ", "\t+0100 ", "\n+0100 ", "\r+0100 "}) {
    EXPECT_EQ(utc_in_zone(zone), "2024-02-15 12:00:00") << zone;
  }
  EXPECT_EQ(utc_in_zone("\v+0100 "), "2024-02-15 12:00:00");  // a zone of no known name
}

TEST(ZfxParseRfc2822, AppliesEveryZoneAsItsShift) {
  EXPECT_EQ(utc_in_zone("UTC "), "2024-02-15 12:00:00");
  EXPECT_EQ(utc_in_zone("+0530 "), "2024-02-15 17:30:00");
  EXPECT_EQ(utc_in_zone("-0530 "), "2024-02-15 06:30:00");
  EXPECT_EQ(utc_in_zone("+01:00 "), "2024-02-15 13:00:00");
  EXPECT_EQ(utc_in_zone("EST "), "2024-02-15 08:00:00");
  EXPECT_EQ(utc_in_zone("CET "), "2024-02-15 13:00:00");
}

TEST(ZfxParseRfc2822, TakesOneMoreHourOffForTheZonesOfSummer) {
  EXPECT_EQ(utc_in_zone("EDT "), "2024-02-15 06:00:00");
  EXPECT_EQ(utc_in_zone("CDT "), "2024-02-15 05:00:00");
  EXPECT_EQ(utc_in_zone("MDT "), "2024-02-15 04:00:00");
  EXPECT_EQ(utc_in_zone("PDT "), "2024-02-15 03:00:00");
}

TEST(ZfxParseRfc2822, TakesAnUnknownZoneAsUtc) {
  for (const char *zone : {"BST ", "gmt ", "Z ", "0100 ", "GMT, "}) {
    EXPECT_EQ(utc_in_zone(zone), "2024-02-15 12:00:00") << zone;
  }
}

TEST(ZfxParseRfc2822, EndsAZoneAtANullCharacter) {
  EXPECT_EQ(utc_in_zone(std::string("EST\0x ", 6)), "2024-02-15 08:00:00");
  EXPECT_EQ(utc_in_zone(std::string("\0EST ", 5)), "2024-02-15 12:00:00");
}

TEST(ZfxParseRfc2822, HandsBackTheFieldsBeforeTheZoneIsApplied) {
  EXPECT_EQ(fields_of("Thu, 29 Feb 2024 23:00:00 +0500 "), "124-1-29 23:0:0");
  EXPECT_EQ(fields_of("Thu, 29 Feb 2024 23:00:00 EDT "), "124-1-29 23:0:0");
  EXPECT_EQ(utc("Thu, 29 Feb 2024 23:00:00 +0500 "), "2024-03-01 04:00:00");
}

TEST(ZfxParseRfc2822, AcceptsATextThatStopsEarly) {
  EXPECT_EQ(fields_of(""), "0--1-0 0:0:0");
  EXPECT_EQ(parse(""), 0U);
  EXPECT_EQ(fields_of("x"), "0--1-0 0:0:0");
  EXPECT_EQ(fields_of("Thu"), "0--1-0 0:0:0");
  EXPECT_EQ(fields_of("Thu, 2"), "0--1-2 0:0:0");
  EXPECT_EQ(fields_of("Thu, 29"), "0--1-29 0:0:0");
  EXPECT_EQ(fields_of("Thu, 29 "), "0--1-29 0:0:0");
  EXPECT_EQ(fields_of("Thu, 29 F"), "failure");
  EXPECT_EQ(fields_of("Thu, 29 Fe"), "failure");
  EXPECT_EQ(fields_of("Thu, 29 Feb"), "0-1-29 0:0:0");
  EXPECT_EQ(fields_of("Thu, 29 Feb 202"), "-1698-1-29 0:0:0");
  EXPECT_EQ(utc("Thu, 29 Feb 2024"), "2024-02-29 00:00:00");
  EXPECT_EQ(utc("Thu, 29 Feb 2024 12"), "2024-02-29 12:00:00");
  EXPECT_EQ(utc("Thu, 29 Feb 2024 12:3"), "2024-02-29 12:03:00");
  EXPECT_EQ(utc("Thu, 29 Feb 2024 12:34:5"), "2024-02-29 12:34:05");
}

TEST(ZfxParseRfc2822, WrapsNumbersInThirtyTwoBits) {
  EXPECT_EQ(fields_of("Thu, 29 Feb 4294969320 12:00:00 "), "124-1-29 12:0:0");
  EXPECT_EQ(fields_of("Thu, 29 Feb 2147483648 4294967297:2147483648:9999999999 "),
            "-2147483648-1-29 1:-2147483648:1410065407");
}

TEST(ZfxParseRfc2822, GivesZeroForATimeThatCannotBeRepresented) {
  EXPECT_NE(parse("Thu, 29 Feb 2147483647 9999999:00:00 "), 0U);  // 1140 years on, the year still fits
  EXPECT_EQ(parse("Thu, 29 Feb 2147483647 99999999:00:00 "), 0U);
  EXPECT_EQ(fields_of("Thu, 29 Feb 2147483647 99999999:00:00 "), "2147481747-1-29 99999999:0:0");
}

TEST(ZfxParseRfc2822, ToleratesNullArguments) {
  EXPECT_EQ(ZfxParseRfc2822(nullptr, 0, nullptr), 0U);
  tm fields = untouched();
  EXPECT_EQ(ZfxParseRfc2822(nullptr, 10, &fields), 0U);
  EXPECT_TRUE(same(fields, untouched()));
}

TEST(ZfxParseRfc2822, ReadsNothingBehindTheLength) {
  EXPECT_EQ(ZfxParseRfc2822("Thu, 29 Feb 2024 12:00:00 +0100 ", 31, nullptr), 1709208000U);
  for (const char *written : {"Thu, 29 Feb 2024 12:34:56 +0130 x", " 1  Dec 99 1:2:3 EDT\n", "Sun"}) {
    guarded::for_every_beginning(written, [](const char *beginning, std::size_t length) {
      ZfxParseRfc2822(beginning, length, nullptr);
      ZfxParseTimestamp(beginning, length, nullptr);
    });
  }
}

TEST(ZfxParseRfc2822, ReadsBackEveryDateThatStrftimeWrites) {
  std::mt19937_64 random(19);
  for (int round = 0; round < 100000; ++round) {
    const auto seconds = static_cast<time_t>(86400 + random() % 8000000000);
    tm fields{};
    ::gmtime_r(&seconds, &fields);
    char written[64];
    std::strftime(written, sizeof written, "%a, %d %b %Y %H:%M:%S GMT\r\n", &fields);
    ASSERT_EQ(parse(written), static_cast<uint64_t>(seconds)) << written;
    ASSERT_EQ(parse_either(written), static_cast<uint64_t>(seconds)) << written;
  }
}

std::vector<model::Row> rows() {
  std::vector<model::Row> table;
  for (const char *weekday : {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"}) {
    table.push_back({"Weekday", weekday, "_", "WeekdayEnd"});
  }
  table.insert(table.end(), {
                                {"Weekday", "*", "_", "Day"},
                                {"WeekdayEnd", " ", "_", "Day"},
                                {"WeekdayEnd", "*", "_", "WeekdayEnd"},
                                {"Day", "9", "D", "DayUnits"},
                                {"DayUnits", "9", "D", "DayEnd"},
                                {"DayUnits", " ", "D", "DayEnd"},
                                {"DayEnd", " ", "_", "Month"},
                            });
  for (const char *month :
       {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"}) {
    table.push_back({"Month", month, "#", "MonthEnd"});
  }
  table.insert(table.end(), {
                                {"MonthEnd", " ", "_", "Year"},
                                {"MonthEnd", "*", "_", "MonthEnd"},
                                {"Year", "9", "Y", "YearDigits"},
                                {"YearDigits", "9", "Y", "YearDigits"},
                                {"YearDigits", " ", "_", "Hour"},
                                {"Hour", "9", "h", "Hour"},
                                {"Hour", ":", "_", "Minute"},
                                {"Minute", "9", "m", "Minute"},
                                {"Minute", ":", "_", "Second"},
                                {"Second", "9", "s", "Second"},
                                {"Second", " ", "_", "ZoneStart"},
                                {"ZoneStart", "_", "_", "Done"},
                                {"ZoneStart", "*", "=", "Zone"},
                                {"Zone", "_", "_", "ZoneDone"},
                                {"Zone", "*", "=", "Zone"},
                                {"ZoneDone", "*", "_", "ZoneDone"},
                                {"Done", "*", "_", "Done"},
                            });
  return table;
}

// What the table makes of a text, with the zone applied through its text.
uint64_t model_seconds(const std::vector<model::Row> &table, const std::string &written, tm &fields) {
  const model::Result result = model::run(table, "Weekday", written);
  if (!result.accepted) return 0;
  const auto &field = result.field;
  tm record{};
  record.tm_year = field['Y'] <= 99 ? field['Y'] : field['Y'] - 1900;
  record.tm_mon = field['#'] - 1;
  record.tm_mday = field['D'];
  record.tm_hour = field['h'];
  record.tm_min = field['m'];
  record.tm_sec = field['s'];
  record.tm_isdst = -1;
  fields = record;
  if (result.state == "ZoneDone") ZfxTimestampToUTC(&record, result.zone.c_str());
  uint64_t seconds = 0;
  return ZfxTimeToUTC(&seconds, &record) == 0 ? seconds : 0;
}

void expect_as_model(const std::vector<model::Row> &table, const std::string &written) {
  tm expected = untouched();
  const uint64_t expected_seconds = model_seconds(table, written, expected);
  tm fields = untouched();
  ASSERT_EQ(parse(written, &fields), expected_seconds) << '"' << written << '"';
  ASSERT_TRUE(same(fields, expected)) << '"' << written << "\"\n" << text(fields) << "\n" << text(expected);
}

TEST(ZfxParseRfc2822, AgreesWithATransitionTableWhateverOneCharacterIs) {
  const std::vector<model::Row> table = rows();
  for (const std::string usual : {"Thu, 29 Feb 2024 12:34:56 GMT ", "Sun, 01 Sep 1999 00:00:00 +0130\r\n"}) {
    ASSERT_NO_FATAL_FAILURE(model::for_every_character_changed(
        usual, [&table](const std::string &written) { expect_as_model(table, written); }));
  }
}

model::Texts random_texts() {
  return model::Texts(
      {"Thu", "Sun",       ", ",   ",",      " ",       "  ",    "29",   "1",
       "28 ", "31 ",       "Feb ", "Jan ",   "Dec",     "2024 ", "99 ",  "12:",
       "00:", "23:59:59 ", "GMT ", "+0100 ", "-0130\n", "EDT\t", "CET ", "BST "},
      std::string("0123456789: ,+-ThuSnFebDcGMTES\t\n\r\0\xff", 35),
      {"Thu, 29 Feb 2024 12:00:00 GMT ", "Mon, 31 Dec 1999 23:59:59 +0130 ", " 28 Feb 2000 23:30:00 EDT\r\n",
       "Sun, 1  Mar 2024 0:0:0 -2500 x", "Wed, 30 Apr 24 99:99:99 PST "});
}

TEST(ZfxParseRfc2822, AgreesWithATransitionTableOnRandomTexts) {
  const std::vector<model::Row> table = rows();
  model::Texts texts = random_texts();
  int accepted = 0;
  for (int round = 0; round < 100000; ++round) {
    const std::string written = texts.next();
    ASSERT_NO_FATAL_FAILURE(expect_as_model(table, written));
    accepted += parse(written) != 0 ? 1 : 0;
  }
  EXPECT_GT(accepted, 10000);
}

TEST(ZfxParseTimestamp, ReadsDatesOfEitherKind) {
  EXPECT_EQ(parse_either("Thu, 29 Feb 2024 12:00:00 GMT "), 1709208000U);
  EXPECT_EQ(parse_either("2024-02-29T12:00:00Z"), 1709208000U);
  EXPECT_EQ(parse_either("20240229T120000Z"), 1707480000U);
}

TEST(ZfxParseTimestamp, GivesTheFieldsOfTheOneThatReadTheText) {
  tm fields = untouched();
  parse_either("Thu, 29 Feb 2024 12:00:00 GMT ", &fields);
  EXPECT_EQ(fields.tm_isdst, -1);
  parse_either("2024-03-01", &fields);
  EXPECT_EQ(fields.tm_isdst, 0);
  EXPECT_EQ(fields.tm_mon, 2);
}

TEST(ZfxParseTimestamp, GivesZeroAndLeavesTheRecordForWhatNeitherReads) {
  for (const char *written : {"tomorrow", "2024-02-29T10:30Z", "Thu, 29 feb 2024", "12/31/1999"}) {
    tm fields = untouched();
    EXPECT_EQ(parse_either(written, &fields), 0U) << written;
    EXPECT_TRUE(same(fields, untouched())) << written;
  }
}

TEST(ZfxParseTimestamp, KeepsTheFieldsOfAMailDateBeforeTheEpoch) {
  tm fields = untouched();
  EXPECT_EQ(parse_either("Thu, 29 Feb 24 12:00:00 GMT ", &fields), 0U);
  EXPECT_EQ(fields.tm_year, 24);
}

TEST(ZfxParseTimestamp, IsTheOneParserAndThenTheOtherOnRandomTexts) {
  model::Texts texts = random_texts();
  for (int round = 0; round < 50000; ++round) {
    std::string written = texts.next();
    if (round % 2 == 0) written.insert(0, "2024-02-");
    tm expected = untouched();
    uint64_t expected_seconds = parse(written, &expected);
    if (expected_seconds == 0) expected_seconds = ZfxParseIso8601(written.data(), written.size(), &expected);
    tm fields = untouched();
    ASSERT_EQ(parse_either(written, &fields), expected_seconds) << written;
    ASSERT_TRUE(same(fields, expected)) << written;
  }
}

TEST(ZfxParseTimestamp, ToleratesNullArguments) {
  EXPECT_EQ(ZfxParseTimestamp(nullptr, 0, nullptr), 0U);
  EXPECT_EQ(ZfxParseTimestamp(nullptr, 5, nullptr), 0U);
}

}  // namespace
