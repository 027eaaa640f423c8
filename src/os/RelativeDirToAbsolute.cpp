// The current directory in front of a relative path.
#include "RelativeDirToAbsolute.h"

#include <unistd.h>

#include <cstddef>
#include <cstring>

#include "fixed_text.hpp"

namespace {

constexpr std::size_t kCurrentArea = 1024;
constexpr std::size_t kDestinationArea = 2048;

// With room for a '/' behind it.
using Folder = zorvcrt::FixedText<kCurrentArea + 1>;

// Finds what belongs in front of the path, nothing for an absolute one; false when that cannot be told.
bool find_folder(const char *path, Folder &folder) {
  if (*path == '/') return true;
  if (::getcwd(folder.data(), kCurrentArea) == nullptr) return false;
  folder.terminated_by_callee();
  const char last = folder.view().back();
  if (last != '/' && last != '\\') folder.append('/');
  return true;
}

}  // namespace

int32_t ZfxRelativeDirToAbsolute(char *destination, const char *path) {
  if (destination == nullptr) return -1;
  Folder folder;
  if (path == nullptr || !find_folder(path, folder)) {
    *destination = '\0';
    return -1;
  }
  // The path first, so that it may lie in the destination.
  const std::size_t room = kDestinationArea - folder.size();
  const std::size_t copied =
      zorvcrt::copy_text(destination + folder.size(), static_cast<int64_t>(room), path);
  std::memcpy(destination, folder.c_str(), folder.size());
  return static_cast<int32_t>(folder.size() + copied);
}
