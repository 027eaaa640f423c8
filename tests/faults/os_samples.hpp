// What the tables of failing allocations and of failing system calls make of the system's services.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>

#include "files.hpp"
#include "tcpsock.h"

namespace faults {

inline constexpr char kExitWithThree[] = "sh -c 'exit 3'";

inline void *return_at_once(void * /*record*/) {
  return nullptr;
}

struct LocalListener {
  LocalListener() { EXPECT_EQ(ZfxCreateDynamicListenSocket(&socket, &port), 0); }
  ~LocalListener() { ZfxCloseSocket(socket); }
  LocalListener(const LocalListener &) = delete;
  LocalListener &operator=(const LocalListener &) = delete;
  int32_t socket = -1;
  int32_t port = 0;
};

/// The current folder has one of one level to be copied, "src".
struct FolderToCopy {
  FolderToCopy() {
    for (const char *name : {"src", "part", "src\\part"}) {
      std::filesystem::create_directory(folder / name);
    }
  }
  support::TemporaryFolder folder;
  support::CurrentFolder current{folder.path()};
};

}  // namespace faults
