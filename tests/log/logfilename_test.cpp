#include "logfilename.h"

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <string>
#include <thread>

#include "files.hpp"
#include "private_root.hpp"
#include "zfxmemory.h"

namespace {

constexpr char kSystemFile[] = "/usr/local/zorv/sys/conf/quor.conf";

timespec set_clock{};
bool clock_is_set = false;

}  // namespace

// What the library sees as the current time.
extern "C" int clock_gettime(clockid_t clock, timespec *result) noexcept {
  if (clock_is_set && clock == CLOCK_REALTIME) {
    *result = set_clock;
    return 0;
  }
  return static_cast<int>(::syscall(SYS_clock_gettime, clock, result));
}

namespace {

// A path in a buffer of the largest size that is ever written.
std::string composed(const char *directory, const char *name, const char *extension, int32_t with_pid = 0,
                     int32_t with_thread = 0, int32_t with_time = 0) {
  char buffer[4096];
  EXPECT_EQ(CrtGetLogFileName(buffer, directory, name, extension, with_pid, with_thread, with_time), buffer);
  return buffer;
}

// Composes in a thread of its own, which has not read the settings file yet.
std::string composed_afresh(const char *directory) {
  std::string path;
  std::thread([&] {
    char buffer[4096];
    path = getLogFileNameEx(buffer, directory, "x", "log", 0, 0, 0);
  }).join();
  return path;
}

std::string owned(char *block) {
  std::string text = block == nullptr ? "(null)" : block;
  ZfxMemFree(block);
  return text;
}

TEST(CrtGetLogFileName, JoinsDirectoryNameAndExtension) {
  EXPECT_EQ(composed("/var/log", "srv", "txt"), "/var/log/srv.txt");
  EXPECT_EQ(composed("rel/dir", "srv", "txt"), "rel/dir/srv.txt");
  EXPECT_EQ(composed("/var/log", "", ""), "/var/log/.");
}

TEST(CrtGetLogFileName, TakesTmpForANullDirectoryAndNoneForAnEmptyOne) {
  EXPECT_EQ(composed(nullptr, "x", "txt"), "/tmp/x.txt");
  EXPECT_EQ(composed("", "x", "txt"), "x.txt");
}

TEST(CrtGetLogFileName, SkipsOneLeadingDotOfTheExtension) {
  EXPECT_EQ(composed("", "x", nullptr), "x.log");
  EXPECT_EQ(composed("", "x", ".txt"), "x.txt");
  EXPECT_EQ(composed("", "x", "..txt"), "x..txt");
  EXPECT_EQ(composed("", "x", "."), "x.");
}

TEST(CrtGetLogFileName, TakesANullNameForAnEmptyOne) {
  EXPECT_EQ(composed("/d", nullptr, "txt"), "/d/.txt");
}

TEST(CrtGetLogFileName, ShortensAWritableDirectoryThatEndsInASeparator) {
  struct {
    const char *given;
    const char *left;
    const char *path;
  } const table[] = {
      {"/tmp/", "/tmp", "/tmp/x.log"},
      {"/tmp\\", "/tmp", "/tmp/x.log"},
      {"/tmp//", "/tmp/", "/tmp//x.log"},
      {"/", "", "/x.log"},
      {"\\", "", "/x.log"},
      {"/tmp", "/tmp", "/tmp/x.log"},
      {"/tmp\\/", "/tmp\\", "/tmp\\/x.log"},
  };
  for (const auto &row : table) {
    std::string directory = row.given;
    EXPECT_EQ(composed(directory.data(), "x", nullptr), row.path) << row.given;
    EXPECT_STREQ(directory.c_str(), row.left) << row.given;
    char area[16];
    std::strcpy(area, row.given);
    EXPECT_EQ(owned(getLogFileName(nullptr, area, "x", nullptr, 0, 0)), row.path) << row.given;
    EXPECT_STREQ(area, row.left) << row.given;
  }
}

TEST(CrtGetLogFileName, LeavesAConstantDirectoryAsItIs) {
  const char *directory = "/constant/";
  const int before = support::open_descriptors();
  errno = 4711;
  EXPECT_EQ(composed(directory, "x", nullptr), "/constant/x.log");
  EXPECT_EQ(errno, 4711);
  EXPECT_STREQ(directory, "/constant/");
  EXPECT_EQ(support::open_descriptors(), before);
}

TEST(CrtGetLogFileName, LeavesADirectoryInAReadOnlyPageAsItIs) {
  const auto size = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  void *page = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(page, MAP_FAILED);
  char *const directory = static_cast<char *>(page) + size - 6;  // up to the last byte of the page
  std::memcpy(directory, "/tmp/", 6);
  ASSERT_EQ(::mprotect(page, size, PROT_READ), 0);
  EXPECT_EQ(composed(directory, "x", nullptr), "/tmp/x.log");
  EXPECT_STREQ(directory, "/tmp/");
  ASSERT_EQ(::mprotect(page, size, PROT_READ | PROT_WRITE), 0);
  EXPECT_EQ(composed(directory, "x", nullptr), "/tmp/x.log");
  EXPECT_STREQ(directory, "/tmp");
  ::munmap(page, size);
}

// Makes the kernel refuse process_vm_writev(), as some containers do, for the rest of the process.
bool forbid_process_vm_writev() {
  sock_filter filter[] = {
      {BPF_LD | BPF_W | BPF_ABS, 0, 0, 0},  // the number of the system call
      {BPF_JMP | BPF_JEQ | BPF_K, 0, 1, SYS_process_vm_writev},
      {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ERRNO | EPERM},
      {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW},
  };
  const sock_fprog program{4, filter};
  return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

constexpr int kNoFilters = 77;

// The rules of the two tests above in a child process without process_vm_writev(); 0 when they hold.
int status_without_process_vm_writev(bool descriptors_left) {
  const pid_t child = ::fork();
  if (child == 0) {
    if (!forbid_process_vm_writev()) ::_exit(kNoFilters);
    if (!descriptors_left) {
      const rlimit none{0, 0};
      ::setrlimit(RLIMIT_NOFILE, &none);
    }
    char writable[] = "/tmp/";
    const char *constant = "/constant/";
    const int before = descriptors_left ? support::open_descriptors() : 0;
    const bool right = composed(writable, "x", nullptr) == "/tmp/x.log" &&
                       composed(constant, "x", nullptr) == "/constant/x.log" &&
                       std::string(constant) == "/constant/" &&
                       std::string(writable) == (descriptors_left ? "/tmp" : "/tmp/");
    const int after = descriptors_left ? support::open_descriptors() : 0;
    ::_exit(right && before == after ? 0 : 1);
  }
  int status = -1;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(CrtGetLogFileName, ShortensWhereWritingAcrossProcessesIsForbidden) {
  const int status = status_without_process_vm_writev(true);
  if (status == kNoFilters) GTEST_SKIP() << "system calls cannot be filtered here";
  EXPECT_EQ(status, 0);
}

TEST(CrtGetLogFileName, ComposesWhereNothingIsLeftToShortenWith) {
  const int status = status_without_process_vm_writev(false);
  if (status == kNoFilters) GTEST_SKIP() << "system calls cannot be filtered here";
  EXPECT_EQ(status, 0);
}

TEST(CrtGetLogFileName, AddsTheSuffixesThatAreAskedFor) {
  const std::string process = "_" + std::to_string(::getpid());
  const std::string thread = "_" + std::to_string(static_cast<uint32_t>(::pthread_self()));
  EXPECT_EQ(composed("", "x", "l", 1, 0, 0), "x" + process + ".l");
  EXPECT_EQ(composed("", "x", "l", 0, 1, 0), "x" + thread + ".l");
  EXPECT_EQ(composed("", "x", "l", -1, 2, 0), "x" + process + thread + ".l");
  const std::string all = composed("", "x", "l", 1, 1, 1);
  const std::string front = "x" + process + thread + "_";
  ASSERT_EQ(all.size(), front.size() + 17 + 2);
  EXPECT_EQ(all.substr(0, front.size()), front);
  EXPECT_EQ(all.find_first_not_of("0123456789", front.size()), all.size() - 2);
}

std::string path_at(std::time_t seconds, long nanoseconds) {
  set_clock = {seconds, nanoseconds};
  clock_is_set = true;
  std::string path = composed("/var/log/", "srv", ".txt", 0, 0, 1);
  clock_is_set = false;
  return path;
}

TEST(CrtGetLogFileName, ShowsTheLocalTimeToMilliseconds) {
  const support::EnvironmentVariable zone("TZ", "UTC0");
  EXPECT_EQ(path_at(1794731892, 42'999'999), "/var/log/srv_20261115083812042.txt");
  EXPECT_EQ(path_at(1794731892, 999'999'999), "/var/log/srv_20261115083812999.txt");
  EXPECT_EQ(path_at(0, 0), "/var/log/srv_19700101000000000.txt");
}

TEST(CrtGetLogFileName, FollowsChangesOfTheZone) {
  for (const char *name : {"UTC0", "XYZ-5:30", "YYY+3", "UTC0"}) {
    const support::EnvironmentVariable zone("TZ", name);
    const std::time_t now = 1794731892;
    char expected[32];
    std::strftime(expected, sizeof expected, "_%Y%m%d%H%M%S042", std::localtime(&now));
    EXPECT_EQ(path_at(now, 42'000'000), "/var/log/srv" + std::string(expected) + ".txt");
  }
}

TEST(CrtGetLogFileName, HasRoomForAnyClock) {
  const support::EnvironmentVariable zone("TZ", "UTC0");
  EXPECT_EQ(path_at(67768036191676799, 0), "/var/log/srv_21474855471231235959000.txt");
  EXPECT_FALSE(path_at(INT64_MAX, 0).empty());
}

TEST(CrtGetLogFileName, GivesANewBlockForANullBuffer) {
  EXPECT_EQ(owned(getLogFileName(nullptr, "/tmp/", "x", nullptr, 0, 0)), "/tmp/x.log");
  EXPECT_EQ(owned(CrtGetLogFileName(nullptr, "/tmp/", "x", nullptr, 0, 0, 0)), "/tmp/x.log");
}

TEST(CrtGetLogFileName, CutsThePathAtTheEndOfItsOwnBlock) {
  for (const std::size_t length : {1018U, 1019U, 1020U, 5000U}) {
    const std::string name(length, 'n');
    EXPECT_EQ(owned(CrtGetLogFileName(nullptr, "", name.c_str(), "log", 0, 0, 0)),
              (name + ".log").substr(0, 1023));
  }
}

TEST(CrtGetLogFileName, NeverWritesMoreThan4096BytesToACallersBuffer) {
  for (const std::size_t length : {4090U, 4091U, 4092U, 5000U, 100000U}) {
    const std::string name(length, 'n');
    EXPECT_EQ(composed("", name.c_str(), "log"), (name + ".log").substr(0, 4095)) << length;
  }
}

TEST(CrtGetLogFileName, MayComposeInTheMemoryOfItsParts) {
  char buffer[64] = "/var/log/";
  EXPECT_STREQ(CrtGetLogFileName(buffer, buffer, "x", "log", 0, 0, 0), "/var/log/x.log");
  EXPECT_STREQ(CrtGetLogFileName(buffer, "/d", buffer + 9, buffer + 11, 0, 0, 0), "/d/x.log.log");
}

class LogFileNameSetting : public support::FixedPathsTest {
 protected:
  void SetUp() override {
    support::FixedPathsTest::SetUp();
    if (!IsSkipped()) ::unsetenv("QUOR_LOG");
  }
};

TEST_F(LogFileNameSetting, NamesTheDirectoryForANullOrEmptyOne) {
  support::write_file(kSystemFile, "QUOR_LOG=/file/logs/ # comment\n");
  for (const char *directory : {static_cast<const char *>(nullptr), ""}) {
    char buffer[64];
    EXPECT_EQ(getLogFileNameEx(buffer, directory, "x", "log", 0, 0, 0), buffer);
    EXPECT_STREQ(buffer, "/file/logs/x.log");
    EXPECT_EQ(owned(getLogFileName(nullptr, directory, "x", "log", 0, 0)), "/file/logs/x.log");
  }
  EXPECT_EQ(owned(getLogFileNameEx(nullptr, "/given", "x", "log", 0, 0, 0)), "/given/x.log");
}

TEST_F(LogFileNameSetting, IsTakenFromTheEnvironmentFirst) {
  support::write_file(kSystemFile, "QUOR_LOG=/file\n");
  const support::EnvironmentVariable variable("QUOR_LOG", "/data/logs");
  EXPECT_EQ(composed_afresh(nullptr), "/data/logs/x.log");
}

TEST_F(LogFileNameSetting, FallsBackToTmpWhenAbsentOrEmpty) {
  EXPECT_EQ(composed_afresh(nullptr), "/tmp/x.log");
  support::write_file(kSystemFile, "OTHER=x\n");
  EXPECT_EQ(composed_afresh(nullptr), "/tmp/x.log");
  const support::EnvironmentVariable variable("QUOR_LOG", "");
  EXPECT_EQ(composed_afresh(""), "/tmp/x.log");
}

TEST_F(LogFileNameSetting, IsNotAskedByCrtGetLogFileName) {
  support::write_file(kSystemFile, "QUOR_LOG=/file\n");
  EXPECT_EQ(owned(CrtGetLogFileName(nullptr, nullptr, "x", "log", 0, 0, 0)), "/tmp/x.log");
  EXPECT_EQ(owned(CrtGetLogFileName(nullptr, "", "x", "log", 0, 0, 0)), "x.log");
}

TEST_F(LogFileNameSetting, MayBeTheRootFolderOrLong) {
  {
    const support::EnvironmentVariable variable("QUOR_LOG", "/");
    support::write_file(kSystemFile, "X=x\n");
    EXPECT_EQ(composed_afresh(nullptr), "/x.log");
  }
  const std::string directory = "/" + std::string(2000, 'd');
  const support::EnvironmentVariable variable("QUOR_LOG", directory.c_str());
  EXPECT_EQ(owned(getLogFileNameEx(nullptr, nullptr, "x", "log", 0, 0, 0)), directory.substr(0, 1023));
}

TEST_F(LogFileNameSetting, AddsTheTimeOnlyWhenAskedFor) {
  EXPECT_EQ(owned(getLogFileName(nullptr, "/d", "x", "log", 1, 0)),
            "/d/x_" + std::to_string(::getpid()) + ".log");
  EXPECT_EQ(owned(getLogFileNameEx(nullptr, "/d", "x", "log", 0, 0, 1)).size(),
            std::strlen("/d/x_20261115083812042.log"));
}

}  // namespace
