#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "files.hpp"
#include "run.hpp"

namespace {

constexpr char kCommand[] = ZORVCRT_BINARY_DIR "/tools/zorvcrt";

// What a shell's command line prints on a terminal.
std::string seen_on_terminal(const std::string &command, const support::Variables &variables = {}) {
  int terminal = -1;
  const pid_t child = ::forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    ::unsetenv("NO_COLOR");
    ::setenv("TERM", "xterm", 1);
    ::setenv("zorvcrt", kCommand, 1);
    for (const auto &[name, value] : variables) {
      ::setenv(name.c_str(), value.c_str(), 1);
    }
    ::execlp("sh", "sh", "-c", command.c_str(), nullptr);
    ::_exit(127);
  }
  std::string seen;
  char block[4096];
  for (ssize_t count = 0; (count = ::read(terminal, block, sizeof block)) > 0;) {
    seen.append(block, static_cast<std::size_t>(count));
  }
  ::waitpid(child, nullptr, 0);
  ::close(terminal);
  return seen;
}

TEST(Terminal, SeesColours) {
  EXPECT_EQ(seen_on_terminal("$zorvcrt json /nonexistent"),
            "\033[31mzorvcrt json:\033[0m /nonexistent: No such file or directory\r\n");
  EXPECT_NE(seen_on_terminal("$zorvcrt --help").find("\033[1mcommands:\033[0m"), std::string::npos);
}

TEST(Terminal, SeesNoColoursWhereTheyAreRefused) {
  const std::string plain = "zorvcrt json: /nonexistent: No such file or directory\r\n";
  EXPECT_EQ(seen_on_terminal("$zorvcrt json /nonexistent", {{"NO_COLOR", "1"}}), plain);
  EXPECT_EQ(seen_on_terminal("$zorvcrt json /nonexistent", {{"TERM", "dumb"}}), plain);
  EXPECT_NE(seen_on_terminal("$zorvcrt json /nonexistent", {{"NO_COLOR", ""}}), plain);
}

TEST(Terminal, AloneSeesColours) {
  EXPECT_EQ(seen_on_terminal("$zorvcrt json /nonexistent 2>&1 | cat"),
            "zorvcrt json: /nonexistent: No such file or directory\r\n");
  EXPECT_EQ(seen_on_terminal("$zorvcrt --help | cat").find('\033'), std::string::npos);
}

TEST(Terminal, SeesSettingsInColumns) {
  const support::TemporaryFolder folder;
  support::write_file(folder / "quor.conf", "[PRIVILEGED]\nONE=1\nLONGER=2\n");
  const std::string seen =
      seen_on_terminal("$zorvcrt settings --level privileged",
                       {{"__KERNEL_DEVELOPER", folder / "quor.conf"}, {"NO_COLOR", "1"}});
  EXPECT_EQ(seen, "privileged\r\n  ONE     1\r\n  LONGER  2\r\n");
}

// The input takes longer than a second, so that there is news, and the news is wiped away at the end.
constexpr char kSlowInput[] = "{ printf '[1'; sleep 1.1; printf ',2]'; } | ";

TEST(Terminal, SeesHowFarLongWorkIs) {
  const std::string seen = seen_on_terminal(std::string(kSlowInput) + "$zorvcrt json --compact");
  EXPECT_EQ(seen, "\rstandard input: 0.0 MB read\r" + std::string(27, ' ') + "\r[1,2]\r\n");
}

TEST(Terminal, SeesNoProgressBetweenTheOutput) {
  const std::string seen = seen_on_terminal(std::string(kSlowInput).append("$zorvcrt base64"));
  EXPECT_EQ(seen, "WzEsMl0=\r\n");
}

TEST(Terminal, SeesNoProgressBetweenLinesOnStandardError) {
  const std::string seen = seen_on_terminal(std::string(kSlowInput) + "$zorvcrt log - info -");
  EXPECT_TRUE(seen.ends_with("INFO] [1,2]\r\n")) << seen;
  EXPECT_EQ(seen.find("read"), std::string::npos) << seen;
}

TEST(Progress, IsNotShownElsewhere) {
  const auto outcome = support::run({"sh", "-c", std::string(kSlowInput) + kCommand + " base64"});
  EXPECT_EQ(outcome.output, "WzEsMl0=\n");
  EXPECT_EQ(outcome.errors, "");
}

}  // namespace
