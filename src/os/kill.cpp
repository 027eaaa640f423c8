// SIGKILL to exactly one process.
#include "kill.h"

#include <cerrno>
#include <csignal>

int32_t ZfxKillProcess(uint32_t process) {
  // kill() would take 0 and negative ids for whole groups, and -1 for every process that it may signal.
  if (process == 0 || process > INT32_MAX) return ESRCH;
  return ::kill(static_cast<pid_t>(process), SIGKILL) == 0 ? 0 : errno;
}

int32_t ZfxKillProcessTree(uint32_t process) {
  return ZfxKillProcess(process);
}
