#include <gtest/gtest.h>
#include <zorvcrt.h>

#include <algorithm>
#include <string>

#include "run.hpp"

namespace {

using support::run_zorvcrt;

TEST(Command, WithoutWordsListsTheCommandsAsMisuse) {
  const auto outcome = run_zorvcrt({});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.output, "");
  EXPECT_NE(outcome.errors.find("usage: zorvcrt COMMAND"), std::string::npos);
}

TEST(Command, HelpListsEveryCommandAndEachExplainsItself) {
  const auto list = run_zorvcrt({"--help"});
  EXPECT_EQ(list.status, 0);
  EXPECT_EQ(list.errors, "");
  std::size_t explained = 0;
  for (std::size_t at = list.output.find("\n  "); at != std::string::npos;
       at = list.output.find("\n  ", at + 1)) {
    const std::string name = list.output.substr(at + 3, list.output.find(' ', at + 3) - at - 3);
    const auto help = run_zorvcrt({name, "--help"});
    EXPECT_EQ(help.status, 0) << name;
    EXPECT_TRUE(help.output.starts_with("usage: zorvcrt " + name)) << help.output;
    ++explained;
  }
  EXPECT_GE(explained, 1U);
}

TEST(Command, ExplainsACommandInThreeWays) {
  const std::string help = run_zorvcrt({"json", "--help"}).output;
  EXPECT_NE(help.find("--compact"), std::string::npos);
  EXPECT_EQ(run_zorvcrt({"json", "-h"}).output, help);
  EXPECT_EQ(run_zorvcrt({"help", "json"}).output, help);
  EXPECT_EQ(run_zorvcrt({"help", "frobnicate"}).status, 2);
}

TEST(Command, TakesHelpBehindTwoDashesForAnOperand) {
  EXPECT_TRUE(run_zorvcrt({"log", "-", "info", "--", "--help"}).errors.ends_with("] --help\n"));
}

TEST(Command, RefusesAValueThatIsNoneOfTheChoices) {
  for (const char *value : {"", "xml", "text|json", "tex"}) {
    const auto outcome = run_zorvcrt({"version", "--output", value});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_TRUE(outcome.errors.starts_with("zorvcrt version: option --output takes text|json, not '"))
        << value;
  }
  EXPECT_EQ(run_zorvcrt({"version", "--output"}).status, 2);
}

TEST(Command, ReportsOutputThatIsLostInOneLine) {
  for (const char *words : {"version", "base64 /proc/self/exe", "listen 0", "whoami --output json"}) {
    const std::string command = std::string(ZORVCRT_BINARY_DIR "/tools/zorvcrt ") + words + " >/dev/full";
    const auto outcome = support::run({"sh", "-c", command});
    EXPECT_EQ(outcome.status, 1) << words;
    EXPECT_TRUE(outcome.errors.ends_with("standard output: No space left on device\n")) << outcome.errors;
    EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
  }
}

TEST(Command, FailsWithoutAStandardOutput) {
  for (const char *words : {"version", "listen 0"}) {
    const std::string command = std::string(ZORVCRT_BINARY_DIR "/tools/zorvcrt ") + words + " >&-";
    const auto outcome = support::run({"sh", "-c", command});
    EXPECT_EQ(outcome.status, 1) << words;
    EXPECT_TRUE(outcome.errors.ends_with("standard output: Bad file descriptor\n")) << outcome.errors;
  }
}

TEST(Command, RefusesAnUnknownCommandAsMisuse) {
  const auto outcome = run_zorvcrt({"frobnicate"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.errors, "zorvcrt: unknown command 'frobnicate'; 'zorvcrt --help' lists them\n");
}

TEST(Command, RefusesAnUnknownOptionWithTheUsageLine) {
  const auto outcome = run_zorvcrt({"version", "--loud"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.errors,
            "zorvcrt version: unknown option --loud\nusage: zorvcrt version [--output text|json]\n");
}

TEST(Command, PrintsTheVersionOfTheLibrary) {
  EXPECT_EQ(run_zorvcrt({"version"}).output, "zorvcrt_core 8.4-4:1\n");
  EXPECT_EQ(run_zorvcrt({"--version"}).output, "zorvcrt_core 8.4-4:1\n");
}

}  // namespace
