#include "datedelta.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <random>
#include <string>

#include "files.hpp"
#include "records.hpp"
#include "timestamps.h"
#include "zorvrcs.h"

namespace {

enum Unit : int32_t { kDay = 1, kWeek = 2, kMonth = 3, kYear = 4 };

// No settings but those that a test writes, and UTC unless it says otherwise.
class ZfxDateDeltaTest : public ::testing::Test {
 protected:
  ZfxDateDeltaTest() { settings(""); }
  ~ZfxDateDeltaTest() override { QuorConfRemove(); }

  void settings(const std::string &text) {
    support::write_file(folder_ / "quor.conf", text);
    developer_.emplace("__KERNEL_DEVELOPER", (folder_ / "quor.conf").c_str());
    QuorConfRemove();
  }

 private:
  support::TemporaryFolder folder_;
  support::EnvironmentVariable no_export_{"__QUORCONF_NOENV", "1"};
  support::EnvironmentVariable weekday_{"QUOR_FIRST_WEEKDAY", nullptr};
  std::optional<support::EnvironmentVariable> developer_;
  records::TimeZone utc_{"UTC0"};
};

time_t local_time(const char *written) {
  tm fields{};
  EXPECT_NE(::strptime(written, "%Y-%m-%d %H:%M:%S", &fields), nullptr) << written;
  fields.tm_isdst = -1;
  return std::mktime(&fields);
}

std::string written(time_t seconds) {
  tm fields{};
  ::localtime_r(&seconds, &fields);
  char text[64];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &fields);
  return text;
}

time_t moved(time_t base, int32_t amount, int32_t unit, int32_t mode = 0) {
  time_t result = 12345;
  EXPECT_EQ(ZfxDateDelta(base, amount, unit, mode, 0, &result, nullptr), 0);
  return result;
}

std::string moved_date(const char *base, int32_t amount, int32_t unit, int32_t mode = 0) {
  return written(moved(local_time(base), amount, unit, mode));
}

TEST_F(ZfxDateDeltaTest, MovesByDaysWhateverTheMode) {
  for (const int32_t mode : {-1, 0, 1, 2, 3, 99}) {
    EXPECT_EQ(moved_date("2024-02-28 12:34:56", 2, kDay, mode), "2024-03-01 12:34:56");
    EXPECT_EQ(moved_date("2024-03-01 12:34:56", -2, kDay, mode), "2024-02-28 12:34:56");
  }
}

TEST_F(ZfxDateDeltaTest, MovesByDaysOf86400SecondsAcrossDaylightSaving) {
  const records::TimeZone zone("Europe/Berlin");
  EXPECT_EQ(moved_date("2024-03-30 12:00:00", 1, kDay), "2024-03-31 13:00:00");
}

TEST_F(ZfxDateDeltaTest, WrapsTheSecondsOfDaysAndWeeksInThirtyTwoBits) {
  EXPECT_EQ(moved(0, 24855, kDay), 2147472000);
  EXPECT_EQ(moved(0, 24856, kDay), 2147558400 - 4294967296);
  EXPECT_EQ(moved(0, -24855, kDay), -2147472000);
  EXPECT_EQ(moved(0, -24856, kDay), 4294967296 - 2147558400);
  EXPECT_EQ(moved(0, INT_MIN, kDay), 0);
  EXPECT_EQ(moved(0, INT_MAX, kDay), -86400);
  EXPECT_EQ(moved(0, 3550, kWeek, 1), 2147040000);
  EXPECT_EQ(moved(0, 3551, kWeek, 1), 2147644800 - 4294967296);
  EXPECT_EQ(moved(0, -3551, kWeek, 1), 4294967296 - 2147644800);
}

TEST_F(ZfxDateDeltaTest, WrapsAtTheEndsOfTimeInsteadOfOverflowing) {
  EXPECT_EQ(moved(INT64_MAX, 1, kDay), INT64_MIN + 86399);
  EXPECT_EQ(moved(INT64_MIN, -1, kDay), INT64_MAX - 86399);
}

TEST_F(ZfxDateDeltaTest, GoesToMondayByDefaultAndKeepsTheTimeOfDay) {
  EXPECT_EQ(moved_date("2024-02-28 12:34:56", 0, kWeek), "2024-02-26 12:34:56");  // a Wednesday
  EXPECT_EQ(moved_date("2024-02-26 12:34:56", 0, kWeek), "2024-02-26 12:34:56");
  EXPECT_EQ(moved_date("2024-03-03 12:34:56", 0, kWeek), "2024-02-26 12:34:56");  // a Sunday
  EXPECT_EQ(moved_date("2024-02-28 12:34:56", 1, kWeek), "2024-03-04 12:34:56");
  EXPECT_EQ(moved_date("2024-02-28 12:34:56", -1, kWeek), "2024-02-19 12:34:56");
}

