#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "files.hpp"
#include "help_texts.hpp"

namespace {

using Texts = std::set<std::string>;

// What bash offers for the last word behind "zorvcrt".
Texts offered(std::vector<std::string> words, const std::string &folder = "/") {
  const char *script = R"(
    set -u
    . "$1"; folder=$2; shift 2
    cd "$folder" && COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) && _zorvcrt && printf '%s\n' "${COMPREPLY[@]}")";
  words.insert(words.begin(),
               {"bash", "-c", script, "bash", ZORVCRT_SOURCE_DIR "/tools/completion/zorvcrt.bash", folder,
                ZORVCRT_BINARY_DIR "/tools/zorvcrt"});
  const auto outcome = support::run(words);
  EXPECT_EQ(outcome.errors, "");
  std::istringstream lines(outcome.output);
  Texts texts;
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty()) texts.insert(line);
  }
  return texts;
}

TEST(Completion, IsTiedToTheCommand) {
  const auto outcome = support::run(
      {"bash", "-c", ". " ZORVCRT_SOURCE_DIR "/tools/completion/zorvcrt.bash; complete -p zorvcrt"});
  EXPECT_EQ(outcome.output, "complete -F _zorvcrt zorvcrt\n");
}

TEST(Completion, OffersEveryCommand) {
  Texts expected = help_texts::commands();
  expected.insert({"help", "--help", "--version"});
  EXPECT_EQ(offered({""}), expected);
  EXPECT_EQ(offered({"set"}), Texts{"settings"});
  EXPECT_EQ(offered({"help", "ver"}), Texts{"version"});
}

TEST(Completion, OffersTheOptionsOfEveryHelpText) {
  for (const std::string &command : help_texts::commands()) {
    Texts expected = help_texts::options(command);
    expected.insert({"--help", "-h"});
    EXPECT_EQ(offered({command, "-"}), expected) << command;
  }
}

TEST(Completion, OffersTheChoicesOfAnOption) {
  EXPECT_EQ(offered({"settings", "--level", ""}), (Texts{"privileged", "group", "nonprivileged", "all"}));
  EXPECT_EQ(offered({"settings", "--level", "=", "g"}), Texts{"group"});
  EXPECT_EQ(offered({"settings", "--output", "="}), (Texts{"text", "json"}));
  EXPECT_EQ(offered({"date", "--mode", ""}), (Texts{"0", "1", "3"}));
}

TEST(Completion, LeavesAFreeValueToTheUser) {
  EXPECT_EQ(offered({"exec", "--timeout", ""}), Texts{});
}

TEST(Completion, KnowsTheWordsThatAnOperandMayBe) {
  EXPECT_EQ(offered({"date", "--add", "1", "mo"}), Texts{"month"});
  EXPECT_EQ(offered({"log", "x.log", "w"}), Texts{"warning"});
  EXPECT_EQ(offered({"log", "--error", "2", "x.log", "w"}), Texts{"warning"});
}

TEST(Completion, OffersFilesOtherwise) {
  const support::TemporaryFolder folder;
  support::write_file(folder / "alpha.json", "");
  support::write_file(folder / "beta file.json", "");
  EXPECT_EQ(offered({"json", ""}, folder.path()), (Texts{"alpha.json", "beta file.json"}));
  EXPECT_EQ(offered({"log", "al"}, folder.path()), Texts{"alpha.json"});
  EXPECT_EQ(offered({"json", "a/b[*", "al"}, folder.path()), Texts{"alpha.json"});
}

}  // namespace
