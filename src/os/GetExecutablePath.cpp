// The folder of the running program, from the system's link to it or, where that says nothing, from the name
// under which a shell started it.
#include "GetExecutablePath.h"

#include <unistd.h>

#include <climits>
#include <cstdlib>

#include "fixed_text.hpp"

namespace {

constexpr const char *kLinkToProgram = "/proc/self/exe";
constexpr std::size_t kProgramRoom = 2048;

using Program = zorvcrt::FixedText<kProgramRoom>;
using Directory = zorvcrt::FixedText<PATH_MAX>;
using Folder = zorvcrt::FixedText<PATH_MAX + kProgramRoom>;

void read_program(uint32_t capacity, Program &program) {
  const ssize_t length = ::readlink(kLinkToProgram, program.data(), Program::capacity());
  program.set_size(length > 0 ? static_cast<std::size_t>(length) : 0);
  if (length != 0) return;
  const std::string_view started_as = zorvcrt::view_of(std::getenv("_"));
  if (started_as.size() < capacity) program.assign(started_as);
}

std::string_view first(std::string_view text, std::size_t count) {
  return {text.data(), count};
}

// A relative program up to its last slash, which stays; of slashes in a row the first.
std::string_view relative_folder(std::string_view program) {
  std::size_t end = program.rfind('/') + 1;
  while (end > 1 && program[end - 2] == '/') {
    --end;
  }
  std::string_view folder = first(program, end);
  if (folder.ends_with("/./")) folder.remove_suffix(2);
  return folder == "./" ? std::string_view() : folder;
}

void find_folder(std::string_view program, Folder &folder) {
  if (program.starts_with('/')) {
    folder.assign(first(program, program.rfind('/')));
    return;
  }
  Directory current;
  if (::getcwd(current.data(), PATH_MAX) == nullptr) current.clear();
  current.terminated_by_callee();
  folder.assign(current.view());
  if (program.find('/') == std::string_view::npos) return;
  if (!folder.empty()) folder.append('/');
  folder.append(relative_folder(program));
}

}  // namespace

char *GetExecutablePath(char *buffer, uint32_t capacity) {
  Program program;
  read_program(capacity, program);
  Folder folder;
  find_folder(program.view(), folder);
  zorvcrt::copy_text(buffer, capacity, folder.view());
  return buffer;
}
