#include <gtest/gtest.h>

#include <filesystem>

#include "private_root.hpp"
#include "run.hpp"

namespace {

class DataareaCommand : public support::FixedPathsTest {};

TEST_F(DataareaCommand, TellsThatTheDataAreaIsNotConfigured) {
  const auto outcome = support::run_zorvcrt({"dataarea"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "zorvcrt dataarea: The ZORV data area is not configured\n");
}

TEST_F(DataareaCommand, TellsThatTheDataAreaIsConfigured) {
  std::filesystem::create_directories("/usr/local/zorv/var");
  EXPECT_EQ(support::run_zorvcrt({"dataarea"}).output, "The ZORV data area is configured\n");
}

TEST_F(DataareaCommand, PrintsTheFolderWhenEveryCheckPasses) {
  std::filesystem::create_directories("/usr/local/zorv/var/conf/sys");
  std::filesystem::create_directories("/usr/local/zorv/var/log");
  EXPECT_EQ(support::run_zorvcrt({"dataarea", "--check", "conf,log"}).output, "/usr/local/zorv/var\n");
  const auto outcome = support::run_zorvcrt({"dataarea", "--check", "conf,log,db"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(
      outcome.errors,
      "zorvcrt dataarea: The db directory in the ZORV data area does not exist: /usr/local/zorv/var/db\n");
}

TEST_F(DataareaCommand, PrintsJson) {
  std::filesystem::create_directories("/usr/local/zorv/var/log");
  EXPECT_EQ(support::run_zorvcrt({"dataarea", "--output", "json"}).output,
            "{\"configured\":true,\"checked\":[]}\n");
  EXPECT_EQ(support::run_zorvcrt({"dataarea", "--output", "json", "--check", "log"}).output,
            "{\"configured\":true,\"folder\":\"/usr/local/zorv/var\",\"checked\":[\"log\"]}\n");
}

TEST(DataareaCommandWords, RefusesAnUnknownOrMissingCheckAsMisuse) {
  EXPECT_EQ(support::run_zorvcrt({"dataarea", "--check", "conf,home"}).status, 2);
  EXPECT_EQ(support::run_zorvcrt({"dataarea", "--check", ""}).status, 2);
  EXPECT_EQ(support::run_zorvcrt({"dataarea", "--check"}).status, 2);
  EXPECT_EQ(support::run_zorvcrt({"dataarea", "more"}).status, 2);
}

}  // namespace
