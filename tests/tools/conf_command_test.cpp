#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "files.hpp"
#include "run.hpp"

namespace {

class ConfCommand : public ::testing::Test {
 protected:
  void SetUp() override {
    support::write_file(file, "ConfigDir = d\n[Main]\n# comment\nx=1\nx=2\ny\n");
    support::write_file(folder / "d/one.conf", "[main]\nX=9\nz=1\n[New]\na=b\n");
  }

  support::Outcome run(std::vector<std::string> words) {
    words.insert(words.begin(), "conf");
    return support::run_zorvcrt(words);
  }

  support::TemporaryFolder folder;
  std::string file = folder / "main.conf";
};

TEST_F(ConfCommand, PrintsTheWholeFile) {
  EXPECT_EQ(run({file}).output, "ConfigDir = d\n[Main]\nx = 1\nx = 2\ny = \n");
}

TEST_F(ConfCommand, PrintsASectionOrAValue) {
  EXPECT_EQ(run({file, "MAIN"}).output, "x = 1\nx = 2\ny = \n");
  EXPECT_EQ(run({file, "main", "X"}).output, "1\n");
  EXPECT_EQ(run({file, "", "configdir"}).output, "d\n");
}

TEST_F(ConfCommand, MergesTheFolderOnRequest) {
  EXPECT_EQ(run({"--dir", file}).output, "ConfigDir = d\n[Main]\nx = 9\nx = 2\ny = \n[New]\na = b\n");
}

TEST_F(ConfCommand, ReportsWhatIsNotThere) {
  for (const std::vector<std::string> &words :
       {std::vector<std::string>{folder / "none"}, {file, "none"}, {file, "main", "none"}}) {
    const support::Outcome outcome = run(words);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_NE(outcome.errors.find("none"), std::string::npos) << outcome.errors;
  }
  support::write_file(file, "ConfigDir = missing\n");
  EXPECT_EQ(run({file, "--dir"}).status, 1);
  EXPECT_EQ(run({}).status, 2);
}

TEST(ConfCommandFolder, FailsInOneLineInThePlaceOfAFile) {
  const auto outcome = support::run_zorvcrt({"conf", "/"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "zorvcrt conf: /: Is a directory\n");
}

TEST(ConfCommandFolder, IsFoundBesideAFileThatIsNamedWithoutAFolder) {
  const support::TemporaryFolder folder;
  support::write_file(folder / "main.conf", "ConfigDir = conf.d\n");
  support::write_file(folder / "conf.d/more.conf", "[Added]\nkey = value\n");
  const support::CurrentFolder there(folder.path());
  EXPECT_EQ(support::run_zorvcrt({"conf", "main.conf", "Added", "key", "--dir"}).output, "value\n");
}

}  // namespace
