#include "FileStatus.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <string>

#include "files.hpp"

extern "C" int64_t size_seen_from_c(const char *path);

namespace {

using support::TemporaryFolder;

ZfxFileStatus soiled_status() {
  ZfxFileStatus status;
  std::memset(&status, 0xA5, sizeof status);
  return status;
}

void expect_all_zero(const ZfxFileStatus &status) {
  constexpr unsigned char zero[sizeof status] = {};
  EXPECT_EQ(std::memcmp(&status, zero, sizeof zero), 0) << "the bytes between the fields count";
  EXPECT_EQ(status.flags, 0u);
  EXPECT_EQ(status.change_time, 0);
  EXPECT_EQ(status.modification_time, 0);
  EXPECT_EQ(status.access_time, 0);
  EXPECT_EQ(status.size, 0);
}

void expect_failure(const std::string &path, int error) {
  ZfxFileStatus status = soiled_status();
  EXPECT_EQ(ZfxStatFile(&status, path.c_str()), error) << path;
  expect_all_zero(status);
}

uint32_t flags_of(const std::string &path) {
  ZfxFileStatus status = soiled_status();
  EXPECT_EQ(ZfxStatFile(&status, path.c_str()), 0) << path;
  return status.flags;
}

TEST(ZfxFileStatus, IsTheSameRecordForCallersInC) {
  TemporaryFolder folder;
  support::write_file(folder / "file", "12345");
  EXPECT_EQ(size_seen_from_c((folder / "file").c_str()), 5);
  EXPECT_EQ(size_seen_from_c((folder / "missing").c_str()), -1);
}

TEST(ZfxFileStatus, HasTheAgreedFlagValues) {
  EXPECT_EQ(ZFX_FILE_DEVICE, 0x04u);
  EXPECT_EQ(ZFX_FILE_DIRECTORY, 0x08u);
  EXPECT_EQ(ZFX_FILE_REGULAR, 0x40u);
  EXPECT_EQ(ZFX_FILE_LINK, 0x100u);
  EXPECT_EQ(ZFX_FILE_PIPE, 0x4000u);
  EXPECT_EQ(ZFX_FILE_EXECUTABLE, 0x8000u);
}

TEST(ZfxStatFile, ReturnsErrnoAndLeavesAllFieldsZeroOnFailure) {
  TemporaryFolder folder;
  support::write_file(folder / "file", "");
  support::make_link("loop", folder / "loop");
  support::make_link("nowhere", folder / "dangling");
  expect_failure(folder / "missing", ENOENT);
  expect_failure(folder / "dangling", ENOENT);
  expect_failure(folder / "file/below", ENOTDIR);
  expect_failure(folder / "loop", ELOOP);
  expect_failure(folder / std::string(256, 'n'), ENAMETOOLONG);
  expect_failure(std::string(5000, '/'), ENAMETOOLONG);
  expect_failure("", ENOENT);
}

TEST(ZfxStatFile, ReportsMissingArguments) {
  ZfxFileStatus status = soiled_status();
  EXPECT_EQ(ZfxStatFile(&status, nullptr), -1);
  expect_all_zero(status);
  EXPECT_EQ(ZfxStatFile(nullptr, "/"), -1);
  EXPECT_EQ(ZfxStatFile(nullptr, nullptr), -1);
}

TEST(ZfxStatFile, TellsTheKindOfFile) {
  TemporaryFolder folder;
  support::write_file(folder / "file", "");
  ::chmod((folder / "file").c_str(), 0644);
  ::mkdir((folder / "directory").c_str(), 0700);
  ::chmod((folder / "directory").c_str(), 0600);
  ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0600), 0);
  EXPECT_EQ(flags_of(folder / "file"), ZFX_FILE_REGULAR);
  EXPECT_EQ(flags_of(folder / "directory"), ZFX_FILE_DIRECTORY);
  EXPECT_EQ(flags_of(folder / "fifo"), ZFX_FILE_PIPE);
  EXPECT_EQ(flags_of("/dev/null"), ZFX_FILE_DEVICE);
}

