// zorvcrt date: what the library makes of a written date, and where a date lies some days, weeks, months or
// years on.
#include <zorvcrt.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <string>

#include "arguments.hpp"

namespace tools {

namespace {

struct Unit {
  const char *name;
  int32_t code;
};

constexpr std::array kUnits = {Unit{"day", 1}, Unit{"week", 2}, Unit{"month", 3}, Unit{"year", 4}};
constexpr int32_t kKeepDate = 1;

int32_t unit_of(const std::string &name) {
  for (const Unit &unit : kUnits) {
    if (name == unit.name) return unit.code;
  }
  throw Misuse("unknown unit '" + name + "'");
}

// The seconds of a written date; 0 when it is none.
time_t seconds_of(const std::string &text) {
  return static_cast<time_t>(ZfxParseTimestamp(text.data(), text.size(), nullptr));
}

std::string no_date(const std::string &text) {
  return "'" + text + "' is no date after 1970-01-01 00:00:00";
}

void print_time(time_t seconds) {
  char text[64];
  std::printf("%lld\t%s\n", static_cast<long long>(seconds), ZfxFormatIso8601(seconds, text, sizeof text));
}

// Every text is tried, so that one bad line does not hide the others.
int print_dates(const Words &texts) {
  int status = kSuccess;
  for (const std::string &text : texts) {
    const time_t seconds = seconds_of(text);
    if (seconds != 0) {
      print_time(seconds);
    } else {
      std::fprintf(stderr, "zorvcrt date: %s\n", no_date(text).c_str());
      status = kFailure;
    }
  }
  return status;
}

time_t base_of(const Words &operands) {
  if (operands.size() < 2 || operands[1] == "now") return std::time(nullptr);
  const time_t seconds = seconds_of(operands[1]);
  if (seconds == 0) throw Failure(no_date(operands[1]));
  return seconds;
}

int print_moved_date(const Arguments &arguments) {
  arguments.require_operands(1, 2);
  const int32_t amount = number_of(*arguments.value("--add"), "number of 32 bits");
  const int32_t unit = unit_of(arguments.operands()[0]);
  const auto mode = arguments.value("--mode");
  time_t moved = 0;
  errno = 0;
  const int32_t result =
      ZfxDateDelta(base_of(arguments.operands()), amount, unit,
                   mode ? number_of(*mode, "number of 32 bits") : kKeepDate, 0, &moved, nullptr);
  if (result != 0 || (moved == -1 && errno == EOVERFLOW)) throw Failure("the date cannot be represented");
  print_time(moved);
  return kSuccess;
}

int run(const Words &words) {
  const Arguments arguments(words, {}, {"--add", "--mode"});
  if (arguments.has("--add")) return print_moved_date(arguments);
  if (arguments.has("--mode")) throw Misuse("option --mode needs --add");
  arguments.require_operands(1, SIZE_MAX);
  return print_dates(arguments.operands());
}

}  // namespace

const Command kDateCommand = {
    "date", "TEXT... | --add N day|week|month|year [--mode M] [TEXT|now]", "read dates, and move them",
    "Prints a line of the seconds since 1970-01-01 00:00:00 UTC, a tab, and date and time in UTC.\n"
    "TEXT is a mail date (\"Thu, 29 Feb 2024 12:00:00 +0100 \", whose zone counts only with a blank\n"
    "behind it) or one of the ISO 8601 family (\"2024-02-29T12:00:00Z\"). As everywhere in the library\n"
    "\"+0100\" is added to the time, and a time without zone is UTC. Exit status 1 when a TEXT is none.\n"
    "\n"
    "--add moves one date, now by default, N units forward (back when negative) in the local calendar.\n"
    "--mode 1, the default, keeps day and month; 0 goes to the start of the week, month or year; 3 with\n"
    "years keeps the month and goes to its first day. Days do not look at the mode.\n",
    run};

}  // namespace tools
