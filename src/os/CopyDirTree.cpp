// Reproduction of a directory structure: names come from the current directory, paths grow by "\name".
//
// What ends the recursion: names hold no '/', so all that is appended to the source lengthens the last
// component of its path, and a component has at most NAME_MAX bytes. A "\" and a name take two of them at
// least. Links cannot change that, because the walk never leaves ".". But one source may be reached by many
// sequences of names ("a" then "b" or "a\b" at once), so the number of visits is bounded as well, for each
// name of the first level anew: a flat structure may have any number of them.
#include "CopyDirTree.h"

#include <dirent.h>
#include <fcntl.h>

#include <climits>
#include <cstddef>
#include <string_view>

#include "FileStatus.h"
#include "fixed_text.hpp"
#include "handles.hpp"
#include "make_directory.hpp"

namespace {

constexpr int kDeepestLevel = NAME_MAX / 2;
constexpr int kMostVisits = 16384;  // below one name of the first level

int copy_directory(const char *destination, const char *source) {
  ZfxFileStatus status;
  if (const int error = ZfxStatFile(&status, source); error != 0) return error;
  return zorvcrt::make_directory_if_missing(destination);
}

bool opens_as_directory(DIR *folder, const char *name) {
  const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
  return zorvcrt::UniqueDescriptor(::openat(::dirfd(folder), name, flags)).is_open();
}

class TreeWalk {
 public:
  TreeWalk(const char *destination, const char *source) : destination_(destination), source_(source) {}

  void run() {
    const zorvcrt::UniqueDirectory here(::opendir("."));
    if (here == nullptr) return;
    while (const dirent *entry = ::readdir(here.get())) {
      const std::string_view name = entry->d_name;
      if (name == "." || name == ".." || !opens_as_directory(here.get(), entry->d_name)) continue;
      if (!descend(name)) return;
    }
  }

 private:
  using Path = zorvcrt::FixedText<PATH_MAX>;

  static bool extend(Path &path, std::string_view name) {
    if (path.size() + 1 + name.size() > Path::capacity()) return false;
    path.append('\\').append(name);
    return true;
  }

  // One level down and back; false ends the walk of the level above.
  bool descend(std::string_view name) {
    if (level_ == 0) visits_ = 0;
    if (level_ == kDeepestLevel || visits_ == kMostVisits) return false;
    const std::size_t destination_size = destination_.size();
    const std::size_t source_size = source_.size();
    ++level_;
    ++visits_;
    const bool copied = extend(source_, name) && extend(destination_, name) &&
                        copy_directory(destination_.c_str(), source_.c_str()) == 0;
    if (copied) run();
    --level_;
    source_.truncate(source_size);
    destination_.truncate(destination_size);
    return copied;
  }

  Path destination_;
  Path source_;
  int level_ = 0;
  int visits_ = 0;
};

}  // namespace

int32_t CopyDirTree(const char *destination, const char *source) {
  if (destination == nullptr || source == nullptr) return -1;
  if (const int error = copy_directory(destination, source); error != 0) return error;
  TreeWalk(destination, source).run();
  return 0;
}
