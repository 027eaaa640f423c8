#include "dataarea.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <filesystem>
#include <string>

#include "files.hpp"
#include "private_root.hpp"

namespace {

namespace fs = std::filesystem;

// While it lives, a path can be queried only so many times, then never again.
class QueryLimit {
 public:
  QueryLimit(const char *path, int calls) : path_(path), calls_left_(calls) { active_ = this; }
  ~QueryLimit() { active_ = nullptr; }
  QueryLimit(const QueryLimit &) = delete;
  QueryLimit &operator=(const QueryLimit &) = delete;

  static bool refuses(const char *path) {
    return active_ != nullptr && std::strcmp(path, active_->path_) == 0 && active_->calls_left_-- <= 0;
  }

 private:
  inline static QueryLimit *active_ = nullptr;
  const char *path_;
  int calls_left_;
};

}  // namespace

// Stands before the C library's function of the name, for the library under test too.
int stat(const char *path, struct stat *result) noexcept {
  if (QueryLimit::refuses(path)) {
    errno = EIO;
    return -1;
  }
  return ::fstatat(AT_FDCWD, path, result, 0);
}

namespace {

const std::string kVar = "/usr/local/zorv/var";
constexpr uint32_t kAll = 0x3E;
constexpr char kNotConfigured[] = "The ZORV data area is not configured";

struct Answer {
  int32_t result = -1;
  std::string path;
  std::string message;
};

// "untouched" in the path tells that the area was not written.
Answer ask(uint32_t checks) {
  char path[2048] = "untouched";
  char message[4096] = "soiled";
  const int32_t result = GetZorvDataArea(path, sizeof path, checks, message, sizeof message);
  return {result, path, message};
}

void expect_answer(uint32_t checks, int32_t result, const std::string &message) {
  const Answer answer = ask(checks);
  EXPECT_EQ(answer.result, result);
  EXPECT_EQ(answer.message, message);
  EXPECT_EQ(answer.path, "untouched");
}

void expect_success(uint32_t checks, const std::string &path) {
  const Answer answer = ask(checks);
  EXPECT_EQ(answer.result, 0);
  EXPECT_EQ(answer.message, "");
  EXPECT_EQ(answer.path, path);
}

void make_complete(const std::string &area) {
  for (const char *name : {"/conf/sys", "/conf/cof", "/log", "/db", "/ctl"}) {
    fs::create_directories(area + name);
  }
  support::write_file(area + "/ctl/CONTROL.BAF", "");
  support::write_file(area + "/ctl/CONTROL.BIF", "");
}

// Makes a folder whose absolute path has the given length, and returns that path.
std::string make_folder_of_length(std::string path, std::size_t length) {
  while (path.size() + 201 < length) {
    path += "/" + std::string(100, 'd');
  }
  path += "/" + std::string(length - path.size() - 1, 'e');
  EXPECT_EQ(path.size(), length);
  fs::create_directories(path);
  return path;
}

class GetZorvDataAreaTest : public support::FixedPathsTest {};

TEST_F(GetZorvDataAreaTest, IsNotConfiguredWhenTheEntryIsAbsentWhateverIsChecked) {
  for (const uint32_t checks : {0u, 0x01u, 0x02u, 0x04u, 0x08u, 0x10u, 0x20u, kAll, UINT32_MAX}) {
    expect_answer(checks, 2, kNotConfigured);
  }
}

TEST_F(GetZorvDataAreaTest, IsTheEntryItselfWhenThatIsADirectory) {
  make_complete(kVar);
  expect_success(kAll, kVar);
}

TEST_F(GetZorvDataAreaTest, IsNotConfiguredWhenTheEntryIsAFile) {
  support::write_file(kVar, "");
  expect_answer(0, 2, kNotConfigured);
  expect_answer(kAll, 2, kNotConfigured);
}

TEST_F(GetZorvDataAreaTest, TakesARelativeLinkFromTheLinksOwnDirectory) {
  make_complete("/usr/local/zorv/data");
  support::make_link("data", kVar);
  expect_success(kAll, "/usr/local/zorv/data");
}

TEST_F(GetZorvDataAreaTest, KeepsDotsOfARelativeLinkAsTheyStand) {
  make_complete("/usr/local/zorv/data");
  support::make_link("../zorv/./data", kVar);
  expect_success(kAll, "/usr/local/zorv/../zorv/./data");
}

TEST_F(GetZorvDataAreaTest, TakesAnAbsoluteLinkAsItIs) {
  support::TemporaryFolder folder;
  make_complete(folder / "area");
  support::make_link(folder / "area", kVar);
  expect_success(kAll, folder / "area");
}

TEST_F(GetZorvDataAreaTest, ReadsOneLinkOnlyWhenLinksAreChained) {
  make_complete("/usr/local/zorv/data");
  support::make_link("data", "/usr/local/zorv/second");
  support::make_link("second", kVar);
  expect_success(kAll, "/usr/local/zorv/second");
}

TEST_F(GetZorvDataAreaTest, IsNotConfiguredWhenTheLinkLeadsNowhere) {
  support::make_link("nowhere", kVar);
  expect_answer(0, 2, kNotConfigured);
  expect_answer(kAll, 2, kNotConfigured);
}

TEST_F(GetZorvDataAreaTest, IsNotConfiguredWhenTheLinkLeadsToItself) {
  support::make_link("var", kVar);
  expect_answer(0, 2, kNotConfigured);
}

TEST_F(GetZorvDataAreaTest, IsNotConfiguredWhenTheTargetCannotBeQueried) {
  fs::create_directories("/usr/local/zorv/data");
  support::make_link("data", kVar);
  const QueryLimit limit("/usr/local/zorv/data", 0);
  expect_answer(0, 2, kNotConfigured);
}

TEST_F(GetZorvDataAreaTest, OnlyAsksWhetherTheAreaIsConfiguredWithoutChecks) {
  fs::create_directories(kVar);
  expect_success(0, "untouched");
}

TEST_F(GetZorvDataAreaTest, CountsALinkToAFileAsConfiguredUntilItIsChecked) {
  support::write_file("/usr/local/zorv/data", "");
  support::make_link("data", kVar);
  expect_success(0, "untouched");
  expect_answer(0x02, 20, "The ZORV data area is not a directory: /usr/local/zorv/data");
}

TEST_F(GetZorvDataAreaTest, GivesErrnoWhenTheAreaItselfCannotBeQueriedAnyMore) {
  make_complete("/usr/local/zorv/data");
  support::make_link("data", kVar);
  const QueryLimit limit("/usr/local/zorv/data", 1);
  expect_answer(0x02, EIO, "The ZORV data area does not exist: /usr/local/zorv/data");
}

TEST_F(GetZorvDataAreaTest, ChecksInAFixedOrderUpToTheFirstFailure) {
  fs::create_directories(kVar);
  const auto expect_missing = [](const std::string &name) {
    expect_answer(kAll, 20,
                  "The " + name + " directory in the ZORV data area does not exist: " + kVar + "/" + name);
  };
  expect_missing("conf/sys");
  fs::create_directories(kVar + "/conf/sys");
  expect_missing("conf/cof");
  fs::create_directories(kVar + "/conf/cof");
  expect_missing("log");
  fs::create_directories(kVar + "/log");
  expect_missing("db");
  fs::create_directories(kVar + "/db");
  expect_missing("ctl");
  fs::create_directories(kVar + "/ctl");
  expect_answer(kAll, 2, "The CONTROL.BAF file was not found at " + kVar + "/ctl/CONTROL.BAF");
  support::write_file(kVar + "/ctl/CONTROL.BAF", "");
  expect_answer(kAll, 2, "The CONTROL.BIF file was not found at " + kVar + "/ctl/CONTROL.BIF");
  support::write_file(kVar + "/ctl/CONTROL.BIF", "");
  expect_success(kAll, kVar);
}

struct CheckedDirectory {
  uint32_t bit;
  const char *name;
};
constexpr CheckedDirectory kDirectories[] = {
    {0x02, "conf/sys"}, {0x04, "conf/cof"}, {0x10, "log"}, {0x20, "db"}, {0x08, "ctl"},
};

TEST_F(GetZorvDataAreaTest, LooksForOneDirectoryPerBitAndForNothingElse) {
  for (const auto &[bit, name] : kDirectories) {
    make_complete(kVar);
    expect_success(bit, kVar);
    fs::remove_all(kVar + "/" + name);
    expect_answer(
        bit, 20,
        std::string("The ") + name + " directory in the ZORV data area does not exist: " + kVar + "/" + name);
    expect_success(kAll & ~bit, kVar);
  }
}

TEST_F(GetZorvDataAreaTest, WantsDirectoriesToBeDirectories) {
  for (const auto &[bit, name] : kDirectories) {
    make_complete(kVar);
    fs::remove_all(kVar + "/" + name);
    support::write_file(kVar + "/" + name, "");
    expect_answer(bit, 20,
                  std::string("The ") + name +
                      " directory in the ZORV data area is not a directory: " + kVar + "/" + name);
    fs::remove(kVar + "/" + name);
  }
}

TEST_F(GetZorvDataAreaTest, WantsControlFilesToBeRegularFiles) {
  for (const std::string name : {"CONTROL.BAF", "CONTROL.BIF"}) {
    make_complete(kVar);
    fs::remove(kVar + "/ctl/" + name);
    const std::string message = "The " + name + " file was not found at " + kVar + "/ctl/" + name;
    expect_answer(0x08, 2, message);
    fs::create_directory(kVar + "/ctl/" + name);
    expect_answer(0x08, 2, message);
    fs::remove(kVar + "/ctl/" + name);
  }
}

TEST_F(GetZorvDataAreaTest, FollowsLinksInsideTheArea) {
  make_complete("/usr/local/zorv/elsewhere");
  fs::create_directories(kVar);
  for (const char *name : {"conf", "log", "db", "ctl"}) {
    support::make_link(std::string("../elsewhere/") + name, kVar + "/" + name);
  }
  expect_success(kAll, kVar);
}

TEST_F(GetZorvDataAreaTest, ChecksOnlyTheAreaForBitsWithoutAMeaning) {
  fs::create_directories(kVar);
  for (const uint32_t checks : {0x01u, 0x40u, 0x80000000u, ~kAll}) {
    expect_success(checks, kVar);
  }
}

TEST_F(GetZorvDataAreaTest, CutsThePathAtItsSize) {
  fs::create_directories(kVar);
  const auto length = static_cast<int32_t>(kVar.size());
  for (int32_t size = length - 1; size <= length + 2; ++size) {
    char path[64];
    std::memset(path, '?', sizeof path);
    EXPECT_EQ(GetZorvDataArea(path, size, 0x01, nullptr, 0), 0);
    EXPECT_EQ(path, kVar.substr(0, static_cast<std::size_t>(size) - 1)) << size;
    EXPECT_EQ(path[size], '?') << "wrote past " << size;
  }
}

TEST_F(GetZorvDataAreaTest, CutsTheMessageAtItsSize) {
  const auto length = static_cast<int32_t>(std::strlen(kNotConfigured));
  for (int32_t size = length - 1; size <= length + 2; ++size) {
    char message[64];
    std::memset(message, '?', sizeof message);
    EXPECT_EQ(GetZorvDataArea(nullptr, 0, kAll, message, size), 2);
    EXPECT_EQ(message, std::string(kNotConfigured).substr(0, static_cast<std::size_t>(size) - 1)) << size;
    EXPECT_EQ(message[size], '?') << "wrote past " << size;
  }
}

TEST_F(GetZorvDataAreaTest, ClearsTheMessageOnSuccessEvenInOneByte) {
  fs::create_directories(kVar);
  char message[2] = {'a', 'b'};
  EXPECT_EQ(GetZorvDataArea(nullptr, 0, 0, message, 1), 0);
  EXPECT_EQ(message[0], '\0');
  EXPECT_EQ(message[1], 'b');
}

TEST_F(GetZorvDataAreaTest, WritesNothingIntoMissingOrEmptyAreas) {
  make_complete(kVar);
  EXPECT_EQ(GetZorvDataArea(nullptr, 100, kAll, nullptr, 100), 0);
  for (const int32_t size : {0, -1, INT_MIN}) {
    char path[2] = {'a', 'b'};
    char message[2] = {'a', 'b'};
    EXPECT_EQ(GetZorvDataArea(path, size, kAll, message, size), 0);
    EXPECT_EQ(path[0], 'a');
    EXPECT_EQ(message[0], 'a');
  }
}

TEST_F(GetZorvDataAreaTest, ReadsLinkTargetsOfUpTo1023Characters) {
  support::TemporaryFolder folder;
  for (const std::size_t length : {1022u, 1023u}) {
    const std::string area = make_folder_of_length(folder.path(), length);
    support::make_link(area, kVar);
    expect_success(0x01, area);
    fs::remove(kVar);
  }
  // Of a longer target, what counts is what its first 1023 characters name: here the folder made last.
  const std::string area = make_folder_of_length(folder.path(), 1024);
  support::make_link(area, kVar);
  expect_success(0x01, area.substr(0, 1023));
  fs::remove(area);
  expect_answer(0x01, 2, kNotConfigured);  // the entry itself leads nowhere now
  fs::create_directory(area);
  fs::remove(area.substr(0, 1023));
  expect_answer(0x01, 2, kNotConfigured);
}

TEST_F(GetZorvDataAreaTest, GivesTheLongestRelativeTargetWhole) {
  const std::string area = make_folder_of_length("/usr/local/zorv", 16 + 1023);
  support::make_link(area.substr(16), kVar);
  expect_success(0x01, area);
}

TEST_F(GetZorvDataAreaTest, LooksAt1023CharactersOfAPathInsideTheArea) {
  support::TemporaryFolder folder;
  for (const std::size_t length : {1022u, 1023u, 1024u}) {
    const std::string area = make_folder_of_length(folder.path(), length - 4);
    support::make_link(area, kVar);
    const std::string cut = (area + "/log").substr(0, 1023);
    expect_answer(0x10, 20, "The log directory in the ZORV data area does not exist: " + cut);
    fs::create_directory(cut);
    expect_success(0x10, area);
    fs::remove_all(area);
    fs::remove(kVar);
  }
}

TEST_F(GetZorvDataAreaTest, PrintsNothing) {
  support::CapturedDescriptor output(1);
  support::CapturedDescriptor errors(2);
  GetZorvDataArea(nullptr, 0, kAll, nullptr, 0);
  EXPECT_EQ(output.text(), "");
  EXPECT_EQ(errors.text(), "");
}

TEST_F(GetZorvDataAreaTest, LeavesNoDescriptorOpen) {
  make_complete(kVar);
  const int before = support::open_descriptors();
  ask(kAll);
  EXPECT_EQ(support::open_descriptors(), before);
}

}  // namespace
