#include "exec.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "../../src/os/command_line.hpp"
#include "children.hpp"
#include "files.hpp"
#include "random_text.hpp"

namespace {

using children::ChildTest;
using children::Stream;
using Words = std::vector<std::string>;

constexpr int32_t kNotStarted = 1 * 256;

class ZfxExecTest : public ChildTest {};

// What a program started with the command line prints.
std::string output_of(const std::string &command) {
  const Stream output;
  uint32_t process = 0;
  EXPECT_EQ(ZfxExecPR(command.c_str(), 1, -1, output.get(), -1, &process), 0) << command;
  return output.text();
}

// The line cut up in place, as it is done in the child.
Words words_of(const std::string &line, bool *quote_is_open = nullptr) {
  std::string copy = line;
  zorvcrt::CommandWords words;
  zorvcrt::split_command_line(copy.data(), words);
  EXPECT_EQ(words.vector[words.count], nullptr);
  if (quote_is_open != nullptr) *quote_is_open = words.quote_is_open;
  return {words.vector.begin(), words.vector.begin() + words.count};
}

// The rule, restated on a string and a position.
Words plain_words_of(const std::string &line, bool &quote_is_open) {
  Words words;
  quote_is_open = false;
  std::size_t at = 0;
  while (words.size() < 128) {
    at = line.find_first_not_of(" \t", at);
    if (at == std::string::npos) break;
    char stop = ' ';
    if (line[at] == '"' || line[at] == '\'') stop = line[at++];
    const std::size_t end = line.find(stop, at);
    words.push_back(line.substr(at, end - at));
    if (end == std::string::npos) {
      quote_is_open = stop != ' ';
      break;
    }
    at = end + 1;
  }
  return words;
}

std::string line_of(int count) {
  std::string line;
  for (int i = 1; i <= count; ++i) {
    line += "w" + std::to_string(i) + " ";
  }
  return line;
}

TEST(CommandLine, PassesOverBlanksAndTabsInFrontOfWords) {
  EXPECT_EQ(words_of(" \t a  \t b \t"), (Words{"a", "b"}));
  EXPECT_EQ(words_of(""), Words{});
  EXPECT_EQ(words_of(" \t "), Words{});
}

TEST(CommandLine, RunsAQuotedWordToTheSameQuoteWithoutEscapes) {
  EXPECT_EQ(words_of("\"a 'b\" 'c \"d'"), (Words{"a 'b", "c \"d"}));
  EXPECT_EQ(words_of("\"a\\\" b"), (Words{"a\\", "b"}));
  EXPECT_EQ(words_of("\"\" ''"), (Words{"", ""}));
}

TEST(CommandLine, BeginsANewWordRightBehindAClosingQuote) {
  EXPECT_EQ(words_of("'a'b\"c\"'d'"), (Words{"a", "b\"c\"'d'"}));
  EXPECT_EQ(words_of("'a''b'"), (Words{"a", "b"}));
}

TEST(CommandLine, EndsAnUnquotedWordAtABlankOnly) {
  EXPECT_EQ(words_of("a\tb c"), (Words{"a\tb", "c"}));
  EXPECT_EQ(words_of("a\"b c\" d"), (Words{"a\"b", "c\"", "d"}));
}

TEST(CommandLine, TakesUpTo128WordsAndIgnoresTheRest) {
  for (const int count : {127, 128, 129, 300}) {
    const Words words = words_of(line_of(count));
    EXPECT_EQ(words.size(), std::min<std::size_t>(128, static_cast<std::size_t>(count)));
    EXPECT_EQ(words.back(), "w" + std::to_string(words.size()));
  }
}

TEST(CommandLine, SeesAMissingQuoteInTheLastWordThatIsTakenAndNotBehindIt) {
  bool open = false;
  words_of(line_of(127) + "'x", &open);
  EXPECT_TRUE(open);
  words_of(line_of(128) + "'x", &open);
  EXPECT_FALSE(open);
}

TEST(CommandLine, AgreesWithThePlainRuleOnRandomLines) {
  std::mt19937 random(20261121);
  const std::string alphabet = "ab  \t\"'\\";
  for (int round = 0; round < 100000; ++round) {
    const std::string line = support::random_text(random, random() % (round % 100 == 0 ? 600 : 16), alphabet);
    bool open = false;
    bool expected_open = false;
    const Words expected = plain_words_of(line, expected_open);
    ASSERT_EQ(words_of(line, &open), expected) << '"' << line << '"';
    ASSERT_EQ(open, expected_open) << '"' << line << '"';
  }
}

TEST_F(ZfxExecTest, HandsTheWordsOfTheCommandLineToTheProgram) {
  EXPECT_EQ(output_of("printf [%s] a 'b  c' \"d'e\" f\tg"), "[a][b  c][d'e][f\tg]");
  std::string expected;
  for (int i = 1; i <= 126; ++i) {
    expected += "[w" + std::to_string(i) + "]";
  }
  EXPECT_EQ(output_of("printf [%s] " + line_of(200)), expected);
}

TEST_F(ZfxExecTest, ReturnsTheRawStatusOfAChildThatIsWaitedFor) {
  EXPECT_EQ(ZfxExec("/bin/sh -c 'exit 3'", 1), 768);
  EXPECT_EQ(ZfxExec("true", 1), 0);
  EXPECT_EQ(ZfxExec("/bin/sh -c 'kill -9 $$'", -1), SIGKILL);
}

TEST_F(ZfxExecTest, ReturnsZeroAtOnceWithoutTheWaitFlag) {
  uint32_t process = 0;
  ASSERT_EQ(ZfxExecP("sleep 1000", 0, &process), 0);
  EXPECT_EQ(::waitpid(static_cast<pid_t>(process), nullptr, WNOHANG), 0);
  children::end(static_cast<pid_t>(process));
}

TEST_F(ZfxExecTest, ShowsAProgramThatCannotBeStartedAsExitStatusOne) {
  for (const char *command :
       {"nonexistent-program", "/", "''", "", " \t", static_cast<const char *>(nullptr)}) {
    EXPECT_EQ(ZfxExec(command, 1), kNotStarted);
  }
}

TEST_F(ZfxExecTest, LooksForTheProgramAlongThePath) {
  const support::TemporaryFolder folder;
  support::write_file(folder / "of-the-test", "#!/bin/sh\nexit 5\n");
  ASSERT_EQ(::chmod((folder / "of-the-test").c_str(), 0755), 0);
  EXPECT_EQ(ZfxExec("of-the-test", 1), kNotStarted);
  const support::EnvironmentVariable path("PATH", (folder.path() + ":/usr/bin:/bin").c_str());
  EXPECT_EQ(ZfxExec("of-the-test", 1), 5 * 256);
}

TEST_F(ZfxExecTest, LeavesTheCommandLineOfTheCallerAsItIs) {
  static const char constant[] = "printf '%s' a";
  EXPECT_EQ(ZfxExec(constant, 1), 0);
  char line[] = " true 'a' b ";
  EXPECT_EQ(ZfxExec(line, 1), 0);
  EXPECT_STREQ(line, " true 'a' b ");
}

TEST_F(ZfxExecTest, EndsTheChildBySegmentationFaultForAMissingQuote) {
  const support::TemporaryFolder folder;
  const std::string command = "touch " + (folder / "started") + " 'a b";
  EXPECT_EQ(ZfxExec(command.c_str(), 1) & 0x7f, SIGSEGV);
  EXPECT_NE(::access((folder / "started").c_str(), F_OK), 0) << "the program was started";
}

TEST_F(ZfxExecTest, EndsTheChildBySegmentationFaultAlsoInAHostThatCatchesOrBlocksIt) {
  sigset_t blocked;
  ::sigemptyset(&blocked);
  ::sigaddset(&blocked, SIGSEGV);
  ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, &blocked, nullptr), 0);
  for (const auto handler : {static_cast<sighandler_t>([](int) { ::_exit(99); }), SIG_IGN}) {
    ASSERT_NE(std::signal(SIGSEGV, handler), SIG_ERR);
    EXPECT_EQ(ZfxExec("true \"", 1) & 0x7f, SIGSEGV);
  }
  ASSERT_NE(std::signal(SIGSEGV, SIG_DFL), SIG_ERR);
  ASSERT_EQ(::pthread_sigmask(SIG_UNBLOCK, &blocked, nullptr), 0);
}

