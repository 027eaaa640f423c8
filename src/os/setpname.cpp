// The name in process listings: the system shows the memory in which it laid down the arguments, and behind
// them the environment, when the program started. Also used between fork and exec: no heap, no locks.
#include "setpname.h"

#include <unistd.h>

#include <cstddef>
#include <cstring>

namespace {

// The terminator of a text that begins right behind the given one, or the given one again.
char *extended(char *end, char *text) {
  return text == end + 1 ? text + std::strlen(text) : end;
}

// The last terminator of the texts that lie without a gap behind the first argument.
char *end_of_area(int32_t argc, char *const argv[]) {
  char *end = argv[0] + std::strlen(argv[0]);
  for (int32_t i = 1; i < argc && argv[i] != nullptr; ++i) {
    end = extended(end, argv[i]);
  }
  if (environ != nullptr && environ[0] == end + 1) {
    for (char *const *variable = environ; *variable != nullptr; ++variable) {
      end = extended(end, *variable);
    }
  }
  return end;
}

}  // namespace

char *SetProcessName(const char *name, int32_t argc, char *const argv[]) {
  if (argv == nullptr || argv[0] == nullptr) return nullptr;
  char *const first = argv[0];
  if (name == nullptr) return first;

  const std::size_t room = std::strlen(first);
  const std::size_t length = std::strlen(name);
  const std::size_t area =
      length <= room ? room + 1 : static_cast<std::size_t>(end_of_area(argc, argv) - first) + 1;
  const std::size_t kept = length < area ? length : area;
  std::memmove(first, name, kept);  // before the clearing: the name may be one of the arguments
  std::memset(first + kept, '\0', area - kept);
  return first;
}
