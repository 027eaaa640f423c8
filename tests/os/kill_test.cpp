#include "kill.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>

#include "children.hpp"
#include "exec.h"

namespace {

using children::Stream;

class ZfxKillProcessTest : public children::ChildTest {};

TEST_F(ZfxKillProcessTest, KillsWithSignalNine) {
  const pid_t child = children::sleeping_child();
  EXPECT_EQ(ZfxKillProcess(static_cast<uint32_t>(child)), 0);
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status & 0x7f, SIGKILL);
}

TEST_F(ZfxKillProcessTest, ReportsAProcessThatIsGone) {
  const pid_t child = children::leaving_child(0);
  ::waitpid(child, nullptr, 0);
  EXPECT_EQ(ZfxKillProcess(static_cast<uint32_t>(child)), ESRCH);
  EXPECT_EQ(ZfxKillProcessTree(static_cast<uint32_t>(child)), ESRCH);
}

TEST_F(ZfxKillProcessTest, ReportsAProcessThatIsNotOursToKill) {
  const pid_t child = ::fork();
  if (child == 0) {
    const bool without_rights = ::getuid() != 0 || ::setresuid(65534, 65534, 65534) == 0;
    ::_exit(without_rights && ZfxKillProcess(static_cast<uint32_t>(1)) == EPERM ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST_F(ZfxKillProcessTest, NeverSignalsAGroup) {
  // In a process group of its own, so that a signal to all of it shows and does no harm. What would reach
  // further than that is not tried here.
  const pid_t child = ::fork();
  if (child == 0) {
    const bool leader = ::setpgid(0, 0) == 0;
    const auto group = static_cast<uint32_t>(-::getpid());
    ::_exit(leader && ZfxKillProcess(0) == ESRCH && ZfxKillProcess(group) == ESRCH ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST_F(ZfxKillProcessTest, LeavesTheGrandchildrenRunning) {
  ASSERT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1), 0);  // they become ours to collect
  int pipe[2];
  ASSERT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
  uint32_t process = 0;
  ASSERT_EQ(ZfxExecPR("/bin/sh -c 'sleep 1000 >/dev/null & echo $!; wait'", 0, -1, pipe[1], -1, &process), 0);
  ::close(pipe[1]);
  char text[32] = "";
  ASSERT_GT(::read(pipe[0], text, sizeof text - 1), 0);
  ::close(pipe[0]);
  const pid_t grandchild = std::atoi(text);

  EXPECT_EQ(ZfxKillProcessTree(process), 0);
  int status = 0;
  ASSERT_EQ(::waitpid(static_cast<pid_t>(process), &status, 0), static_cast<pid_t>(process));
  EXPECT_EQ(status & 0x7f, SIGKILL);
  EXPECT_EQ(::waitpid(grandchild, nullptr, WNOHANG), 0) << "the grandchild is not running any more";
  children::end(grandchild);
}

}  // namespace