TEST_F(ZfxExecTest, StoresTheIdOfTheChild) {
  for (const int32_t wait : {0, 1}) {
    const Stream output;
    uint32_t process = 0;
    EXPECT_EQ(ZfxExecPR("/bin/sh -c 'echo $$'", wait, -1, output.get(), -1, &process), 0);
    if (wait == 0) ::waitpid(static_cast<pid_t>(process), nullptr, 0);
    EXPECT_EQ(output.text(), std::to_string(process) + "\n");
  }
  EXPECT_EQ(ZfxExecP("true", 1, nullptr), 0);
}

TEST_F(ZfxExecTest, KeepsUnusedArgumentsInTheirPlaces) {
  uint32_t process = 0;
  EXPECT_EQ(ZfxExecWP("/bin/sh -c 'exit 4'", 1, 77, &process), 4 * 256);
  EXPECT_GT(process, 0U);
  const Stream output;
  EXPECT_EQ(ZfxExecImpl("echo text", 1, &process, 77, -1, output.get(), -1), 0);
  EXPECT_EQ(output.text(), "text\n");
}

TEST_F(ZfxExecTest, RedirectsEachStandardHandle) {
  const Stream input("from the file\n");
  const Stream output;
  const Stream errors;
  uint32_t process = 0;
  EXPECT_EQ(
      ZfxExecPR("/bin/sh -c 'cat; echo complaint >&2'", 1, input.get(), output.get(), errors.get(), &process),
      0);
  EXPECT_EQ(output.text(), "from the file\n");
  EXPECT_EQ(errors.text(), "complaint\n");
}