TEST(ZfxStatFile, CountsASocketWithTheFifos) {
  TemporaryFolder folder;
  const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, (folder / "socket").c_str(), sizeof address.sun_path - 1);
  ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
  ::chmod(address.sun_path, 0600);
  EXPECT_EQ(flags_of(address.sun_path), ZFX_FILE_PIPE);
  ::close(socket);
}

TEST(ZfxStatFile, TellsNoKindOfWhatHasNoneOfThem) {
  const int event = ::eventfd(0, EFD_CLOEXEC);
  EXPECT_EQ(flags_of("/proc/self/fd/" + std::to_string(event)) & ~ZFX_FILE_EXECUTABLE, 0U);
  ::close(event);
}

TEST(ZfxStatFile, CountsABlockDeviceWithTheCharacterDevices) {
  std::error_code refused;
  for (const auto &entry : std::filesystem::recursive_directory_iterator("/dev", refused)) {
    if (!entry.is_block_file(refused)) continue;
    EXPECT_EQ(flags_of(entry.path()) & ~ZFX_FILE_EXECUTABLE, ZFX_FILE_DEVICE);
    return;
  }
  TemporaryFolder folder;
  if (::mknod((folder / "block").c_str(), S_IFBLK | 0600, 0) != 0) {
    GTEST_SKIP() << "no block device here, and none can be made";
  }
  EXPECT_EQ(flags_of(folder / "block"), ZFX_FILE_DEVICE);
}

TEST(ZfxStatFile, FollowsSymbolicLinks) {
  TemporaryFolder folder;
  support::write_file(folder / "file", "123");
  ::chmod((folder / "file").c_str(), 0644);
  support::make_link("file", folder / "link");
  support::make_link("link", folder / "second");
  EXPECT_EQ(flags_of(folder / "second"), ZFX_FILE_REGULAR);
  support::make_link(".", folder / "here");
  EXPECT_EQ(flags_of(folder / "here") & ~ZFX_FILE_EXECUTABLE, ZFX_FILE_DIRECTORY);
}

TEST(ZfxStatFile, CallsAFileExecutableForItsOwnerOrForOthersWhateverTheGroup) {
  TemporaryFolder folder;
  const std::string path = folder / "program";
  support::write_file(path, "");
  for (mode_t mode = 0; mode <= 0777; ++mode) {
    ASSERT_EQ(::chmod(path.c_str(), mode), 0);
    const uint32_t executable = (mode & 0101) != 0 ? 0x8000 : 0;
    ASSERT_EQ(flags_of(path), 0x40 | executable) << std::oct << mode;
  }
}

TEST(ZfxStatFile, CallsADirectoryExecutableByTheSameRule) {
  TemporaryFolder folder;
  ::chmod(folder.path().c_str(), 0755);
  EXPECT_EQ(flags_of(folder.path()), 0x8008u);
}

TEST(ZfxStatFile, ReportsTheThreeTimesInSeconds) {
  TemporaryFolder folder;
  const std::string path = folder / "file";
  const std::time_t before = std::time(nullptr) - 1;  // file times come from a coarser clock
  support::write_file(path, "");
  const timespec times[2] = {{5'000'000'000, 0}, {-86'400, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  ZfxFileStatus status = soiled_status();
  ASSERT_EQ(ZfxStatFile(&status, path.c_str()), 0);
  EXPECT_EQ(status.access_time, 5'000'000'000);
  EXPECT_EQ(status.modification_time, -86'400);
  EXPECT_GE(status.change_time, before);
  EXPECT_LE(status.change_time, std::time(nullptr));
}

TEST(ZfxStatFile, ReportsSizesBeyondFourGigabytes) {
  TemporaryFolder folder;
  const std::string path = folder / "file";
  support::write_file(path, "");
  for (const int64_t size : {int64_t{0}, int64_t{1}, int64_t{5'000'000'000}}) {
    ASSERT_EQ(::truncate(path.c_str(), size), 0);
    ZfxFileStatus status = soiled_status();
    ASSERT_EQ(ZfxStatFile(&status, path.c_str()), 0);
    EXPECT_EQ(status.size, size);
  }
}

}  // namespace
