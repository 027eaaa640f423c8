#include "GetErrorText.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <string>
#include <thread>

#include "GetErrorNumber.h"

namespace {

TEST(ZfxGetErrorNumber, TellsTheErrnoOfTheLastFailedCall) {
  ASSERT_EQ(::open("/nonexistent/file", O_RDONLY), -1);
  EXPECT_EQ(ZfxGetErrorNumber(), static_cast<uint32_t>(ENOENT));
}

TEST(ZfxGetErrorNumber, TellsTheErrnoOfTheCallingThread) {
  errno = EPERM;
  std::thread([] {
    errno = EBADF;
    EXPECT_EQ(ZfxGetErrorNumber(), static_cast<uint32_t>(EBADF));
  }).join();
  errno = EPERM;
  EXPECT_EQ(ZfxGetErrorNumber(), static_cast<uint32_t>(EPERM));
}

TEST(ZfxGetErrorText, GivesTheSystemsMessageAndItsLength) {
  char buffer[256];
  for (const int error : {0, EPERM, ENOENT, EAGAIN, 133, 134, 9999, INT_MAX, -2, INT_MIN}) {
    const std::string expected = std::strerror(error);
    EXPECT_EQ(ZfxGetErrorText(error, buffer, sizeof buffer), static_cast<int32_t>(expected.size()));
    EXPECT_EQ(buffer, expected);
  }
}

TEST(ZfxGetErrorText, TakesMinusOneForTheCurrentErrno) {
  char buffer[256];
  errno = EACCES;
  const int32_t count = ZfxGetErrorText(-1, buffer, sizeof buffer);
  EXPECT_EQ(count, static_cast<int32_t>(std::strlen(std::strerror(EACCES))));
  EXPECT_STREQ(buffer, std::strerror(EACCES));
}

TEST(ZfxGetErrorText, CutsTheMessageToTheAreaAndTerminatesIt) {
  const std::string message = std::strerror(ENOENT);
  const auto length = static_cast<int32_t>(message.size());
  for (const int32_t size : {1, 2, 5, length - 1, length, length + 1, length + 2}) {
    char buffer[256];
    std::memset(buffer, '?', sizeof buffer);
    const int32_t count = std::min(size - 1, length);
    EXPECT_EQ(ZfxGetErrorText(ENOENT, buffer, size), count);
    EXPECT_EQ(buffer, message.substr(0, static_cast<std::size_t>(count)));
    EXPECT_EQ(buffer[size], '?');
  }
}

TEST(ZfxGetErrorText, WritesNothingWithoutAnArea) {
  char buffer[4] = "old";
  for (const int32_t size : {0, -1, INT_MIN}) {
    EXPECT_EQ(ZfxGetErrorText(ENOENT, buffer, size), 0);
    EXPECT_STREQ(buffer, "old");
  }
  EXPECT_EQ(ZfxGetErrorText(ENOENT, nullptr, 8), 0);
}

}  // namespace