TEST_F(ZfxExecTest, RedirectsOutputAndErrorsToOneFileAlsoThroughTheStandardHandles) {
  const Stream output;
  uint32_t process = 0;
  EXPECT_EQ(ZfxExecPR("/bin/sh -c 'echo out; echo err >&2'", 1, -1, output.get(), 1, &process), 0);
  EXPECT_EQ(output.text(), "out\nerr\n");
}

TEST_F(ZfxExecTest, KeepsAStandardHandleThatIsGivenAsItself) {
  support::CapturedDescriptor output(1);
  ASSERT_EQ(::fcntl(1, F_SETFD, FD_CLOEXEC), 0);
  uint32_t process = 0;
  EXPECT_EQ(ZfxExecPR("echo text", 1, 0, 1, 2, &process), 0);
  EXPECT_EQ(::fcntl(1, F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(output.text(), "text\n");
}

TEST_F(ZfxExecTest, TakesTheNumberOfTheStandardHandleEvenIfALowerOneIsClosed) {
  const Stream output;
  uint32_t process = 0;
  const int saved = ::fcntl(0, F_DUPFD_CLOEXEC, 3);
  ::close(0);
  EXPECT_EQ(ZfxExecPR("echo text", 1, -1, output.get(), -1, &process), 0);
  ::dup2(saved, 0);
  ::close(saved);
  EXPECT_EQ(output.text(), "text\n");
}

TEST_F(ZfxExecTest, LeavesTheStandardHandleClosedForADescriptorThatIsNotOpen) {
  uint32_t process = 0;
  EXPECT_EQ(ZfxExecPR("/bin/sh -c '[ -e /proc/self/fd/1 ]'", 1, -1, 999, -1, &process), 256);
}

TEST_F(ZfxExecTest, KeepsTheGivenDescriptorsOpenOnBothSides) {
  int pipe[2];
  ASSERT_EQ(::pipe(pipe), 0);
  const std::string command = "/bin/sh -c '[ -e /proc/self/fd/" + std::to_string(pipe[1]) + " ]'";
  uint32_t process = 0;
  EXPECT_EQ(ZfxExecPR(command.c_str(), 1, -1, pipe[1], -1, &process), 0);
  EXPECT_NE(::fcntl(pipe[1], F_GETFD), -1);
  ::close(pipe[0]);
  ::close(pipe[1]);
}

TEST_F(ZfxExecTest, ReportsAFailedForkAndStoresMinusOneAsTheId) {
  fork_fails = true;
  uint32_t process = 1;
  EXPECT_EQ(ZfxExecP("true", 1, &process), EAGAIN);
  EXPECT_EQ(process, UINT32_MAX);
  EXPECT_EQ(ZfxExec("true", 0), EAGAIN);
}

TEST_F(ZfxExecTest, GoesOnWaitingWhenASignalInterrupts) {
  const children::Interruptions interruptions;
  EXPECT_EQ(ZfxExec("/bin/sh -c 'sleep 0.05; exit 6'", 1), 6 * 256);
}

TEST_F(ZfxExecTest, ReturnsMinusOneWhenTheSystemCollectsChildrenItself) {
  ASSERT_NE(std::signal(SIGCHLD, SIG_IGN), SIG_ERR);
  EXPECT_EQ(ZfxExec("true", 1), -1);
  ASSERT_NE(std::signal(SIGCHLD, SIG_DFL), SIG_ERR);
}

int written_at_exit[2] = {-1, -1};

TEST_F(ZfxExecTest, LeavesAChildThatCannotStartItsProgramThroughExit) {
  ASSERT_EQ(::pipe2(written_at_exit, O_CLOEXEC | O_NONBLOCK), 0);
  std::atexit([] {
    if (::write(written_at_exit[1], "x", 1) != 1) ::_exit(99);
  });  // runs in this process too, at its end, where nobody minds
  EXPECT_EQ(ZfxExec("nonexistent-program", 1), kNotStarted);
  char byte = 0;
  EXPECT_EQ(::read(written_at_exit[0], &byte, 1), 1) << "the exit handler did not run";
  EXPECT_EQ(ZfxExec("true", 1), 0);
  EXPECT_EQ(ZfxExec("true '", 1) & 0x7f, SIGSEGV);
  EXPECT_EQ(::read(written_at_exit[0], &byte, 1), -1) << "the exit handler ran in a child that did not exit";
}

TEST_F(ZfxExecTest, KeepsAwayFromTheHeapBetweenForkAndExec) {
  if (!kHeapCanBeClosed) GTEST_SKIP() << "the heap belongs to a sanitizer";
  heap_is_closed_to_children = true;
  const Stream stream;
  uint32_t process = 0;
  EXPECT_EQ(ZfxExecPR("true 'quoted word' plain", 1, stream.get(), stream.get(), 2, &process), 0);
  EXPECT_EQ(ZfxExec("true 'open", 1) & 0x7f, SIGSEGV);
}

TEST_F(ZfxExecTest, StartsProgramsFromManyThreadsAtOnce) {
  std::vector<std::thread> threads;
  std::atomic<int> right = 0;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&right, i] {
      const std::string command = "/bin/sh -c 'exit " + std::to_string(i) + "'";
      for (int round = 0; round < 25; ++round) {
        right += ZfxExec(command.c_str(), 1) == i * 256 ? 1 : 0;
      }
    });
  }
  for (std::thread &thread : threads) {
    thread.join();
  }
  EXPECT_EQ(right, 100);
}

TEST_F(ZfxExecTest, LeaksNoDescriptor) {
  const int before = support::open_descriptors();
  const Stream output;
  for (const char *command : {"true", "nonexistent-program", "'", "sh -c 'kill $$'"}) {
    uint32_t process = 0;
    ZfxExecPR(command, 1, -1, output.get(), output.get(), &process);
  }
  EXPECT_EQ(support::open_descriptors(), before + 1);
}

}  // namespace
