// Children between fork() and the start of their program when the system refuses: the parent learns of it by
// the child's end as the headers promise, and a standard handle that cannot be put in place is not there.
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "call_walk.hpp"
#include "exec.h"
#include "procwait.h"
#include "sockredir.h"

namespace {

using faults::CallFault;
using faults::SystemCall;

constexpr int kIn = 1;
constexpr int kOut = 2;
constexpr int kErr = 4;
constexpr int kAll = kIn | kOut | kErr;
constexpr int kStarted = 8;

// Ends with 8 and the numbers above of the standard handles that the program has.
constexpr char kScript[] =
    "x=8; [ -e /proc/self/fd/0 ] && x=$((x+1)); [ -e /proc/self/fd/1 ] && x=$((x+2)); "
    "[ -e /proc/self/fd/2 ] && x=$((x+4)); exit $x";

class Stream {
 public:
  Stream() { EXPECT_GE(file_, 0); }
  ~Stream() { ::close(file_); }
  Stream(const Stream &) = delete;
  Stream &operator=(const Stream &) = delete;
  [[nodiscard]] int get() const { return file_; }

 private:
  int file_ = ::memfd_create("stream", MFD_CLOEXEC);
};

bool has_failed_to_start(const CallFault &fault) {
  return fault.struck("execvp") || fault.struck("execv") || (fault.struck() && fault.is_persistent());
}

int handles_in(int code) {
  return __builtin_popcount(static_cast<unsigned>(code & kAll));
}

// One failure takes one of the redirected handles at most, and only when it is that of putting it in place.
void expect_code(const CallFault &fault, int code, int redirected, int code_of_no_start) {
  if (has_failed_to_start(fault)) {
    EXPECT_EQ(code, code_of_no_start);
    return;
  }
  EXPECT_EQ(code & ~kAll, kStarted);
  EXPECT_EQ(code & kAll & ~redirected, kAll & ~redirected) << "a handle that nobody redirects";
  EXPECT_EQ(handles_in(code), handles_in(kAll) - (fault.struck("dup2") ? 1 : 0));
}

void expect_no_child() {
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
  EXPECT_EQ(errno, ECHILD);
}

// What a call is given: a stream for the handles that it redirects, and where the process id goes.
struct Start {
  const char *command;
  int stream;
  uint32_t *process;
};

template <auto kExecute, int kRedirected = 0>
void execute(CallFault &fault) {
  const std::string command = std::string("/bin/sh -c '") + kScript + "'";
  const Stream stream;
  uint32_t process = 0;
  std::fflush(nullptr);  // a child without a program writes out what is left here
  const int32_t status = fault.during([&] { return kExecute({command.c_str(), stream.get(), &process}); });
  ASSERT_TRUE(WIFEXITED(status)) << status;
  expect_code(fault, WEXITSTATUS(status), kRedirected, 1);
  expect_no_child();
}

int32_t redirect_all(Start start) {
  return ZfxExecImpl(start.command, 1, start.process, 0, start.stream, start.stream, start.stream);
}

// Handles that are in their places already only need to survive the start.
int32_t redirect_to_themselves(Start start) {
  return ZfxExecImpl(start.command, 1, start.process, 0, STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO);
}

template <bool kOutputToo>
void hand_over(CallFault &fault) {
  const Stream in;
  const Stream out;
  const Stream listener;
  char shell[] = "sh";
  char option[] = "-c";
  std::string script = kScript;
  char *const arguments[] = {shell, option, script.data(), nullptr};
  uint32_t process = 0;
  std::fflush(nullptr);
  const int32_t result = fault.during([&] {
    const int32_t started = ZfxRedirToChildProcess(0, 0, "/bin/sh", 3, arguments, nullptr, listener.get(),
                                                   in.get(), kOutputToo ? out.get() : 0, &process);
    // The failures are the child's: they are over when it has ended.
    siginfo_t end = {};
    EXPECT_EQ(::waitid(P_PID, process, &end, WEXITED | WNOWAIT), 0);
    return started;
  });
  EXPECT_EQ(result, 0);
  int32_t code = -1;
  EXPECT_EQ(ZfxWaitProcess(process, -1, &code), 1);
  expect_code(fault, code, kOutputToo ? kIn | kOut : kIn, 255);
  expect_no_child();
}

constexpr SystemCall kCalls[] = {
    {"ZfxExec", "AsItIs", execute<[](Start start) { return ZfxExec(start.command, 1); }>},
    {"ZfxExecImpl", "AllHandles", execute<redirect_all, kAll>},
    {"ZfxExecImpl", "HandlesInPlace", execute<redirect_to_themselves, kAll>},
    {"ZfxExecP", "AsItIs", execute<[](Start start) { return ZfxExecP(start.command, 1, start.process); }>},
    {"ZfxExecPR", "Input",
     execute<[](Start start) { return ZfxExecPR(start.command, 1, start.stream, -1, -1, start.process); },
             kIn>},
    {"ZfxExecPR", "Output",
     execute<[](Start start) { return ZfxExecPR(start.command, 1, -1, start.stream, -1, start.process); },
             kOut>},
    {"ZfxExecPR", "Errors",
     execute<[](Start start) { return ZfxExecPR(start.command, 1, -1, -1, start.stream, start.process); },
             kErr>},
    {"ZfxExecWP", "AsItIs",
     execute<[](Start start) { return ZfxExecWP(start.command, 1, 0, start.process); }>},
    {"ZfxRedirToChildProcess", "Input", hand_over<false>},
    {"ZfxRedirToChildProcess", "InputAndOutput", hand_over<true>},
};

struct ChildRefused : ::testing::TestWithParam<SystemCall> {};

TEST_P(ChildRefused, TellsItByItsEndWhicheverSystemCallFails) {
  faults::walk(GetParam(), support::CallsOf::kChild);
}

INSTANTIATE_TEST_SUITE_P(Call, ChildRefused, ::testing::ValuesIn(kCalls), faults::RowName());

}  // namespace
