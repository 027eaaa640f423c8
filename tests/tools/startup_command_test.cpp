#include <gtest/gtest.h>

#include <filesystem>

#include "files.hpp"
#include "run.hpp"

namespace {

namespace fs = std::filesystem;

// The sample installation, started up once.
class StartupCommand : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::copy(ZORVCRT_SOURCE_DIR "/examples/installation", folder_.path(), fs::copy_options::recursive);
    outcome_ = support::run_zorvcrt(
        {"startup"}, "", {{"QUOR_SAMPLE", folder_.path()}, {"__KERNEL_DEVELOPER", folder_ / "quor.conf"}});
    ASSERT_EQ(outcome_.status, 0) << outcome_.errors;
  }

  void expect_shown(const std::string &text) {
    EXPECT_NE(outcome_.output.find(text), std::string::npos) << text << " is missing in\n" << outcome_.output;
  }

  support::TemporaryFolder folder_;
  support::Outcome outcome_;
};

TEST_F(StartupCommand, ShowsWhereTheSettingsComeFrom) {
  expect_shown("__KERNEL_DEVELOPER names the file: " + folder_.path() + "/quor.conf (there)\n");
}

TEST_F(StartupCommand, PrintsAHundredSettingsOrMoreWithTheExtensionFolderApplied) {
  std::size_t settings = 0;
  for (std::size_t at = 0; (at = outcome_.output.find("\n\t", at)) != std::string::npos; ++at) {
    ++settings;
  }
  EXPECT_GE(settings, 100U);
  expect_shown("\tSTATISTICS_FILE\t" + folder_.path() + "/data/db/statistics.dat\n");
  expect_shown("\tLISTEN_PORT\t7900\n");
  expect_shown("\tTEAM_NAME\tHarbour operations\n");
  expect_shown("\tSITE_NOTES\tunknown headers change nothing\n");
  EXPECT_EQ(outcome_.output.find("\tFEATURE_LEGACY_WIRE\t"), std::string::npos);
  EXPECT_EQ(outcome_.output.find("\tFEATURE_PREVIEW\t"), std::string::npos);
  EXPECT_EQ(outcome_.output.find("\tIGNORED\t"), std::string::npos);
}

TEST_F(StartupCommand, AnswersQueriesFromTheEnvironmentFirst) {
  expect_shown(
      "AUDIT_KEEP_DAYS as loaded: 800\n  after setenv: all levels: from the environment; privileged: 800\n");
}

TEST_F(StartupCommand, LogsAtAllLevelsIntoTheFileThatTheSettingsName) {
  const fs::directory_iterator files(folder_ / "log");
  ASSERT_NE(files, fs::directory_iterator());
  const std::string path = files->path();
  EXPECT_TRUE(path.starts_with(folder_ / "log/startup_")) << path;
  expect_shown("name:     " + path + "\n");
  const std::string lines = support::read_file(path);
  for (const std::string line :
       {"  FATAL] log_at_all_levels@startup_command.cpp:", "  ERROR] ", "WARNING] ", "   INFO] ", "  DEBUG] ",
        ": #2 the store cannot be opened\n", ": the settings are loaded\n"}) {
    EXPECT_NE(lines.find(line), std::string::npos) << line;
    EXPECT_NE(outcome_.errors.find(line), std::string::npos) << line;
  }
  expect_shown(lines);
}

TEST_F(StartupCommand, HandsTheCallbackOnlyTheLinesOfItsLevel) {
  std::size_t lines = 0;
  for (std::size_t at = 0; (at = outcome_.output.find("callback got: [", at)) != std::string::npos; ++at) {
    ++lines;
  }
  EXPECT_EQ(lines, 3U);
}

}  // namespace
