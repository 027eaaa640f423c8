#include "crtvers.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

TEST(ZfxGetCrtVersion, WritesAsMuchOfTheVersionAsFitsAlwaysTerminated) {
  const std::string version = "8.4-4:1";
  for (std::size_t size = 1; size <= 12; ++size) {
    char buffer[16];
    std::memset(buffer, '?', sizeof buffer);
    ZfxGetCrtVersion(buffer, size);
    EXPECT_EQ(buffer, version.substr(0, size - 1));
    EXPECT_EQ(buffer[size], '?') << "wrote past " << size;
  }
}

TEST(ZfxGetCrtVersion, TerminatesEvenABufferOfSizeZero) {
  char buffer[2] = {'x', 'y'};
  ZfxGetCrtVersion(buffer, 0);
  EXPECT_EQ(buffer[0], '\0');
  EXPECT_EQ(buffer[1], 'y');
}

TEST(ZfxGetCrtVersion, IgnoresANullBuffer) {
  ZfxGetCrtVersion(nullptr, 8);
}

}  // namespace
