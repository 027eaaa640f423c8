// Child programs from command lines. The child may be a copy of a process with many threads, so from fork to
// exec it calls only what POSIX allows in a signal handler; all that needs the heap is done before the fork.
#include "exec.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "command_line.hpp"
#include "handles.hpp"

namespace {

constexpr int32_t kInherit = -1;
constexpr int kCannotStart = 1;

struct StandardHandles {
  int32_t in = kInherit;
  int32_t out = kInherit;
  int32_t err = kInherit;
};

void put_in_place(int32_t handle, int standard) {
  if (handle < 0) return;
  if (handle == standard) {
    ::fcntl(handle, F_SETFD, 0);  // in place already, but it has to survive the exec
    return;
  }
  ::close(standard);  // also when the handle turns out not to be open
  ::dup2(handle, standard);
}

// The signal itself and not a fault, which a handler of the host or of a sanitizer could catch.
void end_by_segmentation_fault() {
  struct sigaction action = {};
  action.sa_handler = SIG_DFL;
  ::sigaction(SIGSEGV, &action, nullptr);
  sigset_t unblocked;
  ::sigemptyset(&unblocked);
  ::sigaddset(&unblocked, SIGSEGV);
  ::sigprocmask(SIG_UNBLOCK, &unblocked, nullptr);
  ::raise(SIGSEGV);  // comes back only in the first process of a pid namespace, which its own signals spare
}

[[noreturn]] void become(char *command, const StandardHandles &handles) {
  put_in_place(handles.in, STDIN_FILENO);
  put_in_place(handles.out, STDOUT_FILENO);
  put_in_place(handles.err, STDERR_FILENO);

  zorvcrt::CommandWords words;
  zorvcrt::split_command_line(command, words);
  if (words.quote_is_open) {
    end_by_segmentation_fault();
  } else if (words.count != 0) {
    ::execvp(words.vector[0], words.vector.data());
  }
  std::exit(kCannotStart);
}

int32_t status_of(pid_t child) {
  int status = 0;
  pid_t collected = 0;
  do {
    collected = ::waitpid(child, &status, 0);
  } while (collected < 0 && errno == EINTR);
  return collected == child ? status : -1;
}

int32_t start(const char *command, int32_t wait, uint32_t *process, const StandardHandles &handles) {
  const zorvcrt::UniqueMalloc<char> copy(::strdup(command == nullptr ? "" : command));
  const pid_t child = copy == nullptr ? -1 : ::fork();
  if (child == 0) become(copy.get(), handles);

  int32_t result = 0;
  if (child < 0) {
    result = errno;
  } else if (wait != 0) {
    result = status_of(child);
  }
  if (process != nullptr) *process = static_cast<uint32_t>(child);
  return result;
}

}  // namespace

int32_t ZfxExecImpl(const char *command, int32_t wait, uint32_t *process, uint32_t /*unused*/, int32_t in,
                    int32_t out, int32_t err) {
  return start(command, wait, process, {in, out, err});
}

int32_t ZfxExec(const char *command, int32_t wait) {
  return start(command, wait, nullptr, {});
}

int32_t ZfxExecP(const char *command, int32_t wait, uint32_t *process) {
  return start(command, wait, process, {});
}

int32_t ZfxExecPR(const char *command, int32_t wait, int32_t in, int32_t out, int32_t err,
                  uint32_t *process) {
  return start(command, wait, process, {in, out, err});
}

int32_t ZfxExecWP(const char *command, int32_t wait, uint32_t /*value*/, uint32_t *process) {
  return start(command, wait, process, {});
}
