#include <gtest/gtest.h>

#include "files.hpp"
#include "run.hpp"

namespace {

using support::run_zorvcrt;

TEST(JsonCommand, PrintsStandardInputPretty) {
  const auto outcome = run_zorvcrt({"json"}, "{\"a\":[1,2], 'b':{} }\n");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, "{\n\t\"a\":[1,2],\n\t\"b\":{}\n}\n");
  EXPECT_EQ(run_zorvcrt({"json", "--pretty", "-"}, "[[]]").output, "[\n\t[]]\n");
}

TEST(JsonCommand, PrintsFilesCompact) {
  const support::TemporaryFolder folder;
  support::write_file(folder / "a.json", "[ 1 , 2.5 ]\n");
  support::write_file(folder / "b.json", "{ \"k\" : null }");
  const auto outcome = run_zorvcrt({"json", folder / "a.json", "--compact", folder / "b.json"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, "[1,2.5]\n{\"k\":null}\n");
}

TEST(JsonCommand, ReportsASyntaxErrorWithTheFilesName) {
  const support::TemporaryFolder folder;
  support::write_file(folder / "bad.json", "[1,\n2");
  const auto outcome = run_zorvcrt({"json", folder / "bad.json"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(outcome.errors, "zorvcrt json: " + (folder / "bad.json") +
                                ": line #2.1: syntax error, unexpected $end, expecting A_END or COMMA\n");
  EXPECT_EQ(run_zorvcrt({"json"}, "x").errors,
            "zorvcrt json: standard input: line #1.2: syntax error, unexpected $undefined, expecting O_BEGIN "
            "or A_BEGIN\n");
}

TEST(JsonCommand, ReportsAFileThatCannotBeOpened) {
  const support::TemporaryFolder folder;
  const auto outcome = run_zorvcrt({"json", folder / "absent"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "zorvcrt json: " + (folder / "absent") + ": No such file or directory\n");
}

TEST(JsonCommand, RefusesTwoForms) {
  const auto outcome = run_zorvcrt({"json", "--compact", "--pretty"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_TRUE(outcome.errors.starts_with("zorvcrt json: --compact and --pretty exclude each other\nusage: "));
}

TEST(JsonCommand, FailsInOneLineForWhatOpensAndCannotBeRead) {
  const auto outcome = support::run_zorvcrt({"json", "/"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "zorvcrt json: /: Is a directory\n");
}

}  // namespace
