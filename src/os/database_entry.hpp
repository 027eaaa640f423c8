// Entries of the system's databases (users, groups, hosts) through the re-entrant calls, whose results point
// into a work area that has to be large enough: it grows until the entry fits.
#pragma once

#include <cerrno>
#include <cstddef>

#include "handles.hpp"

namespace zorvcrt {

template <class Entry>
class DatabaseEntry {
 public:
  /// Looks an entry up with @p look(entry, area, size, found), which has the results of getpwnam_r(). On
  /// failure the entry is not to be read, and errno says why; it is 0 when there is no such entry.
  template <class Look>
  bool look_up(Look look) {
    for (std::size_t size = kFirstSize; size <= kLargestSize; size *= 2) {
      area_.reset(static_cast<char *>(ZfxMemAlloc(size)));
      if (area_ == nullptr) return false;
      Entry *found = nullptr;
      const int error = look(&entry_, area_.get(), size, &found);
      if (error != ERANGE) {
        errno = error;
        return found != nullptr;
      }
    }
    errno = ENOMEM;
    return false;
  }

  const Entry *operator->() const { return &entry_; }

 private:
  static constexpr std::size_t kFirstSize = 1024;
  static constexpr std::size_t kLargestSize = std::size_t{1} << 28;  // a group of millions of members

  Entry entry_ = {};
  UniqueBlock<char> area_;
};

}  // namespace zorvcrt
