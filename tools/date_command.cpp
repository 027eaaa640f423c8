// zorvcrt date: what the library makes of a written date, and where a date lies some days, weeks, months or
// years on.
#include <zorvcrt.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <string>

#include "arguments.hpp"
#include "records.hpp"
#include "streams.hpp"
#include "terminal.hpp"

namespace tools {

namespace {

struct Unit {
  const char *name;
  int32_t code;
};

constexpr int32_t kYear = 4;
constexpr std::array kUnits = {Unit{"day", 1}, Unit{"week", 2}, Unit{"month", 3}, Unit{"year", kYear}};

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

void print_time(time_t seconds, bool as_json) {
  char text[64];
  ZfxFormatIso8601(seconds, text, sizeof text);
  if (as_json) {
    print_json(JsonRecord().add("seconds", json_number(seconds)).add("utc", text).take());
  } else {
    std::printf("%lld\t%s\n", static_cast<long long>(seconds), text);
  }
}

// Every text is tried, so that one bad line does not hide the others.
int print_date(const std::string &text, bool as_json) {
  const time_t seconds = seconds_of(text);
  if (seconds != 0) {
    print_time(seconds, as_json);
    return kSuccess;
  }
  complain("date", no_date(text));
  return kFailure;
}

int print_dates(const Arguments &arguments) {
  arguments.require_operands(1, SIZE_MAX);
  const bool as_json = arguments.wants_json();
  int status = kSuccess;
  for (const std::string &operand : arguments.operands()) {
    if (operand != "-") {
      status |= print_date(operand, as_json);
      continue;
    }
    Input input(operand, Input::Meanwhile::kStandardOutput);
    while (const auto line = input.read_line()) {
      status |= print_date(*line, as_json);
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
  const std::string mode = arguments.value("--mode").value_or("1");
  if (mode == "3" && unit != kYear) throw Misuse("mode 3 is for years");
  time_t moved = 0;
  errno = 0;
  const int32_t result =
      ZfxDateDelta(base_of(arguments.operands()), amount, unit, number_of(mode, "mode"), 0, &moved, nullptr);
  if (result != 0 || (moved == -1 && errno == EOVERFLOW)) throw Failure("the date cannot be represented");
  print_time(moved, arguments.wants_json());
  return kSuccess;
}

constexpr std::array kOptions = {
    Option{"--add", "", "N", "move one date by N units, back when negative"},
    Option{"--mode", "", "0|1|3", "what becomes of day and month when a date is moved, 1 by default"},
    kOutputOption};

int run(const Arguments &arguments) {
  if (arguments.has("--add")) return print_moved_date(arguments);
  if (arguments.has("--mode")) throw Misuse("option --mode needs --add");
  return print_dates(arguments);
}

}  // namespace

const Command kDateCommand = {
    "date",
    "TEXT...|UNIT [TEXT|now]",
    "read dates, and move them",
    kOptions,
    "Prints a line of the seconds since 1970-01-01 00:00:00 UTC, a tab, and date and time in UTC.\n"
    "TEXT is a mail date (\"Thu, 29 Feb 2024 12:00:00 +0100 \", whose zone counts only with a blank\n"
    "behind it) or one of the ISO 8601 family (\"2024-02-29T12:00:00Z\"). As everywhere in the library\n"
    "\"+0100\" is added to the time, and a time without zone is UTC. The TEXT - stands for the lines of\n"
    "standard input. Exit status 1 when a TEXT is no date. With JSON each date is a line of its own.\n"
    "\n"
    "With --add moves one date, now by default, in the local calendar. UNIT is day, week, month or year.\n"
    "Mode 1 keeps day and month; 0 goes to the start of the week, month or year; 3, for years, keeps the\n"
    "month and goes to its first day. Days do not look at the mode.\n",
    run};

}  // namespace tools
