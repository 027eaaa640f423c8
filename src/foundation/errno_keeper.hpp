// Leaving errno as a call found it.
#pragma once

#include <cerrno>

namespace zorvcrt {

/// Puts errno back at the end of its scope, and at restore() for a step in between that reads it.
class ErrnoKeeper {
 public:
  ErrnoKeeper() = default;
  ~ErrnoKeeper() { restore(); }
  ErrnoKeeper(const ErrnoKeeper &) = delete;
  ErrnoKeeper &operator=(const ErrnoKeeper &) = delete;
  void restore() const { errno = number_; }

 private:
  int number_ = errno;
};

}  // namespace zorvcrt
