#include "GetComputerName.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "next_function.hpp"

namespace {

bool gethostname_fails = false;

}  // namespace

// Takes the place of the C library's for the whole program.
extern "C" int gethostname(char *name, size_t size) noexcept {
  if (gethostname_fails) {
    errno = EFAULT;
    return -1;
  }
  static const auto next = support::next_function<int (*)(char *, size_t)>("gethostname");
  return next(name, size);
}

namespace {

std::string host_name() {
  char name[256] = "";
  EXPECT_EQ(::gethostname(name, sizeof name), 0);
  return name;
}

TEST(ZfxGetComputerName, TellsTheNameOfTheHostAndItsLength) {
  const std::string name = host_name();
  char buffer[256] = "";
  int32_t size = sizeof buffer;
  EXPECT_EQ(ZfxGetComputerName(buffer, &size), static_cast<int32_t>(name.size()));
  EXPECT_EQ(size, static_cast<int32_t>(name.size()));
  EXPECT_EQ(buffer, name);
}

TEST(ZfxGetComputerName, CutsTheNameToTheCapacity) {
  const std::string name = host_name();
  for (std::size_t capacity = 1; capacity < name.size() + 3; ++capacity) {
    std::string area(capacity + 1, '?');
    auto size = static_cast<int32_t>(capacity);
    const std::string expected = name.substr(0, capacity - 1);
    EXPECT_EQ(ZfxGetComputerName(area.data(), &size), static_cast<int32_t>(expected.size()));
    EXPECT_EQ(size, static_cast<int32_t>(expected.size()));
    EXPECT_STREQ(area.c_str(), expected.c_str());
    EXPECT_EQ(area[capacity], '?');
  }
}

TEST(ZfxGetComputerName, GivesAnEmptyNameWhenTheSystemDoesNotTellIt) {
  gethostname_fails = true;
  char buffer[] = "before";
  int32_t size = sizeof buffer;
  EXPECT_EQ(ZfxGetComputerName(buffer, &size), 0);
  EXPECT_EQ(size, 0);
  EXPECT_STREQ(buffer, "");
  gethostname_fails = false;
}

TEST(ZfxGetComputerName, WritesNothingWithoutAnArea) {
  char buffer[] = "same";
  for (int32_t capacity : {0, -1, INT32_MIN}) {
    EXPECT_EQ(ZfxGetComputerName(buffer, &capacity), 0);
    EXPECT_EQ(capacity, 0);
  }
  EXPECT_EQ(ZfxGetComputerName(buffer, nullptr), 0);
  EXPECT_STREQ(buffer, "same");
  int32_t size = 10;
  EXPECT_EQ(ZfxGetComputerName(nullptr, &size), 0);
  EXPECT_EQ(size, 0);
}

}  // namespace
