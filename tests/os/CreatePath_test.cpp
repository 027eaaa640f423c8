#include "CreatePath.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "files.hpp"
#include "random_text.hpp"

namespace {

namespace fs = std::filesystem;

// Every test works relative to a temporary folder.
class CreatePathTest : public ::testing::Test {
 protected:
  support::TemporaryFolder folder_;
  support::CurrentFolder current_{folder_.path()};
};

std::vector<std::string> everything_below(const std::string &path) {
  std::vector<std::string> found;
  for (const auto &entry : fs::recursive_directory_iterator(path)) {
    found.push_back(fs::relative(entry.path(), path));
  }
  std::sort(found.begin(), found.end());
  return found;
}

TEST_F(CreatePathTest, CreatesEveryMissingDirectoryAtBothSeparators) {
  EXPECT_EQ(CreatePath("a\\b/c"), 0);
  EXPECT_EQ(everything_below("."), (std::vector<std::string>{"a", "a/b", "a/b/c"}));
  EXPECT_TRUE(fs::is_directory("a/b/c"));
}

TEST_F(CreatePathTest, StartsAtTheRootBehindALeadingSlash) {
  EXPECT_EQ(CreatePath((folder_ / "x/y").c_str()), 0);
  EXPECT_TRUE(fs::is_directory(folder_ / "x/y"));
}

TEST_F(CreatePathTest, StartsAtTheRootBehindALeadingBackslash) {
  std::string path = folder_ / "x/y";
  std::replace(path.begin(), path.end(), '/', '\\');
  EXPECT_EQ(CreatePath(path.c_str()), 0);
  EXPECT_TRUE(fs::is_directory(folder_ / "x/y"));
  EXPECT_EQ(everything_below("."), (std::vector<std::string>{"x", "x/y"}));
}

TEST_F(CreatePathTest, TakesRepeatedAndTrailingSeparatorsAsOne) {
  EXPECT_EQ(CreatePath("a//\\b\\\\/"), 0);
  EXPECT_EQ(everything_below("."), (std::vector<std::string>{"a", "a/b"}));
}

TEST_F(CreatePathTest, RefusesNullAndPathsWithoutAComponent) {
  for (const char *path : {static_cast<const char *>(nullptr), "", "/", "\\", "//\\/"}) {
    EXPECT_EQ(CreatePath(path), -1);
  }
}

TEST_F(CreatePathTest, IsContentWhenAllExistsAlready) {
  EXPECT_EQ(CreatePath("a/b"), 0);
  EXPECT_EQ(CreatePath("a/b"), 0);
  EXPECT_EQ(CreatePath("."), 0);
  EXPECT_EQ(CreatePath("a/../a/b"), 0);
}

TEST_F(CreatePathTest, AcceptsAnExistingComponentWhateverItsKind) {
  support::write_file("./file", "");
  EXPECT_EQ(CreatePath("file"), 0);
  EXPECT_TRUE(fs::is_regular_file("file"));
  fs::create_directory("directory");
  support::make_link("directory", "./link");
  EXPECT_EQ(CreatePath("link/below"), 0);
  EXPECT_TRUE(fs::is_directory("directory/below"));
}

TEST_F(CreatePathTest, ReturnsErrnoOfTheDirectoryThatCannotBeMade) {
  support::write_file("./a/file", "");
  EXPECT_EQ(CreatePath("a/b/../file/c/d"), ENOTDIR);
  EXPECT_TRUE(fs::is_directory("a/b")) << "what comes before the failure stays";
  EXPECT_EQ(CreatePath(std::string(256, 'n').c_str()), ENAMETOOLONG);
  EXPECT_EQ(CreatePath(("before/" + std::string(256, 'n')).c_str()), ENAMETOOLONG);
  EXPECT_TRUE(fs::is_directory("before"));
}

TEST_F(CreatePathTest, ReturnsErrnoForALinkThatLeadsNowhere) {
  support::make_link("nowhere", "./dangling");
  EXPECT_EQ(CreatePath("dangling"), EEXIST);
  EXPECT_EQ(CreatePath("dangling/below"), EEXIST);
}

TEST_F(CreatePathTest, ReturnsErrnoWhereTheUserMayNotWrite) {
  fs::create_directory("closed");
  ::chmod("closed", 0500);
  EXPECT_EQ(CreatePath("closed/a"), ::geteuid() == 0 ? 0 : EACCES);
  EXPECT_EQ(CreatePath("/proc/self/a"), ENOENT) << "not even root may";
}

TEST_F(CreatePathTest, GivesNewDirectoriesTheMode0776LessTheUmask) {
  struct stat status;
  for (const mode_t mask : {mode_t{0}, mode_t{022}, mode_t{077}}) {
    const mode_t before = ::umask(mask);
    const std::string name = "mask" + std::to_string(mask);
    EXPECT_EQ(CreatePath(name.c_str()), 0);
    ::umask(before);
    ASSERT_EQ(::stat(name.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0776u & ~mask);
  }
}

TEST_F(CreatePathTest, CutsThePathAt1023Characters) {
  for (const std::size_t length : {1022u, 1023u, 1024u, 1025u, 5000u}) {
    fs::remove_all("d");
    std::string path = "d";
    while (path.size() < length) {
      path += path.size() % 100 == 0 ? '/' : 'd';
    }
    path.back() = 'e';
    EXPECT_EQ(CreatePath(path.c_str()), 0) << length;
    const std::string cut = path.substr(0, 1023);
    EXPECT_TRUE(fs::is_directory(cut)) << length;
    EXPECT_TRUE(fs::is_empty(cut)) << length;
    EXPECT_EQ(::access(path.c_str(), F_OK) == 0, path == cut) << length;
  }
}

TEST_F(CreatePathTest, LetsSeveralCallersCreateTheSamePathAtOnce) {
  for (int round = 0; round < 10; ++round) {
    std::string path = std::to_string(round);
    for (int level = 0; level < 10; ++level) {
      path += "/level";
    }
    std::atomic<int> waiting = 4;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&] {
        --waiting;
        while (waiting > 0) {
          std::this_thread::yield();
        }
        EXPECT_EQ(CreatePath(path.c_str()), 0);
      });
    }
    for (std::thread &thread : threads) {
      thread.join();
    }
    EXPECT_TRUE(fs::is_directory(path));
  }
}

TEST_F(CreatePathTest, AgreesWithTheStandardLibraryOnRandomPaths) {
  std::mt19937 random(20261121);
  const std::string alphabet = "ab./\\";
  fs::create_directories("ours/x/y");
  fs::create_directories("theirs/x/y");
  for (int round = 0; round < 300; ++round) {
    std::string path = support::random_text(random, random() % 8, alphabet);
    path.insert(0, "x/y/");  // so that ".." stays inside
    std::string slashed = path;
    std::replace(slashed.begin(), slashed.end(), '\\', '/');
    EXPECT_EQ(CreatePath(("ours/" + path).c_str()), 0) << path;
    // Component by component, because the standard library makes no "a" for "a/..".
    fs::path built = "theirs";
    for (const fs::path &component : fs::path(slashed)) {
      if (component.empty()) continue;
      built /= component;
      fs::create_directory(built);
    }
  }
  EXPECT_EQ(everything_below("ours"), everything_below("theirs"));
}

}  // namespace
