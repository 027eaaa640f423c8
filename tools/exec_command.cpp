// zorvcrt exec: starts a program from a command line and ends as it does.
#include <sys/wait.h>
#include <unistd.h>
#include <zorvcrt.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <string>

#include "arguments.hpp"
#include "terminal.hpp"

namespace tools {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kTimedOut = 124;
constexpr int kSignalBase = 128;  // what shells add to the number of a signal
constexpr useconds_t kBetweenLooks = 1000;

int end_as(int32_t status) {
  if (status < 0) throw Failure("the system does not tell how the program ended");
  if (WIFEXITED(status)) return WEXITSTATUS(status);
  complain("exec", "ended by signal " + std::to_string(WTERMSIG(status)));
  return kSignalBase + WTERMSIG(status);
}

// ZfxWaitProcess() takes a program that has merely been stopped for one that has ended, and keeps the number
// of the signal to itself.
bool has_ended(pid_t process, int &status) {
  const pid_t ended = ::waitpid(process, &status, WNOHANG);
  if (ended < 0 && errno != EINTR) status = -1;
  return ended == process || status < 0;
}

int run_for_a_time(const char *command, int32_t milliseconds) {
  uint32_t process = 0;
  const int32_t error = ZfxExecP(command, 0, &process);
  if (error != 0) throw Failure(std::string("no process: ") + std::strerror(error));
  const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
  int status = 0;
  while (!has_ended(static_cast<pid_t>(process), status)) {
    if (Clock::now() >= end) {
      ZfxKillProcess(process);
      ZfxWaitProcess(process, -1, nullptr);
      complain("exec", "not ended after " + std::to_string(milliseconds) + " ms, killed");
      return kTimedOut;
    }
    ::usleep(kBetweenLooks);
  }
  return end_as(status);
}

constexpr std::array kOptions = {Option{"--timeout", "", "MS", "kill the program after MS milliseconds"}};

int run(const Arguments &arguments) {
  arguments.require_operands(1, 1);
  const char *const command = arguments.operands()[0].c_str();
  std::signal(SIGCHLD, SIG_DFL);  // a parent's choice to ignore it would hide how the program ends
  const auto timeout = arguments.value("--timeout");
  if (!timeout) return end_as(ZfxExec(command, 1));
  return run_for_a_time(command, number_of(*timeout, "number of milliseconds", 0));
}

}  // namespace

const Command kExecCommand = {
    "exec",
    "COMMAND",
    "start a program from a command line and wait for it",
    kOptions,
    "COMMAND is one word, cut up without a shell: blanks separate, \" and ' hold together, a quote that\n"
    "is not closed ends the child by signal 11. The exit status is the program's, 1 when it cannot be\n"
    "started, 128 and the number of the signal that ended it, and 124 when its time was up.\n",
    run};

}  // namespace tools
