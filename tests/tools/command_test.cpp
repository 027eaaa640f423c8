#include <gtest/gtest.h>
#include <zorvcrt.h>

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

TEST(Command, RefusesAnUnknownCommandAsMisuse) {
  const auto outcome = run_zorvcrt({"frobnicate"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.errors, "zorvcrt: unknown command 'frobnicate'; 'zorvcrt --help' lists them\n");
}

TEST(Command, RefusesAnUnknownOptionWithTheUsageLine) {
  const auto outcome = run_zorvcrt({"version", "--loud"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.errors, "zorvcrt version: unknown option --loud\nusage: zorvcrt version\n");
}

TEST(Command, PrintsTheVersionOfTheLibrary) {
  EXPECT_EQ(run_zorvcrt({"version"}).output, "zorvcrt_core 8.4-4:1\n");
  EXPECT_EQ(run_zorvcrt({"--version"}).output, "zorvcrt_core 8.4-4:1\n");
}

}  // namespace
