#include "sockredir.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "children.hpp"
#include "files.hpp"

namespace {

using children::Stream;

// A writable argument vector.
class Arguments {
 public:
  Arguments(std::initializer_list<const char *> words) {
    for (const char *word : words) {
      texts_.emplace_back(word);
    }
    for (std::string &text : texts_) {
      vector_.push_back(text.data());
    }
    vector_.push_back(nullptr);
  }
  [[nodiscard]] int32_t count() const { return static_cast<int32_t>(texts_.size()); }
  [[nodiscard]] char *const *vector() const { return vector_.data(); }

 private:
  std::vector<std::string> texts_;
  std::vector<char *> vector_;
};

class ZfxRedirToChildProcessTest : public children::ChildTest {
 protected:
  // Runs a shell script with the descriptors and tells its exit status.
  int run(const char *script, int32_t in, int32_t out, int32_t close_handle = 0) {
    return run_program("/bin/sh", {"sh", "-c", script}, in, out, nullptr, close_handle);
  }
  int run_program(const char *path, const Arguments &arguments, int32_t in, int32_t out,
                  const char *name = nullptr, int32_t close_handle = 0) {
    uint32_t process = 0;
    EXPECT_EQ(ZfxRedirToChildProcess(77, 88, path, arguments.count(), arguments.vector(), name, close_handle,
                                     in, out, &process),
              0);
    int status = -1;
    EXPECT_EQ(::waitpid(static_cast<pid_t>(process), &status, 0), static_cast<pid_t>(process));
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
};

TEST_F(ZfxRedirToChildProcessTest, StartsTheProgramOnTheGivenInputAndOutput) {
  const Stream input("from the connection\n");
  const Stream output;
  EXPECT_EQ(run("cat; exit 7", input.get(), output.get()), 7);
  EXPECT_EQ(output.text(), "from the connection\n");
}

TEST_F(ZfxRedirToChildProcessTest, InheritsTheStandardOutputForZero) {
  const Stream input("text");
  support::CapturedDescriptor output(1);
  EXPECT_EQ(run("cat", input.get(), 0), 0);
  EXPECT_EQ(output.text(), "text");
}

TEST_F(ZfxRedirToChildProcessTest, ClosesTheGivenDescriptorsInTheChildOnly) {
  int first[2];
  int second[2];
  int listener[2];
  ASSERT_EQ(::pipe(first), 0);
  ASSERT_EQ(::pipe(second), 0);
  ASSERT_EQ(::pipe(listener), 0);
  std::string script;
  for (const int descriptor : {first[0], second[1], listener[0]}) {
    script += "[ -e /proc/self/fd/" + std::to_string(descriptor) + " ] && exit 1; ";
  }
  script += "[ -e /proc/self/fd/" + std::to_string(listener[1]) + " ] && exit 2";
  const int before = support::open_descriptors();
  EXPECT_EQ(run(script.c_str(), first[0], second[1], listener[0]), 2);  // what is not named stays open
  EXPECT_EQ(support::open_descriptors(), before);
  for (const int descriptor : {first[0], first[1], second[0], second[1], listener[0], listener[1]}) {
    EXPECT_EQ(::close(descriptor), 0);
  }
}

TEST_F(ZfxRedirToChildProcessTest, TakesADuplicateToUseOneConnectionBothWays) {
  const Stream connection("ping\n");
  const int duplicate = ::fcntl(connection.get(), F_DUPFD_CLOEXEC, 0);
  EXPECT_EQ(run("read word; echo got $word", connection.get(), duplicate), 0);
  EXPECT_EQ(connection.text(), "ping\ngot ping\n");
  ::close(duplicate);
  // The descriptor itself is gone from the child by the time the output would take it.
  const Stream other;
  EXPECT_EQ(run("[ -e /proc/self/fd/1 ]", other.get(), other.get()), 1);
}

TEST_F(ZfxRedirToChildProcessTest, LeavesAStandardHandleClosedForADescriptorThatIsNotOpenOrAlreadyIt) {
  for (const int32_t in : {-1, 0, 999}) {
    EXPECT_EQ(run("[ -e /proc/self/fd/0 ]", in, 0), 1);
  }
  const Stream input;
  for (const int32_t out : {-1, 1, 999}) {
    EXPECT_EQ(run("[ -e /proc/self/fd/1 ]", input.get(), out), 1);
  }
}

TEST_F(ZfxRedirToChildProcessTest, DoesNotSearchThePathAndShowsAFailureAsExitStatus255) {
  const Stream input;
  const Stream output;
  EXPECT_EQ(run_program("true", {"true"}, input.get(), output.get()), 255);
  EXPECT_EQ(run_program("/nonexistent", {"x"}, input.get(), output.get()), 255);
  EXPECT_EQ(run_program(nullptr, {"x"}, input.get(), output.get()), 255);
}

int written_at_exit[2] = {-1, -1};

TEST_F(ZfxRedirToChildProcessTest, LeavesAChildThatCannotStartItsProgramThroughExit) {
  ASSERT_EQ(::pipe2(written_at_exit, O_CLOEXEC | O_NONBLOCK), 0);
  std::atexit([] {
    if (::write(written_at_exit[1], "x", 1) != 1) ::_exit(99);
  });
  const Stream input;
  EXPECT_EQ(run_program("/nonexistent", {"x"}, input.get(), 0), 255);
  char byte = 0;
  EXPECT_EQ(::read(written_at_exit[0], &byte, 1), 1) << "the exit handler did not run";
}

TEST_F(ZfxRedirToChildProcessTest, WritesTheProcessNameOverTheArgumentsOfTheChildOnly) {
  const Stream input;
  const Stream output;
  const Arguments arguments = {"a-long-first-argument", "-c", "printf '%s' $0", "-"};
  EXPECT_EQ(run_program("/bin/sh", arguments, input.get(), output.get(), "short"), 0);
  EXPECT_EQ(output.text(), "-");
  const Stream listing;
  const Arguments listed = {"a-long-first-argument", "/proc/self/cmdline"};
  EXPECT_EQ(run_program("/bin/cat", listed, input.get(), listing.get(), "short"), 0);
  EXPECT_EQ(listing.text(), std::string("short\0/proc/self/cmdline", 25));
  EXPECT_STREQ(listed.vector()[0], "a-long-first-argument");
}

TEST_F(ZfxRedirToChildProcessTest, KeepsAwayFromTheHeapBetweenForkAndExec) {
  if (!kHeapCanBeClosed) GTEST_SKIP() << "the heap belongs to a sanitizer";
  heap_is_closed_to_children = true;
  const Stream input;
  EXPECT_EQ(run_program("/bin/true", {"true", "x"}, input.get(), 0, "a name that is longer"), 0);
}

TEST_F(ZfxRedirToChildProcessTest, ReportsAFailedForkAndStoresMinusOneAsTheId) {
  fork_fails = true;
  uint32_t process = 1;
  const Arguments arguments = {"true"};
  EXPECT_EQ(ZfxRedirToChildProcess(0, 0, "/bin/true", 1, arguments.vector(), nullptr, 0, 0, 0, &process),
            EAGAIN);
  EXPECT_EQ(process, UINT32_MAX);
}

TEST_F(ZfxRedirToChildProcessTest, NeedsNeitherArgumentsNorAPlaceForTheId) {
  const Stream input;
  EXPECT_EQ(ZfxRedirToChildProcess(0, 0, "/nonexistent", 0, nullptr, "name", 0, input.get(), 0, nullptr), 0);
  int status = -1;
  ASSERT_GT(::waitpid(-1, &status, 0), 0);
  EXPECT_EQ(status, 255 * 256);
}

}  // namespace