TEST_F(ZfxDateDeltaTest, KeepsTheWeekdayInModeOneOnly) {
  EXPECT_EQ(moved_date("2024-02-28 12:34:56", 1, kWeek, 1), "2024-03-06 12:34:56");
  EXPECT_EQ(moved_date("2024-02-28 12:34:56", -1, kWeek, 1), "2024-02-21 12:34:56");
  for (const int32_t mode : {-1, 0, 2, 3}) {
    EXPECT_EQ(moved_date("2024-02-28 12:34:56", 1, kWeek, mode), "2024-03-04 12:34:56") << mode;
  }
}

// The day to which a Wednesday goes, 0 Sunday to 6 Saturday.
int first_weekday() {
  const time_t start = moved(local_time("2024-02-28 12:00:00"), 0, kWeek);
  tm fields{};
  ::localtime_r(&start, &fields);
  return fields.tm_wday;
}

TEST_F(ZfxDateDeltaTest, TakesTheFirstWeekdayFromTheEnvironment) {
  const struct {
    const char *setting;
    int weekday;
  } cases[] = {{"0", 0},      {"1", 1},       {"2", 2},   {"3", 3},   {"4", 4},         {"5", 5},
               {"6", 6},      {"7", 0},       {"8", 0},   {"9", 0},   {"3x", 3},        {"12", 1},
               {"sunday", 0}, {"SUN", 0},     {"Mon", 1}, {"tue", 2}, {"WEDNESDAY", 3}, {"thursday", 4},
               {"fRi", 5},    {"Saturn", 6},  {"Xyz", 1}, {"su", 1},  {" sun", 1},      {"-1", 1},
               {"Montag", 1}, {"Dienstag", 1}};
  for (const auto &[setting, weekday] : cases) {
    const support::EnvironmentVariable variable("QUOR_FIRST_WEEKDAY", setting);
    EXPECT_EQ(first_weekday(), weekday) << setting;
  }
}

TEST_F(ZfxDateDeltaTest, TakesAnEmptySettingAsMonday) {
  const support::EnvironmentVariable variable("QUOR_FIRST_WEEKDAY", "");
  EXPECT_EQ(first_weekday(), 1);
}

TEST_F(ZfxDateDeltaTest, TakesTheFirstWeekdayFromTheSettings) {
  settings("QUOR_FIRST_WEEKDAY = thursday\n");
  EXPECT_EQ(first_weekday(), 4);
  const support::EnvironmentVariable variable("QUOR_FIRST_WEEKDAY", "5");
  EXPECT_EQ(first_weekday(), 5);  // the environment comes first
}

TEST_F(ZfxDateDeltaTest, GoesToTheStartOfTheWeekFromEveryWeekday) {
  for (int first = 0; first < 7; ++first) {
    const support::EnvironmentVariable variable("QUOR_FIRST_WEEKDAY", std::to_string(first).c_str());
    for (int day = 0; day < 14; ++day) {
      const time_t base = local_time("2024-02-25 01:02:03") + day * 86400;  // a Sunday and on
      const time_t start = moved(base, 0, kWeek);
      EXPECT_EQ(((start - local_time("2024-02-25 01:02:03")) / 86400 % 7 + 7) % 7, first);
      EXPECT_LE(start, base);
      EXPECT_LT(base - start, 7 * 86400);
    }
  }
}

TEST_F(ZfxDateDeltaTest, GoesToTheFirstOfTheMonth) {
  for (const int32_t mode : {-1, 0, 2, 3}) {
    EXPECT_EQ(moved_date("2024-01-31 12:34:56", 1, kMonth, mode), "2024-02-01 12:34:56");
    EXPECT_EQ(moved_date("2024-01-31 12:34:56", 0, kMonth, mode), "2024-01-01 12:34:56");
    EXPECT_EQ(moved_date("2024-01-31 12:34:56", -1, kMonth, mode), "2023-12-01 12:34:56");
  }
}

