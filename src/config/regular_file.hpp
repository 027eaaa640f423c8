// Opening what a listed folder holds, where anything may lie under the name of a file.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include "handles.hpp"

namespace zorvcrt {

/// Opens a regular file, or what leads to one, for reading. Empty for everything else: a pipe would be waited
/// for until somebody writes to it, and a device may have no end.
inline UniqueFile open_regular_file(const char *path) {
  UniqueDescriptor descriptor(::open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat status;
  const bool is_regular =
      descriptor.is_open() && ::fstat(descriptor.get(), &status) == 0 && S_ISREG(status.st_mode);
  if (!is_regular) return nullptr;
  UniqueFile file(::fdopen(descriptor.get(), "r"));
  if (file != nullptr) descriptor.release();
  return file;
}

}  // namespace zorvcrt
