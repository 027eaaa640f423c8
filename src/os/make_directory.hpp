// Making a directory unless something of its name is there already.
#pragma once

#include <sys/stat.h>

#include <cerrno>

namespace zorvcrt {

inline constexpr mode_t kDirectoryMode = 0776;

inline bool path_exists(const char *path) {
  struct stat status;
  return ::stat(path, &status) == 0;
}

/// Returns 0 when the path exists now, otherwise the errno value of mkdir().
inline int make_directory_if_missing(const char *path) {
  if (path_exists(path) || ::mkdir(path, kDirectoryMode) == 0) return 0;
  const int error = errno;
  // Another thread or process may have made it between the two calls.
  return error == EEXIST && path_exists(path) ? 0 : error;
}

}  // namespace zorvcrt