TEST_F(ZfxDateDeltaTest, CarriesMonthsIntoTheYear) {
  EXPECT_EQ(moved_date("2024-12-15 00:00:00", 1, kMonth, 1), "2025-01-15 00:00:00");
  EXPECT_EQ(moved_date("2024-01-15 00:00:00", -1, kMonth, 1), "2023-12-15 00:00:00");
  EXPECT_EQ(moved_date("2024-05-15 00:00:00", 31, kMonth, 1), "2026-12-15 00:00:00");
  EXPECT_EQ(moved_date("2024-05-15 00:00:00", -31, kMonth, 1), "2021-10-15 00:00:00");
  EXPECT_EQ(moved_date("2024-05-15 00:00:00", -12, kMonth, 1), "2023-05-15 00:00:00");
}

TEST_F(ZfxDateDeltaTest, CutsTheThirtyFirstInMonthsOfThirtyDays) {
  EXPECT_EQ(moved_date("2024-03-31 00:00:00", 1, kMonth, 1), "2024-04-30 00:00:00");
  EXPECT_EQ(moved_date("2024-05-31 00:00:00", 1, kMonth, 1), "2024-06-30 00:00:00");
  EXPECT_EQ(moved_date("2024-08-31 00:00:00", 1, kMonth, 1), "2024-09-30 00:00:00");
  EXPECT_EQ(moved_date("2024-10-31 00:00:00", 1, kMonth, 1), "2024-11-30 00:00:00");
  EXPECT_EQ(moved_date("2024-07-31 00:00:00", 1, kMonth, 1), "2024-08-31 00:00:00");
  EXPECT_EQ(moved_date("2024-12-31 00:00:00", 1, kMonth, 1), "2025-01-31 00:00:00");
}

TEST_F(ZfxDateDeltaTest, CutsThe29thOfFebruaryInCommonYears) {
  EXPECT_EQ(moved_date("2024-01-29 00:00:00", 1, kMonth, 1), "2024-02-29 00:00:00");
  EXPECT_EQ(moved_date("2023-01-29 00:00:00", 1, kMonth, 1), "2023-02-28 00:00:00");
  EXPECT_EQ(moved_date("2000-01-29 00:00:00", 1, kMonth, 1), "2000-02-29 00:00:00");
  EXPECT_EQ(moved_date("2100-01-29 00:00:00", 1, kMonth, 1), "2100-02-28 00:00:00");
}

TEST_F(ZfxDateDeltaTest, CarriesThe30thAnd31stOfFebruaryIntoMarch) {
  EXPECT_EQ(moved_date("2023-01-31 00:00:00", 1, kMonth, 1), "2023-03-03 00:00:00");
  EXPECT_EQ(moved_date("2024-01-31 00:00:00", 1, kMonth, 1), "2024-03-02 00:00:00");
  EXPECT_EQ(moved_date("2023-01-30 00:00:00", 1, kMonth, 1), "2023-03-02 00:00:00");
  EXPECT_EQ(moved_date("2024-01-30 00:00:00", 1, kMonth, 1), "2024-03-01 00:00:00");
}

TEST_F(ZfxDateDeltaTest, MovesByYearsInThreeModes) {
  EXPECT_EQ(moved_date("2024-05-15 12:34:56", 1, kYear, 1), "2025-05-15 12:34:56");
  EXPECT_EQ(moved_date("2024-05-15 12:34:56", -1, kYear, 3), "2023-05-01 12:34:56");
  for (const int32_t mode : {-1, 0, 2, 4}) {
    EXPECT_EQ(moved_date("2024-05-15 12:34:56", 1, kYear, mode), "2025-01-01 12:34:56") << mode;
  }
}

TEST_F(ZfxDateDeltaTest, CutsTheLeapDayInCommonYears) {
  EXPECT_EQ(moved_date("2024-02-29 12:00:00", 1, kYear, 1), "2025-02-28 12:00:00");
  EXPECT_EQ(moved_date("2024-02-29 12:00:00", 4, kYear, 1), "2028-02-29 12:00:00");
  EXPECT_EQ(moved_date("2024-02-29 12:00:00", 76, kYear, 1), "2100-02-28 12:00:00");
  EXPECT_EQ(moved_date("2024-02-29 12:00:00", -24, kYear, 1), "2000-02-29 12:00:00");
  EXPECT_EQ(moved_date("2024-02-29 12:00:00", 1, kYear, 3), "2025-02-01 12:00:00");
  EXPECT_EQ(moved_date("2024-02-29 12:00:00", 1, kYear, 0), "2025-01-01 12:00:00");
  EXPECT_EQ(moved_date("2024-03-29 12:00:00", 1, kYear, 1), "2025-03-29 12:00:00");
}

