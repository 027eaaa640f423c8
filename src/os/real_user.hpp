// The user who runs the process, as the user database knows them.
#pragma once

#include <pwd.h>
#include <unistd.h>

#include "database_entry.hpp"

namespace zorvcrt {

/// Looks up the real user; on failure as DatabaseEntry::look_up().
inline bool look_up_real_user(DatabaseEntry<passwd> &user) {
  return user.look_up([](passwd *entry, char *area, std::size_t size, passwd **found) {
    return ::getpwuid_r(::getuid(), entry, area, size, found);
  });
}

}  // namespace zorvcrt
