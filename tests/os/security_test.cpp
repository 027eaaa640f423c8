#include "security.h"

#include <gtest/gtest.h>

namespace {

TEST(ZfxAddAccessRights, GivesZeroForAnyArguments) {
  EXPECT_EQ(ZfxAddAccessRights(nullptr), 0);
  EXPECT_EQ(ZfxAddAccessRights("object", 1, "user", 2.5), 0);
}

}  // namespace
