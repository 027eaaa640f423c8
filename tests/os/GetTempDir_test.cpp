#include "GetTempDir.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <set>
#include <string>

#include "files.hpp"
#include "private_root.hpp"

namespace {

namespace fs = std::filesystem;

constexpr char kScriptedPrefix[] = "/tmp/zfxs-";

// What the C library's functions say about names with the scripted prefix, and what they were asked.
struct Script {
  long names_taken = 0;
  int name_error = ENOENT;
  bool no_random_bytes = false;
  std::string opened_path = {};
  int opened_flags = 0;
  int descriptor = -1;
  long names_seen = 0;
  std::set<std::string> first_names = {};
};
Script script;

bool is_scripted(const char *path) {
  return std::strncmp(path, kScriptedPrefix, sizeof kScriptedPrefix - 1) == 0;
}

}  // namespace

// These stand before the C library's functions of the names, for the library under test too.
int lstat(const char *path, struct stat *result) noexcept {
  if (!is_scripted(path)) return ::fstatat(AT_FDCWD, path, result, AT_SYMLINK_NOFOLLOW);
  *result = {};
  if (script.names_seen < 4) script.first_names.insert(path);
  if (script.names_seen++ < script.names_taken) return 0;
  errno = script.name_error;
  return -1;
}

ssize_t getrandom(void *buffer, size_t length, unsigned int /*flags*/) {
  if (!script.no_random_bytes) return ::getentropy(buffer, length) == 0 ? static_cast<ssize_t>(length) : -1;
  errno = EAGAIN;
  return -1;
}

int open(const char *path, int flags, ...) {
  if (is_scripted(path)) {
    script.opened_path = path;
    script.opened_flags = flags;
    errno = ENOENT;
    return script.descriptor;
  }
  std::va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return ::openat(AT_FDCWD, path, flags, mode);
}

