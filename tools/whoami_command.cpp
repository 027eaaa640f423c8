// zorvcrt whoami: what the library tells about the process that uses it.
#include <zorvcrt.h>

#include <array>
#include <cstdio>

#include "arguments.hpp"
#include "records.hpp"
#include "terminal.hpp"

namespace tools {

namespace {

std::string user() {
  char name[256];
  if (ZfxGetOSUser(name, sizeof name, nullptr, 0, nullptr, 0) != 0) {
    throw Failure("the user database does not know this user");
  }
  return name;
}

Words groups() {
  char **list = nullptr;
  int32_t count = 0;
  char message[256] = "";
  if (ZfxGetUserGroups(&list, &count, message, sizeof message) != 0) throw Failure(message);
  if (*message != '\0') complain("whoami", message);
  Words names(list, list + count);
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

void print_as_json() {
  JsonRecord record;
  record.add("user", user());
  JsonList names;
  for (const std::string &name : groups()) {
    names.add(json_text(name));
  }
  record.add("groups", names.take()).add("host", host()).add("folder", folder());
  print_json(record.take());
}

void print_as_text() {
  std::printf("user\t%s\n", user().c_str());
  std::printf("groups\t");
  const char *separator = "";
  for (const std::string &name : groups()) {
    std::printf("%s%s", separator, name.c_str());
    separator = " ";
  }
  std::printf("\nhost\t%s\n", host().c_str());
  std::printf("folder\t%s\n", folder().c_str());
}

constexpr std::array kOptions = {kOutputOption};

int run(const Arguments &arguments) {
  arguments.require_operands(0, 0);
  arguments.wants_json() ? print_as_json() : print_as_text();
  return kSuccess;
}

}  // namespace

const Command kWhoamiCommand = {
    "whoami",
    "",
    "print the user, the groups, the host and the program's folder",
    kOptions,
    "One line each: the name of the entry, a tab and the value. Groups are separated by blanks.\n",
    run};

}  // namespace tools
