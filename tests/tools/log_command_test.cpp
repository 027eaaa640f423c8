#include <gtest/gtest.h>

#include <regex>

#include "files.hpp"
#include "run.hpp"

namespace {

constexpr char kTime[] = "\\[[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9][0-9] [0-9]{2}:[0-9]{2}:[0-9]{2} ";

void expect_line(const std::string &text, const std::string &rest) {
  EXPECT_TRUE(std::regex_match(text, std::regex(kTime + rest))) << text;
}

TEST(LogCommand, AppendsALineOfAllItsWords) {
  const support::TemporaryFolder folder;
  const std::string file = folder / "x.log";
  EXPECT_EQ(support::run_zorvcrt({"log", file, "warning", "disk", "nearly", "full"}).status, 0);
  expect_line(support::read_file(file), "WARNING\\] disk nearly full\n");
  EXPECT_EQ(support::run_zorvcrt({"log", file, "5", "x"}).status, 0);
  EXPECT_TRUE(support::read_file(file).ends_with("  DEBUG] x\n"));
}

TEST(LogCommand, ShowsTheErrorNumberAndTheLocation) {
  const support::TemporaryFolder folder;
  const std::string file = folder / "x.log";
  EXPECT_EQ(
      support::run_zorvcrt({"log", file, "fatal", "gone", "--error", "2", "--location", "main@a.c:1"}).status,
      0);
  expect_line(support::read_file(file), "  FATAL\\] main@a\\.c:1: #2 gone\n");
}

TEST(LogCommand, TakesADashForStandardError) {
  const auto outcome = support::run_zorvcrt({"log", "-", "error", "--", "-x", "%s"});
  EXPECT_EQ(outcome.status, 0);
  expect_line(outcome.errors, "  ERROR\\] -x %s\n");
}

TEST(LogCommand, WritesEachLineOfStandardInputForTheMessageDash) {
  const auto outcome = support::run_zorvcrt({"log", "-", "info", "-"}, "one\n\nlast");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_TRUE(std::regex_match(outcome.errors, std::regex("[^\n]* one\n[^\n]*\\] \n[^\n]* last\n")))
      << outcome.errors;
  EXPECT_TRUE(support::run_zorvcrt({"log", "-", "info", "a", "-"}).errors.ends_with("] a -\n"));
}

TEST(LogCommand, CutsAMessageToWhatALineHolds) {
  const auto outcome = support::run_zorvcrt({"log", "-", "info", std::string(9000, 'm')});
  expect_line(outcome.errors, "   INFO\\] m{8000}\n");
}

TEST(LogCommand, FailsInOneLineWhenTheFileCannotBeWritten) {
  const auto outcome = support::run_zorvcrt({"log", "/nonexistent/x.log", "info", "x"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "zorvcrt log: cannot append to /nonexistent/x.log\n");
}

TEST(LogCommand, RefusesMissingWordsUnknownLevelsAndNumbersAsMisuse) {
  EXPECT_EQ(support::run_zorvcrt({"log", "-", "info"}).status, 2);
  EXPECT_EQ(support::run_zorvcrt({"log", "-", "loud", "x"}).status, 2);
  EXPECT_EQ(support::run_zorvcrt({"log", "-", "6", "x"}).status, 2);
  EXPECT_EQ(support::run_zorvcrt({"log", "-", "error", "x", "--error", "2x"}).status, 2);
}

}  // namespace
