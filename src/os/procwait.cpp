// Waiting for a child, with a time-out that counts sleeps.
#include "procwait.h"

#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr useconds_t kSleepMicroseconds = 1000;
constexpr int32_t kNoExitCode = -1;

}  // namespace

int32_t ZfxWaitProcess(uint32_t process, int32_t timeout, int32_t *code) {
  const auto child = static_cast<pid_t>(process);
  const int options = timeout < 0 ? WUNTRACED : WUNTRACED | WNOHANG;
  int status = 0;
  pid_t found = ::waitpid(child, &status, options);
  for (int32_t retries = 0; found == 0 && retries < timeout; ++retries) {
    ::usleep(kSleepMicroseconds);
    found = ::waitpid(child, &status, options);
  }
  if (found <= 0) return found == 0 ? 0 : -1;
  if (code != nullptr) *code = WIFEXITED(status) ? WEXITSTATUS(status) : kNoExitCode;
  return 1;
}
