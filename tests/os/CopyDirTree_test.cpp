#include "CopyDirTree.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "files.hpp"

namespace {

namespace fs = std::filesystem;

// While it lives, every path that begins with "phantom" is a directory, and how it is asked for is noted.
class Phantom {
 public:
  Phantom() { active_ = this; }
  ~Phantom() { active_ = nullptr; }
  Phantom(const Phantom &) = delete;
  Phantom &operator=(const Phantom &) = delete;

  static Phantom *standing_for(const char *path) {
    return active_ != nullptr && std::string_view(path).starts_with("phantom") ? active_ : nullptr;
  }

  long queries = 0;
  std::size_t longest = 0;
  bool count_descriptors = false;
  int most_descriptors = 0;

 private:
  inline static Phantom *active_ = nullptr;
};

}  // namespace

// Stands before the C library's function of the name, for the library under test too.
int stat(const char *path, struct stat *result) noexcept {
  Phantom *phantom = Phantom::standing_for(path);
  if (phantom == nullptr) return ::fstatat(AT_FDCWD, path, result, 0);
  ++phantom->queries;
  phantom->longest = std::max(phantom->longest, std::string_view(path).size());
  if (phantom->count_descriptors) {
    phantom->most_descriptors = std::max(phantom->most_descriptors, support::open_descriptors());
  }
  return ::fstatat(AT_FDCWD, "/", result, 0);
}

namespace {

// The current directory is an empty folder; source and destination lie in another one.
class CopyDirTreeTest : public ::testing::Test {
 protected:
  [[nodiscard]] int32_t copy(const std::string &destination = "dst",
                             const std::string &source = "src") const {
    return CopyDirTree((other_ / destination).c_str(), (other_ / source).c_str());
  }

  void make(const std::string &name) const { fs::create_directory(other_ / name); }

  [[nodiscard]] std::set<std::string> made() const {
    std::set<std::string> names;
    for (const auto &entry : fs::directory_iterator(other_.path())) {
      const std::string name = entry.path().filename();
      if (name.starts_with("dst")) names.insert(name);
    }
    return names;
  }