TEST_F(ZfxDateDeltaTest, TakesTheDaylightFlagOfTheBaseAlong) {
  const records::TimeZone zone("Europe/Berlin");
  EXPECT_EQ(moved_date("2024-07-15 12:00:00", 1, kMonth, 1), "2024-08-15 12:00:00");
  EXPECT_EQ(moved_date("2024-07-15 12:00:00", 6, kMonth, 1), "2025-01-15 11:00:00");
  EXPECT_EQ(moved_date("2024-01-15 12:00:00", 6, kMonth, 1), "2024-07-15 13:00:00");
  EXPECT_EQ(moved_date("2024-07-15 12:00:00", 0, kYear, 0), "2024-01-01 11:00:00");
}

TEST_F(ZfxDateDeltaTest, SeesANewZoneAtOnce) {
  EXPECT_EQ(moved(1709208000, 0, kMonth), 1706788800);  // 1 February, 12:00
  ::setenv("TZ", "XYZ-13", 1);                          // no tzset(): 1 March, 01:00 there
  EXPECT_EQ(moved(1709208000, 0, kMonth), 1709208000);
}

TEST_F(ZfxDateDeltaTest, RefusesOtherUnitsAndStoresNothing) {
  for (const int32_t unit : {INT_MIN, -1, 0, 5, 6, INT_MAX}) {
    time_t time = 12345;
    uint32_t packed = 54321;
    EXPECT_EQ(ZfxDateDelta(1709208000, 1, unit, 1, 6, &time, &packed), -1) << unit;
    EXPECT_EQ(time, 12345);
    EXPECT_EQ(packed, 54321U);
  }
}

uint32_t packed(const char *base, int32_t flags) {
  uint32_t result = 0;
  EXPECT_EQ(ZfxDateDelta(local_time(base), 0, kDay, 0, flags, nullptr, &result), 0);
  return result;
}

TEST_F(ZfxDateDeltaTest, PacksYearMonthAndDayAsTheFlagsAsk) {
  EXPECT_EQ(packed("2024-03-15 00:00:00", 6), 1036399U);
  EXPECT_EQ(packed("2024-03-15 00:00:00", 0), 1036288U);
  EXPECT_EQ(packed("2024-03-15 00:00:00", 2), 1036288U + 3 * 32);
  EXPECT_EQ(packed("2024-03-15 00:00:00", 4), 1036288U + 15);
  EXPECT_EQ(packed("2024-03-15 00:00:00", 1), 1036288U);
  EXPECT_EQ(packed("2024-03-15 00:00:00", -1), 1036399U);
  EXPECT_EQ(packed("2024-12-31 23:59:59", 6), (2024U * 16 + 12) * 32 + 31);
}

TEST_F(ZfxDateDeltaTest, PacksFarYearsModulo32Bits) {
  const records::TimeZone zone("UTC0");
  constexpr time_t kEnd = 67768036191676799;  // of the last year that a record can hold
  uint32_t result = 0;
  EXPECT_EQ(ZfxDateDelta(kEnd, 0, kDay, 0, 6, nullptr, &result), 0);
  EXPECT_EQ(result, static_cast<uint32_t>((int64_t{2147485547} * 16 + 12) * 32 + 31));
}

TEST_F(ZfxDateDeltaTest, PacksTheNewDateOfTheLocalCalendar) {
  const records::TimeZone zone("XYZ-13");
  uint32_t result = 0;
  EXPECT_EQ(ZfxDateDelta(1709208000, 1, kDay, 0, 6, nullptr, &result), 0);
  EXPECT_EQ(result, (2024U * 16 + 3) * 32 + 2);  // 29 February, 12:00 UTC and a day
}

TEST_F(ZfxDateDeltaTest, NeedsNoAreasForItsResults) {
  EXPECT_EQ(ZfxDateDelta(0, 1, kYear, 1, 6, nullptr, nullptr), 0);
}

TEST_F(ZfxDateDeltaTest, RefusesABaseOutsideTheCalendarForAllButDays) {
  for (const time_t base : {INT64_MAX, INT64_MIN, int64_t{67768036191676800}, int64_t{-67768040609740801}}) {
    for (const int32_t unit : {kWeek, kMonth, kYear}) {
      time_t time = 12345;
      uint32_t packed = 54321;
      EXPECT_EQ(ZfxDateDelta(base, 0, unit, 1, 6, &time, &packed), -1);
      EXPECT_EQ(time, 12345);
      EXPECT_EQ(packed, 54321U);
    }
    time_t time = 12345;
    uint32_t packed = 54321;
    EXPECT_EQ(ZfxDateDelta(base, 0, kDay, 1, 6, &time, &packed), 0);
    EXPECT_EQ(time, base);
    EXPECT_EQ(packed, 0U);
  }
}

