// zorvcrt whoami: what the library tells about the process that uses it.
#include <zorvcrt.h>

#include <cstdio>

#include "arguments.hpp"

namespace tools {

namespace {

std::string user() {
  char name[256];
  if (ZfxGetOSUser(name, sizeof name, nullptr, 0, nullptr, 0) != 0) {
    throw Failure("the user database does not know this user");
  }
  return name;
}

std::string groups() {
  char **list = nullptr;
  int32_t count = 0;
  char message[256] = "";
  if (ZfxGetUserGroups(&list, &count, message, sizeof message) != 0) throw Failure(message);
  if (*message != '\0') std::fprintf(stderr, "zorvcrt whoami: %s\n", message);
  std::string names;
  for (int32_t i = 0; i < count; ++i) {
    names += (i == 0 ? "" : " ") + std::string(list[i]);
  }
  ZfxFreeUserGroups(list);
  return names;
}

std::string host() {
  char name[256];
  int32_t size = sizeof name;
  ZfxGetComputerName(name, &size);
  return name;
}

std::string folder() {
  char path[4096];
  return GetExecutablePath(path, sizeof path);
}

int run(const Words &words) {
  Arguments(words, {}, {}).require_operands(0, 0);
  std::printf("user\t%s\n", user().c_str());
  std::printf("groups\t%s\n", groups().c_str());
  std::printf("host\t%s\n", host().c_str());
  std::printf("folder\t%s\n", folder().c_str());
  return kSuccess;
}

}  // namespace

const Command kWhoamiCommand = {
    "whoami", "", "print the user, the groups, the host and the program's folder",
    "One line each: the name of the entry, a tab and the value. Groups are separated by blanks.\n", run};

}  // namespace tools
