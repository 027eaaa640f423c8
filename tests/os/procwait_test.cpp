#include "procwait.h"

#include <gtest/gtest.h>

#include "children.hpp"

namespace {

int sleeps = 0;
int end_at_sleep = 0;
pid_t sleeper = 0;

}  // namespace

// Takes the place of the C library's: counts, and lets the child end at a chosen sleep instead of sleeping.
extern "C" int usleep(useconds_t microseconds) {
  EXPECT_EQ(microseconds, 1000U);
  ++sleeps;
  if (sleeps == end_at_sleep) {
    ::kill(sleeper, SIGKILL);
    children::await_end(sleeper);
  }
  return 0;
}

namespace {

constexpr int32_t kUntouched = 12345;

class ZfxWaitProcessTest : public children::ChildTest {
 protected:
  void SetUp() override {
    ChildTest::SetUp();
    sleeps = 0;
    end_at_sleep = 0;
  }
  int32_t wait(pid_t child, int32_t timeout) {
    code = kUntouched;
    return ZfxWaitProcess(static_cast<uint32_t>(child), timeout, &code);
  }
  int32_t code = kUntouched;
};

TEST_F(ZfxWaitProcessTest, TellsTheExitCodeOfAChildThatHasEnded) {
  for (const int exit_code : {0, 7, 255}) {
    for (const int32_t timeout : {0, 5, -1}) {
      const pid_t child = children::leaving_child(exit_code);
      children::await_end(child);
      EXPECT_EQ(wait(child, timeout), 1);
      EXPECT_EQ(code, exit_code);
    }
  }
}

TEST_F(ZfxWaitProcessTest, StoresMinusOneForAChildThatWasKilled) {
  const pid_t child = children::sleeping_child();
  ::kill(child, SIGTERM);
  EXPECT_EQ(wait(child, -1), 1);
  EXPECT_EQ(code, -1);
}

TEST_F(ZfxWaitProcessTest, ReportsAStoppedChildOnceAndLeavesItToBeCollected) {
  const pid_t child = children::sleeping_child();
  ::kill(child, SIGSTOP);
  EXPECT_EQ(wait(child, -1), 1);
  EXPECT_EQ(code, -1);
  EXPECT_EQ(wait(child, 0), 0);
  ::kill(child, SIGKILL);
  EXPECT_EQ(wait(child, -1), 1);
  EXPECT_EQ(wait(child, -1), -1);
}

TEST_F(ZfxWaitProcessTest, LooksOnceAtARunningChildForATimeOutOfZero) {
  const pid_t child = children::sleeping_child();
  EXPECT_EQ(wait(child, 0), 0);
  EXPECT_EQ(code, kUntouched);
  EXPECT_EQ(sleeps, 0);
  children::end(child);
}

TEST_F(ZfxWaitProcessTest, TakesTheTimeOutAsACountOfSleeps) {
  const pid_t child = children::sleeping_child();
  for (const int32_t timeout : {1, 2, 50}) {
    sleeps = 0;
    EXPECT_EQ(wait(child, timeout), 0);
    EXPECT_EQ(sleeps, timeout);
  }
  EXPECT_EQ(code, kUntouched);
  children::end(child);
}

TEST_F(ZfxWaitProcessTest, LooksAgainAfterEverySleep) {
  for (const int last : {1, 3, 4}) {
    sleeper = children::sleeping_child();
    sleeps = 0;
    end_at_sleep = last;
    EXPECT_EQ(wait(sleeper, 4), 1);
    EXPECT_EQ(sleeps, last);
  }
}

TEST_F(ZfxWaitProcessTest, DoesNotSleepForAChildThatHasEnded) {
  const pid_t child = children::leaving_child(0);
  children::await_end(child);
  EXPECT_EQ(wait(child, 1000), 1);
  EXPECT_EQ(sleeps, 0);
}

TEST_F(ZfxWaitProcessTest, BlocksForANegativeTimeOut) {
  int pipe[2];
  ASSERT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
  const pid_t child = ::fork();
  if (child == 0) {
    char byte = 0;
    ::close(pipe[1]);
    ::_exit(::read(pipe[0], &byte, 1) == 0 ? 9 : 1);  // until the parent closes its end
  }
  EXPECT_EQ(wait(child, 0), 0);
  ::close(pipe[1]);
  EXPECT_EQ(wait(child, INT32_MIN), 1);
  EXPECT_EQ(code, 9);
  EXPECT_EQ(sleeps, 0);
  ::close(pipe[0]);
}

TEST_F(ZfxWaitProcessTest, FailsForAProcessThatIsNoChild) {
  for (const int32_t timeout : {0, 3, -1}) {
    EXPECT_EQ(wait(::getppid(), timeout), -1);
    EXPECT_EQ(errno, ECHILD);
    EXPECT_EQ(wait(-1, timeout), -1);
  }
  EXPECT_EQ(code, kUntouched);
  EXPECT_EQ(sleeps, 0);
}

TEST_F(ZfxWaitProcessTest, FailsWhenASignalInterruptsAWaitWithoutLimit) {
  const pid_t child = children::sleeping_child();
  {
    const children::Interruptions interruptions;
    EXPECT_EQ(wait(child, -1), -1);
    EXPECT_EQ(errno, EINTR);
  }
  children::end(child);
}

TEST_F(ZfxWaitProcessTest, NeedsNoPlaceForTheExitCode) {
  const pid_t child = children::leaving_child(3);
  EXPECT_EQ(ZfxWaitProcess(static_cast<uint32_t>(child), -1, nullptr), 1);
}

}  // namespace
