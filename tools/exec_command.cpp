// zorvcrt exec: starts a program from a command line and ends as it does.
#include <sys/wait.h>
#include <zorvcrt.h>

#include <csignal>
#include <cstdio>
#include <cstring>

#include "arguments.hpp"

namespace tools {

namespace {

constexpr int kTimedOut = 124;
constexpr int kSignalBase = 128;  // what shells add to the number of a signal

int run_to_the_end(const char *command) {
  const int32_t status = ZfxExec(command, 1);
  if (status < 0) throw Failure("the system does not tell how the program ended");
  if (WIFEXITED(status)) return WEXITSTATUS(status);
  std::fprintf(stderr, "zorvcrt exec: ended by signal %d\n", WTERMSIG(status));
  return kSignalBase + WTERMSIG(status);
}

int run_for_a_time(const char *command, int32_t milliseconds) {
  uint32_t process = 0;
  const int32_t error = ZfxExecP(command, 0, &process);
  if (error != 0) throw Failure(std::string("no process: ") + std::strerror(error));
  int32_t code = 0;
  int32_t ended = ZfxWaitProcess(process, milliseconds, &code);
  // A program that has merely been stopped counts as ended there, and can still be waited for.
  if (ended == 1 && code == -1 && ZfxWaitProcess(process, 0, &code) == 0) ended = 0;
  if (ended == 1 && code >= 0) return code;
  if (ended == 1) throw Failure("ended by a signal");
  if (ended < 0) throw Failure("the system does not tell how the program ended");
  ZfxKillProcess(process);
  ZfxWaitProcess(process, -1, nullptr);
  std::fprintf(stderr, "zorvcrt exec: not ended after %d ms, killed\n", milliseconds);
  return kTimedOut;
}

int run(const Words &words) {
  const Arguments arguments(words, {}, {"--timeout"});
  arguments.require_operands(1, 1);
  const char *const command = arguments.operands()[0].c_str();
  std::signal(SIGCHLD, SIG_DFL);  // a parent's choice to ignore it would hide how the program ends
  const auto timeout = arguments.value("--timeout");
  if (!timeout) return run_to_the_end(command);
  return run_for_a_time(command, number_of(*timeout, "number of milliseconds", 0));
}

}  // namespace

const Command kExecCommand = {
    "exec", "[--timeout MS] COMMAND", "start a program from a command line and wait for it",
    "COMMAND is one word, cut up without a shell: blanks separate, \" and ' hold together, a quote that\n"
    "is not closed ends the child by signal 11. The exit status is the program's, 1 when it cannot be\n"
    "started, 128 and the number of the signal that ended it (with --timeout 1 for any signal), and 124\n"
    "when it was killed after MS sleeps of one millisecond.\n",
    run};

}  // namespace tools