  support::TemporaryFolder here_;
  support::TemporaryFolder other_;
  support::CurrentFolder current_{here_.path()};
};

using Names = std::set<std::string>;

std::vector<std::string> names_in_listing_order() {
  std::vector<std::string> names;
  for (const auto &entry : fs::directory_iterator(".")) {
    names.push_back(entry.path().filename());
  }
  return names;
}

TEST_F(CopyDirTreeTest, ReportsMissingArguments) {
  EXPECT_EQ(CopyDirTree(nullptr, "/"), -1);
  EXPECT_EQ(CopyDirTree("x", nullptr), -1);
  EXPECT_EQ(CopyDirTree(nullptr, nullptr), -1);
  EXPECT_TRUE(fs::is_empty("."));
}

TEST_F(CopyDirTreeTest, ReturnsErrnoForASourceThatCannotBeQueriedAndMakesNothing) {
  EXPECT_EQ(copy(), ENOENT);
  EXPECT_EQ(copy("dst", std::string(256, 'n')), ENAMETOOLONG);
  EXPECT_EQ(CopyDirTree((other_ / "dst").c_str(), ""), ENOENT);
  EXPECT_EQ(made(), Names{});
}

TEST_F(CopyDirTreeTest, ReturnsErrnoForADestinationThatCannotBeMade) {
  make("src");
  EXPECT_EQ(copy("missing/dst"), ENOENT);
  EXPECT_EQ(copy(std::string(256, 'n')), ENAMETOOLONG);
  support::make_link("nowhere", other_ / "dangling");
  EXPECT_EQ(copy("dangling"), EEXIST);
  EXPECT_EQ(CopyDirTree("", (other_ / "src").c_str()), ENOENT);
}

TEST_F(CopyDirTreeTest, ReportsPathsThatAreTooLongForTheSystem) {
  make("src");
  const std::string filler(5000, '/');
  EXPECT_EQ(CopyDirTree("dst", filler.c_str()), ENAMETOOLONG);
  EXPECT_EQ(CopyDirTree((filler + "dst").c_str(), (other_ / "src").c_str()), ENAMETOOLONG);
}

TEST_F(CopyDirTreeTest, MakesTheDestinationWithMode0776LessTheUmask) {
  make("src");
  for (const mode_t mask : {mode_t{0}, mode_t{027}}) {
    const mode_t before = ::umask(mask);
    EXPECT_EQ(copy(), 0);
    ::umask(before);
    struct stat status;
    ASSERT_EQ(::stat((other_ / "dst").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0776u & ~mask);
    fs::remove(other_ / "dst");
  }
}

TEST_F(CopyDirTreeTest, AcceptsADestinationThatExistsAndASourceThatIsAFile) {
  support::write_file(other_ / "src", "");
  support::write_file(other_ / "dst", "kept");
  EXPECT_EQ(copy(), 0);
  EXPECT_EQ(support::read_file(other_ / "dst"), "kept");
}

TEST_F(CopyDirTreeTest, CopiesNeitherFilesNorDirectoriesInsideTheSource) {
  support::write_file(other_ / "src/file", "text");
  make("src/below");
  fs::create_directory("below");
  EXPECT_EQ(copy(), 0);
  EXPECT_EQ(made(), Names{"dst"});
  EXPECT_TRUE(fs::is_empty(other_ / "dst"));
}

TEST_F(CopyDirTreeTest, TakesItsNamesFromTheCurrentDirectoryAndJoinsThemWithABackslash) {
  make("src");
  make("src\\sub");
  fs::create_directory("sub");
  EXPECT_EQ(copy(), 0);
  EXPECT_EQ(made(), (Names{"dst", "dst\\sub"}));
}

TEST_F(CopyDirTreeTest, LooksForTheSameNamesAgainOneLevelDown) {
  for (const char *name : {"src", "src\\sub", "src\\sub\\sub"}) {
    make(name);
  }
  fs::create_directory("sub");
  EXPECT_EQ(copy(), 0);
  EXPECT_EQ(made(), (Names{"dst", "dst\\sub", "dst\\sub\\sub"}));
}

TEST_F(CopyDirTreeTest, PassesOverWhatCannotBeOpenedAsADirectory) {
  support::write_file("./file", "");
  ASSERT_EQ(::mkfifo("fifo", 0600), 0);
  support::make_link("loop", "./loop");
  support::make_link("nowhere", "./dangling");
  fs::create_directory("sub");
  for (const char *name : {"src", "src\\file", "src\\fifo", "src\\loop", "src\\dangling", "src\\sub"}) {
    make(name);
  }
  EXPECT_EQ(copy(), 0);
  EXPECT_EQ(made(), (Names{"dst", "dst\\sub"}));
}

TEST_F(CopyDirTreeTest, PassesOverADirectoryThatTheUserMayNotRead) {
  fs::create_directory("closed");
  ::chmod("closed", 0300);
  make("src");
  make("src\\closed");
  EXPECT_EQ(copy(), 0);
  EXPECT_EQ(made(), ::geteuid() == 0 ? (Names{"dst", "dst\\closed"}) : Names{"dst"});
}

TEST_F(CopyDirTreeTest, TakesTheNameOfALinkToADirectory) {
  support::make_link("/", "./link");
  make("src");
  make("src\\link");
  EXPECT_EQ(copy(), 0);
  EXPECT_EQ(made(), (Names{"dst", "dst\\link"}));
}

TEST_F(CopyDirTreeTest, PassesOverTheDotEntries) {
  for (const char *name : {"src", "src\\.", "src\\..", "src\\sub", "src\\...", "src\\.hidden"}) {
    make(name);
  }
  for (const char *name : {"sub", "...", ".hidden"}) {
    fs::create_directory(name);
  }
  EXPECT_EQ(copy(), 0);
  EXPECT_EQ(made(), (Names{"dst", "dst\\sub", "dst\\...", "dst\\.hidden"}));
}

TEST_F(CopyDirTreeTest, StopsTheWalkAtTheFirstNameThatFailsAndStillReturnsZero) {
  for (int i = 0; i < 8; ++i) {
    fs::create_directory("name" + std::to_string(i));
  }
  const std::vector<std::string> names = names_in_listing_order();
  for (std::size_t missing = 0; missing < names.size(); ++missing) {
    make("src");
    Names expected{"dst"};
    for (std::size_t i = 0; i < names.size(); ++i) {
      if (i != missing) make("src\\" + names[i]);
      if (i < missing) expected.insert("dst\\" + names[i]);
    }
    EXPECT_EQ(copy(), 0);
    EXPECT_EQ(made(), expected);
    for (const auto &entry : fs::directory_iterator(other_.path())) {
      fs::remove(entry);
    }
  }
}

TEST_F(CopyDirTreeTest, StopsWhenADestinationCannotBeMade) {
  fs::create_directory("sub");
  make("src");
  make("src\\sub");
  const std::string destination = "dst" + std::string(250, 'd');
  EXPECT_EQ(copy(destination), 0);
  EXPECT_EQ(made(), Names{destination});
}

TEST_F(CopyDirTreeTest, ReturnsZeroWhenTheCurrentDirectoryIsGone) {
  make("src");
  fs::create_directory("gone");
  const support::CurrentFolder current(here_ / "gone");
  fs::remove(here_ / "gone");
  EXPECT_EQ(copy(), 0);
  EXPECT_EQ(made(), Names{"dst"});
}

TEST_F(CopyDirTreeTest, EndsWhereNamesCannotGrowWhenItMakesItsOwnSources) {
  // Each destination is the source one level down: "s\\a" for "s", "s\\a\\a" for "s\\a", and so on.
  fs::create_directory("a");
  make("s");
  EXPECT_EQ(copy("s\\a", "s"), 0);
  std::size_t longest = 0;
  std::size_t count = 0;
  for (const auto &entry : fs::directory_iterator(other_.path())) {
    longest = std::max(longest, entry.path().filename().string().size());
    ++count;
  }
  EXPECT_EQ(count, 1u + 127u);
  EXPECT_EQ(longest, 255u);
}

TEST_F(CopyDirTreeTest, CopiesATreeIntoItself) {
  fs::create_directory("sub");
  make("src");
  make("src\\sub");
  EXPECT_EQ(copy("src", "src"), 0);
}

TEST_F(CopyDirTreeTest, GoesAtMost127NamesDeep) {
  fs::create_directory("a");
  Phantom phantom;
  phantom.count_descriptors = true;
  const int before = support::open_descriptors();
  EXPECT_EQ(CopyDirTree("phantom-to", "phantom-from"), 0);
  EXPECT_EQ(phantom.longest, std::string("phantom-from").size() + std::size_t{2} * 127);
  EXPECT_EQ(phantom.queries, 2 * (1 + 127));
  EXPECT_LE(phantom.most_descriptors, before + 128);
  EXPECT_EQ(support::open_descriptors(), before);
}

TEST_F(CopyDirTreeTest, BuildsPathsOfUpTo4095Characters) {
  // "\" and a name of 31 add 32 to the path of each level; 127 of them go beyond 4095.
  fs::create_directory(std::string(31, 'a'));
  for (const std::size_t start : {30u, 31u, 32u, 33u}) {
    Phantom phantom;
    const std::string source = "phantom" + std::string(start - 7, 's');
    EXPECT_EQ(CopyDirTree("phantom", source.c_str()), 0);
    const std::size_t levels = std::min<std::size_t>(127, (4095 - start) / 32);
    EXPECT_EQ(phantom.longest, start + 32 * levels) << start;
  }
  for (const std::size_t start : {30u, 31u, 32u, 33u}) {
    Phantom phantom;
    const std::string destination = "phantom" + std::string(start - 7, 'd');
    EXPECT_EQ(CopyDirTree(destination.c_str(), "phantom"), 0);
    const std::size_t levels = std::min<std::size_t>(127, (4095 - start) / 32);
    EXPECT_EQ(phantom.longest, start + 32 * levels) << start;
  }
}

TEST_F(CopyDirTreeTest, VisitsAtMost16384DirectoriesBelowEachNameOfTheFirstLevel) {
  fs::create_directory("a");
  fs::create_directory("b");  // two names and 127 levels: more visits than could ever end
  Phantom phantom;
  EXPECT_EQ(CopyDirTree("phantom-to", "phantom-from"), 0);
  EXPECT_EQ(phantom.queries, 2 * (1 + 2 * 16384));
}

TEST_F(CopyDirTreeTest, EndsWhenDescriptorsRunOut) {
  fs::create_directory("a");
  make("src");
  make("src\\a");
  rlimit before;
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  rlimit few = before;
  few.rlim_cur = 64;
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
  std::vector<int> taken;
  for (int file = 0; (file = ::open("/", O_RDONLY | O_CLOEXEC)) >= 0;) {
    taken.push_back(file);
  }
  EXPECT_EQ(copy(), 0);
  for (const int file : taken) {
    ::close(file);
  }
  ::setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(made(), Names{"dst"});
}

TEST_F(CopyDirTreeTest, LeavesNoDescriptorOpen) {
  make("src");
  make("src\\sub");
  fs::create_directory("sub");
  const int before = support::open_descriptors();
  EXPECT_EQ(copy(), 0);
  EXPECT_EQ(support::open_descriptors(), before);
}

}  // namespace
