// Fixed paths for tests: a root folder of the test's own, in a private mount namespace.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace support {

/// The home folder that the real user has inside the private root.
inline constexpr char kPrivateHome[] = "/zorvcrt-test-home";

/// Moves this process into a private root: all of the machine can be seen at its place, but "/", "/usr/lib"
/// and
/// "/usr/local" are folders of the test's own to which it can add entries, "/usr/local/zorv" is absent,
/// and "/etc/passwd" and "/etc/group" are private copies in which the real user's home is kPrivateHome.
/// A second call empties what tests have added. Returns "" or why the kernel does not allow it.
std::string enter_private_root();

/// Replaces the private "/etc/group".
void write_group_file(const std::string &text);

/// A test that may create the fixed paths; skipped only where the kernel forbids mount namespaces altogether.
class FixedPathsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (const std::string refused = enter_private_root(); !refused.empty()) {
      GTEST_SKIP() << "no private mount namespace here: " << refused;
    }
  }
};

}  // namespace support
