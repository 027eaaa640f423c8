#include <gtest/gtest.h>

#include "files.hpp"
#include "run.hpp"

namespace {

class SettingsCommand : public ::testing::Test {
 protected:
  support::Outcome settings(std::vector<std::string> words) {
    words.insert(words.begin(), "settings");
    return support::run_zorvcrt(words, "",
                                {{"__KERNEL_DEVELOPER", folder_ / "quor.conf"}, {"SHADED", "shade"}});
  }

  void SetUp() override {
    support::write_file(folder_ / "quor.conf",
                        "[PRIVILEGED]\nONE=1\nBOTH=high\n[NONPRIVILEGED]\nBOTH=low\nSHADED=light\n");
  }

  support::TemporaryFolder folder_;
};

TEST_F(SettingsCommand, PrintsTheValueOfANameAsAHostGetsIt) {
  EXPECT_EQ(settings({"ONE"}).output, "1\n");
  EXPECT_EQ(settings({"SHADED"}).output, "shade\n");
}

TEST_F(SettingsCommand, AsksOnlyTheLevelThatIsNamed) {
  EXPECT_EQ(settings({"BOTH", "--level", "privileged"}).output, "high\n");
  EXPECT_EQ(settings({"--level=nonprivileged", "BOTH"}).output, "low\n");
  EXPECT_EQ(settings({"ONE", "--level", "group"}).status, 1);
}

TEST_F(SettingsCommand, PrintsJson) {
  EXPECT_EQ(settings({"ONE", "--output", "json"}).output, "{\"name\":\"ONE\",\"value\":\"1\"}\n");
  EXPECT_EQ(settings({"--level", "privileged", "--output", "json"}).output,
            "[{\"level\":\"privileged\",\"name\":\"ONE\",\"value\":\"1\"},"
            "{\"level\":\"privileged\",\"name\":\"BOTH\",\"value\":\"high\"}]\n");
  EXPECT_EQ(settings({"--level", "group", "--output", "json"}).output, "[]\n");
}

TEST_F(SettingsCommand, FailsInOneLineForANameThatIsNotSet) {
  const auto outcome = settings({"NO_SUCH_NAME"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(outcome.errors, "zorvcrt settings: NO_SUCH_NAME is not set\n");
}

TEST_F(SettingsCommand, ListsLevelNameAndValueWithTabsIntoAPipe) {
  const auto outcome = settings({"--level", "privileged"});
  EXPECT_EQ(outcome.output, "privileged\tONE\t1\nprivileged\tBOTH\thigh\n");
  const auto all = settings({});
  EXPECT_TRUE(all.output.starts_with(outcome.output)) << all.output;
  EXPECT_NE(all.output.find("nonprivileged\tSHADED\tlight\n"), std::string::npos) << all.output;
  EXPECT_NE(all.output.find("nonprivileged\tQUOR_BLOCK_SIZE\t2048\n"), std::string::npos) << all.output;
}

TEST_F(SettingsCommand, RefusesAnUnknownLevelAsMisuse) {
  const auto outcome = settings({"--level", "secret"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_NE(outcome.errors.find("option --level takes privileged|group|nonprivileged|all, not 'secret'"),
            std::string::npos);
}

TEST_F(SettingsCommand, FailsInOneLineWhenTheSettingsCannotBeLoaded) {
  const auto outcome = support::run_zorvcrt({"settings"}, "", {{"__KERNEL_DEVELOPER", folder_ / "absent"}});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "zorvcrt settings: the settings cannot be loaded: No such file or directory\n");
}

}  // namespace
