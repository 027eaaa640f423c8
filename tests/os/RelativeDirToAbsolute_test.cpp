#include "RelativeDirToAbsolute.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>

#include "files.hpp"

namespace {

namespace fs = std::filesystem;

struct Absolute {
  int32_t count;
  std::string text;
};

// The area is exactly as large as promised, so that a write beyond it is seen.
Absolute absolute(const std::string &path) {
  char area[2048 + 8];
  std::memset(area, '?', sizeof area);
  const int32_t count = ZfxRelativeDirToAbsolute(area, path.c_str());
  EXPECT_EQ(std::string(area + 2048, 8), "????????") << "wrote past 2048";
  return {count, area};
}

void expect_absolute(const std::string &path, const std::string &expected) {
  const Absolute result = absolute(path);
  EXPECT_EQ(result.text, expected);
  EXPECT_EQ(result.count, static_cast<int32_t>(expected.size()));
}

TEST(ZfxRelativeDirToAbsolute, KeepsAnAbsolutePathAsItIs) {
  expect_absolute("/a/../b//c", "/a/../b//c");
  expect_absolute("/", "/");
}

TEST(ZfxRelativeDirToAbsolute, PutsTheCurrentDirectoryInFront) {
  support::TemporaryFolder folder;
  support::CurrentFolder current(folder.path());
  expect_absolute("a/b", folder / "a/b");
  expect_absolute("../a", folder / "../a");
  expect_absolute("", folder.path() + "/");
  expect_absolute("\\a", folder / "\\a");
}

TEST(ZfxRelativeDirToAbsolute, AddsNoSecondSlashAtTheRoot) {
  support::CurrentFolder current("/");
  expect_absolute("a", "/a");
}

TEST(ZfxRelativeDirToAbsolute, AddsNoSlashBehindABackslash) {
  support::TemporaryFolder folder;
  fs::create_directory(folder / "odd\\");
  support::CurrentFolder current(folder / "odd\\");
  expect_absolute("a", folder / "odd\\a");
}

TEST(ZfxRelativeDirToAbsolute, CutsAnAbsolutePathAt2047) {
  for (const std::size_t length : {2046u, 2047u, 2048u, 9000u}) {
    std::string path = "/" + std::string(length - 1, 'p');
    expect_absolute(path, path.substr(0, 2047));
  }
}

TEST(ZfxRelativeDirToAbsolute, CutsARelativePathAt2047) {
  support::TemporaryFolder folder;
  support::CurrentFolder current(folder.path());
  for (const std::size_t length : {2046u, 2047u, 2048u, 9000u}) {
    const std::string path(length - folder.path().size() - 1, 'p');
    expect_absolute(path, (folder.path() + "/" + path).substr(0, 2047));
  }
}

TEST(ZfxRelativeDirToAbsolute, KnowsCurrentDirectoriesOfUpTo1023Characters) {
  support::TemporaryFolder folder;
  for (const std::size_t length : {1022u, 1023u, 1024u}) {
    std::string path = folder.path();
    while (path.size() + 201 < length) {
      path += "/" + std::string(100, 'd');
    }
    path += "/" + std::string(length - path.size() - 1, 'e');
    ASSERT_EQ(path.size(), length);
    fs::create_directories(path);
    support::CurrentFolder current(path);
    if (length <= 1023) {
      expect_absolute("a", path + "/a");
    } else {
      const Absolute result = absolute("a");
      EXPECT_EQ(result.count, -1);
      EXPECT_EQ(errno, ERANGE);
      EXPECT_EQ(result.text, "");
    }
  }
}

TEST(ZfxRelativeDirToAbsolute, FailsInADirectoryThatIsGone) {
  support::TemporaryFolder folder;
  fs::create_directory(folder / "gone");
  support::CurrentFolder current(folder / "gone");
  fs::remove(folder / "gone");
  const Absolute result = absolute("a");
  EXPECT_EQ(result.count, -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(result.text, "");
  expect_absolute("/a", "/a");
}

TEST(ZfxRelativeDirToAbsolute, ReportsMissingArguments) {
  char area[2048] = "before";
  EXPECT_EQ(ZfxRelativeDirToAbsolute(nullptr, "a"), -1);
  EXPECT_EQ(ZfxRelativeDirToAbsolute(nullptr, nullptr), -1);
  EXPECT_STREQ(area, "before");
  EXPECT_EQ(ZfxRelativeDirToAbsolute(area, nullptr), -1);
  EXPECT_STREQ(area, "");
}

TEST(ZfxRelativeDirToAbsolute, TakesAPathThatLiesInTheDestination) {
  support::TemporaryFolder folder;
  support::CurrentFolder current(folder.path());
  for (const std::size_t offset : {0u, 1u, 30u}) {
    char area[2048] = "";
    std::strcpy(area + offset, "some/path");
    const int32_t count = ZfxRelativeDirToAbsolute(area, area + offset);
    EXPECT_EQ(area, folder / "some/path");
    EXPECT_EQ(count, static_cast<int32_t>(std::strlen(area)));
    std::strcpy(area + offset, "/some/path");
    EXPECT_EQ(ZfxRelativeDirToAbsolute(area, area + offset), 10);
    EXPECT_STREQ(area, "/some/path");
  }
}

}  // namespace