namespace {

std::string fresh_name(const char *prefix) {
  char name[64] = "";
  EXPECT_EQ(ZfxGetTempFileName(name, sizeof name, prefix), 0);
  return name;
}

void expect_form(const std::string &name, const std::string &begin) {
  ASSERT_EQ(name.substr(0, begin.size()), begin);
  const std::string rest = name.substr(begin.size());
  EXPECT_EQ(rest.size(), 6u) << name;
  EXPECT_TRUE(std::all_of(rest.begin(), rest.end(), [](unsigned char c) { return std::isalnum(c) != 0; }))
      << name;
}

TEST(ZfxGetTempDir, WritesTheFolderAndReturnsItsLengthWhateverTheSize) {
  for (const int32_t size : {INT_MIN, -1, 0, 1, 5, 6, 7, INT_MAX}) {
    char buffer[8] = "???????";
    EXPECT_EQ(ZfxGetTempDir(buffer, size), 5);
    EXPECT_STREQ(buffer, "/tmp/");
    EXPECT_EQ(buffer[6], '?');
  }
}

TEST(ZfxGetTempDir, ReportsAMissingBuffer) {
  EXPECT_EQ(ZfxGetTempDir(nullptr, 10), -1);
}

TEST(ZfxGetTempFileName, PutsUpToFiveBytesOfThePrefixBehindTheFolder) {
  const std::string prefix = "zfxtest";
  for (std::size_t length = 1; length <= prefix.size(); ++length) {
    const std::string given = prefix.substr(0, length);
    expect_form(fresh_name(given.c_str()), "/tmp/" + given.substr(0, 5));
  }
}

TEST(ZfxGetTempFileName, TakesFileForAMissingPrefix) {
  expect_form(fresh_name(nullptr), "/tmp/file");
  expect_form(fresh_name(""), "/tmp/file");
}

TEST(ZfxGetTempFileName, StaysInItsFolderWhateverTheEnvironmentSays) {
  support::TemporaryFolder folder;
  support::EnvironmentVariable variable("TMPDIR", folder.path().c_str());
  expect_form(fresh_name("zfxt"), "/tmp/zfxt");
}

TEST(ZfxGetTempFileName, GivesAnotherNameEveryTimeAndCreatesNoneOfThem) {
  std::set<std::string> names;
  for (int i = 0; i < 100; ++i) {
    const std::string name = fresh_name("zfxt");
    EXPECT_TRUE(names.insert(name).second) << name;
    EXPECT_FALSE(fs::exists(fs::symlink_status(name))) << name;
  }
}

TEST(ZfxGetTempFileName, UsesEveryLetterAndDigit) {
  std::string seen;
  for (int i = 0; i < 1000; ++i) {
    seen += fresh_name("zfxt").substr(9);
  }
  EXPECT_EQ(std::set<char>(seen.begin(), seen.end()).size(), 62u);
}

TEST(ZfxGetTempFileName, CutsTheNameAtItsSize) {
  constexpr int32_t kLength = 16;  // "/tmp/", 5 of the prefix and 6
  for (int32_t size = 1; size <= kLength + 2; ++size) {
    char name[32];
    std::memset(name, '?', sizeof name);
    EXPECT_EQ(ZfxGetTempFileName(name, size, "zfxte"), 0);
    EXPECT_EQ(std::strlen(name), static_cast<std::size_t>(std::min(size - 1, kLength)));
    EXPECT_EQ(std::string(name).substr(0, 10), std::string("/tmp/zfxte").substr(0, std::strlen(name)));
    EXPECT_EQ(name[size], '?') << "wrote past " << size;
  }
}

TEST(ZfxGetTempFileName, ReportsAMissingBuffer) {
  EXPECT_EQ(ZfxGetTempFileName(nullptr, 64, "zfxt"), -1);
  for (const int32_t size : {0, -1, INT_MIN}) {
    char name[] = "same";
    EXPECT_EQ(ZfxGetTempFileName(name, size, "zfxt"), -1);
    EXPECT_STREQ(name, "same");
  }
}

TEST(ZfxGetTempFileName, PassesOverNamesThatAreTaken) {
  script = {.names_taken = 3};
  expect_form(fresh_name("zfxs-"), kScriptedPrefix);
  EXPECT_EQ(script.names_seen, 4);
  EXPECT_EQ(script.first_names.size(), 4u) << "a name was tried twice";
}

TEST(ZfxGetTempFileName, GivesUpWhenNoNameIsFree) {
  script = {.names_taken = LONG_MAX};
  char name[64] = "same";
  EXPECT_EQ(ZfxGetTempFileName(name, sizeof name, "zfxs-"), EEXIST);
  EXPECT_EQ(script.names_seen, TMP_MAX);
  EXPECT_STREQ(name, "same");
}

TEST(ZfxGetTempFileName, ReportsWhyANameCannotBeVerified) {
  script = {.name_error = EACCES};
  char name[64] = "same";
  EXPECT_EQ(ZfxGetTempFileName(name, sizeof name, "zfxs-"), EACCES);
  EXPECT_EQ(script.names_seen, 1);
  EXPECT_STREQ(name, "same");
}

TEST(ZfxGetTempFileName, VariesNamesByTheClockWithoutRandomBytes) {
  script = {.no_random_bytes = true};
  std::set<std::string> names;
  for (int i = 0; i < 50; ++i) {
    const std::string name = fresh_name("zfxs-");
    expect_form(name, kScriptedPrefix);
    names.insert(name);
  }
  EXPECT_GT(names.size(), 40u);
}

class WithoutTemporaryFolder : public support::FixedPathsTest {};

TEST_F(WithoutTemporaryFolder, ThereIsNoNameAndNoFile) {
  // In a process of its own, because an empty root has no way back.
  EXPECT_EXIT(
      {
        if (::chroot(support::kPrivateHome) != 0) std::_Exit(1);
        char name[64] = "same";
        if (ZfxGetTempFileName(name, sizeof name, "zfxt") != ENOENT) std::_Exit(2);
        if (std::strcmp(name, "same") != 0) std::_Exit(3);
        errno = 0;
        if (ZfxGetTempFile("zfxt") != -1 || errno != ENOENT) std::_Exit(4);
        std::_Exit(0);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST(ZfxGetTempFile, OpensANewNameWithoutCreatingIt) {
  script = {};
  EXPECT_EQ(ZfxGetTempFile("zfxs-"), -1);
  EXPECT_EQ(errno, ENOENT);
  expect_form(script.opened_path, kScriptedPrefix);
  EXPECT_EQ(script.opened_flags, O_RDWR);
}

TEST(ZfxGetTempFile, GivesTheDescriptorWhenTheFileTurnsUpInTime) {
  script = {.descriptor = 12345};
  EXPECT_EQ(ZfxGetTempFile("zfxs-"), 12345);
}

TEST(ZfxGetTempFile, OpensNothingWhenNoNameIsFree) {
  script = {.names_taken = LONG_MAX, .descriptor = 12345};
  errno = 0;
  EXPECT_EQ(ZfxGetTempFile("zfxs-"), -1);
  EXPECT_EQ(errno, EEXIST);
  EXPECT_EQ(script.opened_path, "");
}

TEST(ZfxGetTempFile, LeavesNothingBehind) {
  const int before = support::open_descriptors();
  for (const char *prefix : {"zfxt-", "", static_cast<const char *>(nullptr)}) {
    EXPECT_EQ(ZfxGetTempFile(prefix), -1);
  }
  EXPECT_EQ(support::open_descriptors(), before);
  for (const auto &entry : fs::directory_iterator("/tmp")) {
    EXPECT_NE(entry.path().filename().string().substr(0, 5), "zfxt-");
  }
}

}  // namespace
