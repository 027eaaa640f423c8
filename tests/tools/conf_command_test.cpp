#include <gtest/gtest.h>

#include <string>
#include <utility>
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

TEST_F(ConfCommand, PrintsJson) {
  EXPECT_EQ(run({file, "main", "x", "--output", "json"}).output, "{\"key\":\"x\",\"value\":\"1\"}\n");
  const std::string section =
      "{\"section\":\"Main\",\"entries\":[{\"key\":\"x\",\"value\":\"1\"},"
      "{\"key\":\"x\",\"value\":\"2\"},{\"key\":\"y\",\"value\":\"\"}]}";
  EXPECT_EQ(run({file, "main", "--output", "json"}).output, section + "\n");
  EXPECT_EQ(run({file, "--output", "json"}).output,
            "[{\"section\":\"\",\"entries\":[{\"key\":\"ConfigDir\",\"value\":\"d\"}]}," + section + "]\n");
}

TEST_F(ConfCommand, ReadsStandardInputForADash) {
  const auto outcome = support::run_zorvcrt({"conf", "-", "s", "k"}, "[S]\nk=v\n");
  EXPECT_EQ(outcome.output, "v\n");
  EXPECT_EQ(outcome.errors, "");
  EXPECT_EQ(support::run_zorvcrt({"conf", "-", "--dir"}, "").status, 2);
  const auto closed = support::run({"sh", "-c", ZORVCRT_BINARY_DIR "/tools/zorvcrt conf - <&-"});
  EXPECT_EQ(closed.status, 1);
  EXPECT_EQ(closed.errors, "zorvcrt conf: standard input: Bad file descriptor\n");
}

TEST_F(ConfCommand, MakesJsonOfAnyBytes) {
  // A pair of bytes for each: the text in the file, and what stands for it in JSON.
  const std::vector<std::pair<std::string, std::string>> pairs = {
      {"\"quoted\"", "\\\"quoted\\\""},
      {"back\\slash", "back\\\\slash"},
      {"tab\there", "tab\\u0009here"},
      {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
      {"\xED\x9F\xBF\xF4\x8F\xBF\xBF", "\xED\x9F\xBF\xF4\x8F\xBF\xBF"},
      {"latin \xE9t\xE9", "latin \xEF\xBF\xBDt\xEF\xBF\xBD"},
      {"\xC0\xAF|", "\xEF\xBF\xBD\xEF\xBF\xBD|"},                  // an overlong form
      {"\xED\xA0\x80|", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD|"},  // a surrogate
      {"\xF4\x90\x80\x80|", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD|"},
      {"\xE2\x82|", "\xEF\xBF\xBD\xEF\xBF\xBD|"}};
  for (const auto &[text, json] : pairs) {
    const auto outcome = support::run_zorvcrt({"conf", "-", "", "k", "--output=json"}, "k=" + text + "\n");
    EXPECT_EQ(outcome.output, "{\"key\":\"k\",\"value\":\"" + json + "\"}\n");
  }
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
