#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "files.hpp"
#include "run.hpp"

namespace {

// Without settings of the machine or the user, in the given zone.
support::Outcome run_date(std::vector<std::string> words, const std::string &zone = "UTC0") {
  const support::TemporaryFolder folder;
  support::write_file(folder / "quor.conf", "");
  words.insert(words.begin(), "date");
  return support::run_zorvcrt(words, "", {{"__KERNEL_DEVELOPER", folder / "quor.conf"}, {"TZ", zone}});
}

std::string output_of(const std::vector<std::string> &words, const std::string &zone = "UTC0") {
  const support::Outcome outcome = run_date(words, zone);
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_EQ(outcome.errors, "");
  return outcome.output;
}

TEST(DateCommand, PrintsSecondsAndUtcOfBothKindsOfDates) {
  EXPECT_EQ(output_of({"2024-02-29T12:00:00Z"}), "1709208000\t2024-02-29 12:00:00\n");
  EXPECT_EQ(output_of({"Thu, 29 Feb 2024 12:00:00 +0100 "}), "1709211600\t2024-02-29 13:00:00\n");
  EXPECT_EQ(output_of({"2024-02-29 12:00:00"}, "XYZ-13"), "1709208000\t2024-02-29 12:00:00\n");
}

TEST(DateCommand, PrintsALineForEachText) {
  EXPECT_EQ(output_of({"2024-02-29", "2024-03-01"}),
            "1709164800\t2024-02-29 00:00:00\n1709251200\t2024-03-01 00:00:00\n");
}

TEST(DateCommand, ReportsATextThatIsNoDateAndGoesOn) {
  const auto outcome = run_date({"tomorrow", "2024-03-01"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "zorvcrt date: 'tomorrow' is no date after 1970-01-01 00:00:00\n");
  EXPECT_EQ(outcome.output, "1709251200\t2024-03-01 00:00:00\n");
}

TEST(DateCommand, PrintsJsonALineForEachDate) {
  EXPECT_EQ(output_of({"--output", "json", "2024-02-29", "2024-03-01"}),
            "{\"seconds\":1709164800,\"utc\":\"2024-02-29 00:00:00\"}\n"
            "{\"seconds\":1709251200,\"utc\":\"2024-03-01 00:00:00\"}\n");
  EXPECT_EQ(output_of({"--output=json", "--add", "1", "day", "2024-02-28"}),
            "{\"seconds\":1709164800,\"utc\":\"2024-02-29 00:00:00\"}\n");
}

TEST(DateCommand, ReadsTheLinesOfStandardInputForADash) {
  const auto outcome = support::run_zorvcrt({"date", "-"}, "2024-02-29\nnone\n2024-03-01");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "1709164800\t2024-02-29 00:00:00\n1709251200\t2024-03-01 00:00:00\n");
  EXPECT_EQ(outcome.errors, "zorvcrt date: 'none' is no date after 1970-01-01 00:00:00\n");
}

TEST(DateCommand, MovesADateAndKeepsItsDay) {
  EXPECT_EQ(output_of({"--add", "1", "day", "2024-02-28"}), "1709164800\t2024-02-29 00:00:00\n");
  EXPECT_EQ(output_of({"--add", "-1", "week", "2024-03-07"}), "1709164800\t2024-02-29 00:00:00\n");
  EXPECT_EQ(output_of({"--add=1", "month", "2024-01-29"}), "1709164800\t2024-02-29 00:00:00\n");
  EXPECT_EQ(output_of({"--add", "-1", "year", "2024-02-29"}), "1677542400\t2023-02-28 00:00:00\n");
}

TEST(DateCommand, GoesToTheStartInTheOtherModes) {
  EXPECT_EQ(output_of({"--add", "0", "week", "--mode", "0", "2024-02-29"}),
            "1708905600\t2024-02-26 00:00:00\n");
  EXPECT_EQ(output_of({"--add", "0", "month", "--mode", "0", "2024-02-29"}),
            "1706745600\t2024-02-01 00:00:00\n");
  EXPECT_EQ(output_of({"--add", "0", "year", "--mode", "0", "2024-02-29"}),
            "1704067200\t2024-01-01 00:00:00\n");
  EXPECT_EQ(output_of({"--add", "0", "year", "--mode", "3", "2024-02-29"}),
            "1706745600\t2024-02-01 00:00:00\n");
}

TEST(DateCommand, MovesInTheLocalCalendar) {
  // 23:00 in UTC is the first of March there, and goes to its midnight at 13 hours before UTC.
  EXPECT_EQ(output_of({"--add", "0", "month", "--mode", "0", "2024-02-29T23:00:00"}, "XYZ-13"),
            "1709247600\t2024-02-29 23:00:00\n");
}

TEST(DateCommand, MovesFromNowByDefault) {
  for (const std::vector<std::string> &words :
       {std::vector<std::string>{"--add", "0", "day"}, {"--add", "0", "day", "now"}}) {
    const time_t before = std::time(nullptr);
    const std::string output = output_of(words);
    EXPECT_LE(before, std::atoll(output.c_str()));
    EXPECT_GE(std::time(nullptr), std::atoll(output.c_str()));
  }
}

TEST(DateCommand, ReportsADateThatCannotBeMoved) {
  const auto no_date = run_date({"--add", "1", "day", "tomorrow"});
  EXPECT_EQ(no_date.status, 1);
  EXPECT_EQ(no_date.errors, "zorvcrt date: 'tomorrow' is no date after 1970-01-01 00:00:00\n");
  const auto too_far = run_date({"--add", "2147483647", "year"});
  EXPECT_EQ(too_far.status, 1);
  EXPECT_EQ(too_far.errors, "zorvcrt date: the date cannot be represented\n");
}

TEST(DateCommand, RefusesWhatMakesNoSense) {
  for (const std::vector<std::string> &words : {std::vector<std::string>{},
                                                {"--add", "1"},
                                                {"--add", "1", "fortnight"},
                                                {"--add", "x", "day"},
                                                {"--add", "1x", "day"},
                                                {"--add", "2147483648", "day"},
                                                {"--add", "", "day"},
                                                {"--add", "1", "day", "--mode", "x"},
                                                {"--add", "1", "day", "--mode", "99"},
                                                {"--add", "1", "year", "--mode", "2"},
                                                {"--add", "1", "month", "--mode", "3"},
                                                {"--add", "1", "day", "--mode", "-1"},
                                                {"--add", "1", "day", "now", "then"},
                                                {"--mode", "1", "2024"}}) {
    const auto outcome = run_date(words);
    EXPECT_EQ(outcome.status, 2) << outcome.output;
    EXPECT_NE(outcome.errors.find("usage: zorvcrt date [--add N]"), std::string::npos) << outcome.errors;
  }
}

}  // namespace
