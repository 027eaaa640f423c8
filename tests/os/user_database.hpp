// A user database of the test's own, in the private root: only what the test writes is known.
#pragma once

#include <gtest/gtest.h>
#include <nss.h>
#include <unistd.h>

#include <string>

#include "files.hpp"
#include "private_root.hpp"

namespace user_database {

class UserDatabaseTest : public support::FixedPathsTest {
 protected:
  void SetUp() override {
    FixedPathsTest::SetUp();
    if (IsSkipped()) return;
    // Without services that make up users, whatever the machine is set up for.
    ASSERT_EQ(__nss_configure_lookup("passwd", "files"), 0);
    ASSERT_EQ(__nss_configure_lookup("group", "files"), 0);
  }

  /// Makes the real user known by the name, with 4711 as the primary group, and nobody else.
  static void know_user_as(const std::string &name) {
    support::write_file("/etc/passwd", name + ":x:" + std::to_string(::getuid()) + ":4711::/:/bin/sh\n");
  }
  static void know_nobody() { support::write_file("/etc/passwd", ""); }
};

}  // namespace user_database
