// The time in log lines, under a clock that the test sets, against ctime().
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <random>
#include <string>

#include "files.hpp"
#include "locale.hpp"
#include "logger.h"

namespace {

std::time_t set_time = 0;

void receive(void *context, const char *line) {
  *static_cast<std::string *>(context) = line;
}

// A logger whose last line is at hand.
class LineLogger {
 public:
  LineLogger() { Logger_SetCallback(logger_, receive, &line_); }
  ~LineLogger() { Logger_Delete(logger_); }
  LineLogger(const LineLogger &) = delete;
  LineLogger &operator=(const LineLogger &) = delete;

  const std::string &line_at(std::time_t now) {
    set_time = now;
    Logger_LogInfo(logger_, nullptr, "x");
    return line_;
  }

 private:
  Logger *logger_ = Logger_New(LOGGER_LEVEL_DEBUG, nullptr, 0);
  std::string line_;
};

std::string expected_at(std::time_t now) {
  return "[" + std::string(std::ctime(&now)).substr(0, 19) + "    INFO] x\n";
}

constexpr std::time_t kNow = 1794991092;  // 2026-11-18

}  // namespace

// What the library sees as the current time.
extern "C" std::time_t time(std::time_t *result) noexcept {
  if (result != nullptr) *result = set_time;
  return set_time;
}

namespace {

TEST(LogLineTime, IsThatOfCtimeWithoutTheYear) {
  const support::EnvironmentVariable zone("TZ", "UTC0");
  LineLogger logger;
  EXPECT_EQ(logger.line_at(kNow), "[Wed Nov 18 08:38:12    INFO] x\n");
  EXPECT_EQ(logger.line_at(0), "[Thu Jan  1 00:00:00    INFO] x\n");
}

TEST(LogLineTime, FollowsEveryChangeOfTheZoneWithinASecond) {
  LineLogger logger;
  const std::string long_name(70, 'A');
  const std::string long_zone = "<" + long_name + ">-7:30";
  const std::string other_long_zone = "<" + long_name + ">-8:30";
  const char *zones[] = {"UTC0",
                         "Europe/Berlin",
                         nullptr,
                         "Asia/Tokyo",
                         "",
                         "XYZ-5:45",
                         "No/Such/Zone",
                         "CET-1CEST,M3.5.0,M10.5.0/3",
                         "UTC0",
                         nullptr,
                         "",
                         long_zone.c_str(),
                         other_long_zone.c_str(),
                         "XYZ-5:45"};
  for (const char *zone : zones) {
    const support::EnvironmentVariable in_force("TZ", zone);
    EXPECT_EQ(logger.line_at(kNow), expected_at(kNow)) << (zone == nullptr ? "unset" : zone);
    EXPECT_EQ(logger.line_at(kNow), expected_at(kNow)) << (zone == nullptr ? "unset" : zone);
  }
}

TEST(LogLineTime, EqualsCtimeAtAnyTimeInAnyZoneAndLocale) {
  std::mt19937_64 random(4711);
  LineLogger logger;
  for (const char *name : {"C", "fr_FR.UTF-8", "tr_TR.ISO-8859-9", "en_US.ISO-8859-1"}) {
    const support::Locale locale(name);
    ASSERT_TRUE(locale.in_force()) << name;
    for (const char *zone : {"UTC0", "America/New_York", "Asia/Kathmandu", "Europe/London", "Pacific/Apia"}) {
      const support::EnvironmentVariable in_force("TZ", zone);
      for (int i = 0; i < 2000; ++i) {
        // From the year 1653 to the year 2286, and now and then the same second again.
        const auto now = static_cast<std::time_t>(random() % 20000000000U) - 10000000000;
        ASSERT_EQ(logger.line_at(now), expected_at(now)) << name << ' ' << zone << ' ' << now;
        if (i % 4 == 0) {
          ASSERT_EQ(logger.line_at(now), expected_at(now));
        }
      }
    }
  }
}

TEST(LogLineTime, HasATextForYearsOfMoreThanFourDigits) {
  const support::EnvironmentVariable zone("TZ", "UTC0");
  LineLogger logger;
  const std::time_t year_12000 = 316516204800;
  EXPECT_EQ(logger.line_at(year_12000), expected_at(year_12000));
}

TEST(LogLineTime, IsLeftOutWhenTheSystemHasNoneForTheClock) {
  LineLogger logger;
  EXPECT_EQ(logger.line_at(INT64_MAX), "[   INFO] x\n");
  EXPECT_EQ(logger.line_at(INT64_MAX), "[   INFO] x\n");
  EXPECT_EQ(logger.line_at(kNow), expected_at(kNow));
}

}  // namespace
