// Surroundings in which the C library asks nothing but files: what other services load and keep would be
// counted as the library's.
#pragma once

#include <nss.h>

#include "private_root.hpp"

namespace faults {

class FilesOnlyTest : public support::FixedPathsTest {
 protected:
  void SetUp() override {
    FixedPathsTest::SetUp();
    if (IsSkipped()) return;
    for (const char *database : {"passwd", "group", "hosts"}) {
      ASSERT_EQ(__nss_configure_lookup(database, "files"), 0);
    }
  }
};

}  // namespace faults