TEST_F(ZfxDateDeltaTest, StoresMinusOneForAYearThatCannotBeRepresented) {
  errno = 0;
  EXPECT_EQ(moved(1709208000, INT_MAX, kYear, 1), -1);
  EXPECT_EQ(errno, EOVERFLOW);
  EXPECT_EQ(moved(67768036191676799, 1, kMonth, 1), -1);
  EXPECT_EQ(moved(-67768040609740800, -1, kMonth, 1), -1);
}

TEST_F(ZfxDateDeltaTest, MovesByAnyNumberOfMonthsAtOnce) {
  EXPECT_EQ(moved_date("2024-05-15 00:00:00", INT_MAX, kMonth, 1), "178958994-12-15 00:00:00");
  EXPECT_EQ(moved_date("2024-05-15 00:00:00", INT_MIN, kMonth, 1), "-178954947-09-15 00:00:00");
}

// The rules once more, a month at a time.
time_t plain_move(time_t base, int amount, int unit, int mode) {
  if (unit == kDay) return base + amount * 86400L;
  tm fields{};
  ::localtime_r(&base, &fields);
  if (unit == kWeek) {
    const int days = (fields.tm_wday + 7 - 1) % 7;
    return base + amount * 604800L - (mode == 1 ? 0 : days * 86400L);
  }
  if (unit == kYear) fields.tm_year += amount;
  for (; unit == kMonth && amount > 0; --amount) {
    if (++fields.tm_mon == 12) {
      fields.tm_mon = 0;
      ++fields.tm_year;
    }
  }
  for (; unit == kMonth && amount < 0; ++amount) {
    if (--fields.tm_mon < 0) {
      fields.tm_mon = 11;
      --fields.tm_year;
    }
  }
  const int year = fields.tm_year + 1900;
  const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  if (mode != 1) {
    fields.tm_mday = 1;
    if (unit == kYear && mode != 3) fields.tm_mon = 0;
  } else {
    const bool short_month =
        fields.tm_mon == 3 || fields.tm_mon == 5 || fields.tm_mon == 8 || fields.tm_mon == 10;
    if (unit == kMonth && fields.tm_mday == 31 && short_month) fields.tm_mday = 30;
    if (fields.tm_mon == 1 && fields.tm_mday == 29 && !leap) fields.tm_mday = 28;
  }
  return std::mktime(&fields);
}

TEST_F(ZfxDateDeltaTest, AgreesWithThePlainRulesInEveryZone) {
  std::mt19937_64 random(29);
  const auto below = [&random](uint64_t bound) { return static_cast<int>(random() % bound); };
  for (const char *name :
       {"UTC0", "Europe/Berlin", "America/New_York", "Australia/Lord_Howe", "Asia/Kolkata"}) {
    const records::TimeZone zone(name);
    for (int round = 0; round < 6000; ++round) {
      const time_t base = static_cast<time_t>(random() % 8000000000) - 3000000000;
      const int unit = 1 + below(4);
      const int amount = below(400) - 200;
      const int mode = below(5);
      time_t result = 0;
      uint32_t date = 0;
      ASSERT_EQ(ZfxDateDelta(base, amount, unit, mode, 6, &result, &date), 0);
      ASSERT_EQ(result, plain_move(base, amount, unit, mode))
          << name << " " << base << " " << amount << " " << unit;
      tm fields{};
      ::localtime_r(&result, &fields);
      ASSERT_EQ(date >> 9, static_cast<uint32_t>(fields.tm_year + 1900));
      ASSERT_EQ(date >> 5 & 15, static_cast<uint32_t>(fields.tm_mon + 1));
      ASSERT_EQ(date & 31, static_cast<uint32_t>(fields.tm_mday));
    }
  }
}

TEST_F(ZfxDateDeltaTest, ComesBackWhenTheSameDaysWeeksOrMonthsAreSubtracted) {
  std::mt19937_64 random(31);
  const records::TimeZone zone("America/New_York");
  for (int round = 0; round < 20000; ++round) {
    const time_t base = static_cast<time_t>(random() % 8000000000) - 3000000000;
    const auto amount = static_cast<int32_t>(random());
    ASSERT_EQ(moved(moved(base, amount, kDay), static_cast<int32_t>(-static_cast<uint32_t>(amount)), kDay),
              base);
    const auto weeks = static_cast<int32_t>(random() % 3000);
    ASSERT_EQ(moved(moved(base, weeks, kWeek, 1), -weeks, kWeek, 1), base);
  }
}

}  // namespace
