// A child program with a connection as its standard input and output. As in exec.cpp, from fork to exec only
// what POSIX allows in a signal handler.
#include "sockredir.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "setpname.h"

namespace {

constexpr int kCannotStart = -1;

void move_in_place(int32_t handle, int standard) {
  ::close(standard);
  ::dup2(handle, standard);
  ::close(handle);
}

}  // namespace

int32_t ZfxRedirToChildProcess(int32_t /*unused1*/, int32_t /*unused2*/, const char *path, int32_t argc,
                               char *const argv[], const char *name, int32_t close_handle, int32_t in,
                               int32_t out, uint32_t *process) {
  const pid_t child = ::fork();
  if (child != 0) {
    const int32_t result = child < 0 ? errno : 0;
    if (process != nullptr) *process = static_cast<uint32_t>(child);
    return result;
  }

  if (name != nullptr) SetProcessName(name, argc, argv);
  if (close_handle != 0) ::close(close_handle);
  move_in_place(in, STDIN_FILENO);
  if (out != 0) move_in_place(out, STDOUT_FILENO);
  char *const no_arguments[] = {nullptr};
  if (path != nullptr) ::execv(path, argv != nullptr ? argv : no_arguments);
  std::exit(kCannotStart);
}
