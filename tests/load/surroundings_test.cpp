// Hosts run where disks fill up, descriptors run out, links lead in circles, files change while they are
// read and signals arrive at any time. None of that ends the process, and all works again afterwards.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "CopyDirTree.h"
#include "CreatePath.h"
#include "FileStatus.h"
#include "capabilities.hpp"
#include "conf.h"
#include "dataarea.h"
#include "exec.h"
#include "files.hpp"
#include "logger.h"
#include "private_root.hpp"
#include "procwait.h"
#include "tcpsock.h"
#include "zfxsemaphore.h"
#include "zjsondriver.h"
#include "zorvrcs.h"

namespace {

namespace fs = std::filesystem;

constexpr char kDefaultFile[] = "/usr/local/zorv/sys/conf/quor.conf";
constexpr char kExtensions[] = "/usr/local/zorv/sys/conf/quor.d";

using FixedPaths = support::FixedPathsTest;

// No descriptor can be opened as long as this lives.
class WithoutDescriptors {
 public:
  WithoutDescriptors() {
    ::getrlimit(RLIMIT_NOFILE, &before_);
    const rlimit none = {0, before_.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
  }
  ~WithoutDescriptors() { ::setrlimit(RLIMIT_NOFILE, &before_); }
  WithoutDescriptors(const WithoutDescriptors &) = delete;
  WithoutDescriptors &operator=(const WithoutDescriptors &) = delete;

 private:
  rlimit before_ = {};
};

void expect_unreadable_json(const char *path, int error) {
  ZJsonExpression *expression = nullptr;
  EXPECT_EQ(ZJsonExpression_ParseFile(&expression, path), error);
  EXPECT_EQ(expression, nullptr);
}

TEST(ExhaustedDescriptors, LeaveALoggerThatWritesNothing) {
  const support::TemporaryFolder folder;
  Logger *logger = nullptr;
  {
    const WithoutDescriptors none;
    logger = Logger_New(LOGGER_LEVEL_DEBUG, (folder / "x.log").c_str(), 0);
    ASSERT_NE(logger, nullptr);
    Logger_LogError(logger, nullptr, 1, "into nothing");
  }
  EXPECT_EQ(logger->stream, nullptr);
  Logger_Delete(logger);
  EXPECT_FALSE(fs::exists(folder / "x.log"));
}

TEST(ExhaustedDescriptors, StopNoOpenLoggerFromWriting) {
  const support::TemporaryFolder folder;
  Logger *logger = Logger_New(LOGGER_LEVEL_DEBUG, (folder / "x.log").c_str(), 0);
  {
    const WithoutDescriptors none;
    Logger_LogInfo(logger, nullptr, "still here");
  }
  Logger_Delete(logger);
  EXPECT_NE(support::read_file(folder / "x.log").find("   INFO] still here\n"), std::string::npos);
}

TEST(ExhaustedDescriptors, AreTheReasonThatReadersGive) {
  const support::TemporaryFolder folder;
  support::write_file(folder / "x.conf", "a=b\n");
  support::write_file(folder / "x.json", "[1]");
  {
    const WithoutDescriptors none;
    errno = 0;
    EXPECT_EQ(Config_Open((folder / "x.conf").c_str()), nullptr);
    EXPECT_EQ(errno, EMFILE);
    expect_unreadable_json((folder / "x.json").c_str(), EMFILE);
    EXPECT_EQ(ZfxCreateSocket(AF_INET, SOCK_STREAM), -1);
  }
  Config *config = Config_Open((folder / "x.conf").c_str());
  EXPECT_NE(config, nullptr);
  Config_Close(config);
}

TEST(ExhaustedDescriptors, DoNotKeepAProgramFromBeingStarted) {
  const WithoutDescriptors none;
  EXPECT_EQ(ZfxExec("/bin/sh -c true", 1), 127 << 8) << "the program itself has none to load its libraries";
}

TEST_F(FixedPaths, ExhaustedDescriptorsLeaveSettingsThatALaterLoadFillsIn) {
  fs::create_directories(fs::path(kDefaultFile).parent_path());
  support::write_file(kDefaultFile, "[NONPRIVILEGED]\nHOSTILE_NAME=value\n");
  QuorConfSetPath(nullptr);
  {
    const WithoutDescriptors none;
    QuorConfCreate();
    EXPECT_EQ(QuorConfQuery("HOSTILE_NAME", QUOR_LEVEL_ALL), nullptr);
  }
  QuorConfRemove();
  EXPECT_STREQ(QuorConfQuery("HOSTILE_NAME", QUOR_LEVEL_ALL), "value");
}

// A log file on a disk of 64 KiB: what does not fit is lost, and lines go on as soon as there is room.
TEST_F(FixedPaths, AFullDiskUnderALogFileLosesLinesAndNothingElse) {
  const std::string disk = std::string(support::kPrivateHome) + "/disk";
  fs::create_directory(disk);
  if (::mount("none", disk.c_str(), "tmpfs", 0, "size=64k") != 0) GTEST_SKIP() << "no tmpfs here";
  support::write_file(disk + "/ballast", std::string(40 << 10, 'x'));
  Logger *logger = Logger_New(LOGGER_LEVEL_DEBUG, (disk + "/x.log").c_str(), 0);
  for (int line = 0; line < 1000; ++line)
    Logger_LogInfo(logger, nullptr, "%0100d", line);
  const auto full = fs::file_size(disk + "/x.log");
  EXPECT_GT(full, 8U << 10);
  EXPECT_LT(full, 64U << 10);
  fs::remove(disk + "/ballast");
  Logger_LogInfo(logger, nullptr, "room again");
  Logger_Delete(logger);
  const std::string text = support::read_file(disk + "/x.log");
  ::umount2(disk.c_str(), MNT_DETACH);
  EXPECT_EQ(text.substr(0, 27).substr(21), "   INF");
  EXPECT_TRUE(text.ends_with("   INFO] room again\n"));
}

TEST(ClosedStandardStreams, TakeLinesAndSettingsWithoutHarm) {
  const support::CapturedDescriptor out(1);
  const support::CapturedDescriptor err(2);
  ::close(1);
  ::close(2);
  Logger *logger = Logger_New(LOGGER_LEVEL_DEBUG, nullptr, 1);
  for (int line = 0; line < 100; ++line)
    Logger_LogError(logger, nullptr, line, "nobody reads this");
  Logger_Delete(logger);
  QuorConfPrint();
  EXPECT_EQ(::fcntl(1, F_GETFD), -1);
  EXPECT_EQ(::fcntl(2, F_GETFD), -1);
}

// A signal every 200 microseconds, with a handler that does not ask for interrupted calls to be restarted.
class SignalStorm {
 public:
  SignalStorm() {
    struct sigaction action = {};
    action.sa_handler = [](int) { ++arrived; };
    ::sigaction(SIGALRM, &action, &before_);
    const itimerval often = {{0, 200}, {0, 200}};
    ::setitimer(ITIMER_REAL, &often, nullptr);
  }
  ~SignalStorm() {
    const itimerval never = {};
    ::setitimer(ITIMER_REAL, &never, nullptr);
    ::sigaction(SIGALRM, &before_, nullptr);
  }
  SignalStorm(const SignalStorm &) = delete;
  SignalStorm &operator=(const SignalStorm &) = delete;

  static inline std::atomic<int> arrived = 0;

 private:
  struct sigaction before_ = {};
};

TEST(ASignalStorm, DoesNotCutTheWaitForAProgramShort) {
  const SignalStorm storm;
  EXPECT_EQ(ZfxExec("/bin/sh -c 'sleep 0.05; exit 7'", 1), 7 << 8);
  EXPECT_GT(storm.arrived, 0);
}

TEST(ASignalStorm, LeavesTheChildToBeWaitedForAgain) {
  uint32_t child = 0;
  ASSERT_EQ(ZfxExecP("/bin/sh -c 'sleep 0.05; exit 7'", 0, &child), 0);
  const SignalStorm storm;
  int32_t code = -5;
  int32_t ended = 0;
  while (ended <= 0) {
    ended = ZfxWaitProcess(child, -1, &code);
    ASSERT_TRUE(ended >= 0 || errno == EINTR);
  }
  EXPECT_EQ(ended, 1);
  EXPECT_EQ(code, 7);
}

TEST(ASignalStorm, CostsNoBytesOfALargeTransfer) {
  int32_t listener = -1;
  int32_t port = 0;
  ASSERT_EQ(ZfxCreateDynamicListenSocket(&listener, &port), 0);
  constexpr std::size_t kSize = 4 << 20;
  std::string received;
  std::thread reader([&] {
    const int32_t socket = ZfxAccept(listener, nullptr, nullptr);
    std::array<char, 4096> block{};
    for (int32_t n = 1; n != 0;) {
      n = ZfxSocketRead(socket, block.data(), block.size());
      if (n > 0) received.append(block.data(), static_cast<std::size_t>(n));
      if (n < 0 && errno != EINTR) break;
    }
    ZfxCloseSocket(socket);
  });
  int32_t socket = -1;
  ASSERT_EQ(ZfxCreateClientSocket("127.0.0.1", port, &socket), 0);
  std::string sent(kSize, '\0');
  for (std::size_t i = 0; i < sent.size(); ++i)
    sent[i] = static_cast<char>(i * i >> 8);
  {
    const SignalStorm storm;
    for (std::size_t done = 0; done < sent.size();) {
      const int32_t n = ZfxSocketWrite(socket, sent.data() + done, static_cast<uint32_t>(sent.size() - done));
      if (n > 0) done += static_cast<std::size_t>(n);
      ASSERT_TRUE(n >= 0 || errno == EINTR);
    }
  }
  ZfxCloseSocket(socket);
  reader.join();
  ZfxCloseSocket(listener);
  EXPECT_TRUE(received == sent);
}

TEST(ASignalStorm, KeepsLinesAndConfigurationsWhole) {
  const support::TemporaryFolder folder;
  std::string text = "[s]\n";
  for (int i = 0; i < 2000; ++i)
    text += "key" + std::to_string(i) + "=value " + std::to_string(i) + "\n";
  support::write_file(folder / "x.conf", text);
  Logger *logger = Logger_New(LOGGER_LEVEL_DEBUG, (folder / "x.log").c_str(), 0);
  const SignalStorm storm;
  for (int round = 0; round < 50; ++round) {
    Config *config = Config_Open((folder / "x.conf").c_str());
    ASSERT_NE(config, nullptr);
    EXPECT_STREQ(Config_GetEntry(Config_GetSection(config, "s"), "key1999")->value, "value 1999");
    Config_Close(config);
    Logger_LogDebug(logger, nullptr, "%050000d", round);
  }
  Logger_Delete(logger);
  EXPECT_EQ(support::read_file(folder / "x.log").size(), 50U * (21 + 9 + 50000 + 1));
}

// A writer puts files into the extension folder, renames and removes them while loads are under way. What
// does not change is always there; what does is whole or missing.
TEST_F(FixedPaths, ASettingsFolderThatChangesWhileItIsReadGivesWholeSettings) {
  fs::create_directories(kExtensions);
  support::write_file(kDefaultFile, "[NONPRIVILEGED]\nHOSTILE_FIRM=stays\n");
  const std::string folder = kExtensions;
  support::write_file(folder + "/firm.conf", "[NONPRIVILEGED]\nHOSTILE_ALSO_FIRM=stays too\n");
  std::atomic<bool> done = false;
  std::atomic<bool> has_begun = false;
  std::thread writer([&] {
    for (int i = 0; !done; ++i) {
      if (i == 7) has_begun = true;
      const std::string name = folder + "/" + std::to_string(i % 7);
      support::write_file(name + ".new", "[NONPRIVILEGED]\nHOSTILE_LOOSE=whole value\n");
      fs::rename(name + ".new", name + ".conf");
      if (i % 3 == 0) fs::remove(name + ".conf");
      std::this_thread::yield();
    }
  });
  while (!has_begun) {
    std::this_thread::yield();
  }
  QuorConfSetPath(nullptr);
  int loose = 0;
  for (int load = 0; load < 300; ++load) {
    for (const char *name : {"HOSTILE_FIRM", "HOSTILE_ALSO_FIRM", "HOSTILE_LOOSE"})
      ::unsetenv(name);
    QuorConfRemove();
    EXPECT_STREQ(QuorConfQuery("HOSTILE_FIRM", QUOR_LEVEL_ALL), "stays");
    EXPECT_STREQ(QuorConfQuery("HOSTILE_ALSO_FIRM", QUOR_LEVEL_ALL), "stays too");
    const char *value = QuorConfQuery("HOSTILE_LOOSE", QUOR_LEVEL_ALL);
    if (value == nullptr) continue;
    EXPECT_STREQ(value, "whole value");
    ++loose;
  }
  done = true;
  writer.join();
  EXPECT_GT(loose, 0);
}

TEST(ALinkThatLeadsToItself, IsReportedByEveryoneWhoFollowsIt) {
  const support::TemporaryFolder folder;
  const std::string loop = folder / "loop";
  support::make_link(loop, loop);
  errno = 0;
  EXPECT_EQ(Config_Open(loop.c_str()), nullptr);
  EXPECT_EQ(errno, ELOOP);
  ZfxFileStatus status;
  EXPECT_EQ(ZfxStatFile(&status, loop.c_str()), ELOOP);
  expect_unreadable_json(loop.c_str(), ELOOP);
  EXPECT_EQ(ZfxExec(loop.c_str(), 1), 1 << 8);
  Logger *logger = Logger_New(LOGGER_LEVEL_DEBUG, loop.c_str(), 0);
  Logger_LogError(logger, nullptr, 0, "into nothing");
  EXPECT_EQ(logger->stream, nullptr);
  Logger_Delete(logger);
}

TEST_F(FixedPaths, ADataAreaThatLeadsToItselfIsNotConfigured) {
  fs::create_directories("/usr/local/zorv");
  support::make_link("/usr/local/zorv/var", "/usr/local/zorv/var");
  char message[1024];
  EXPECT_NE(GetZorvDataArea(nullptr, 0, ZORV_CHECK_CONF, message, sizeof message), ZORV_DATA_AREA_OK);
  EXPECT_STRNE(message, "");
}

TEST(AFileThatMayNotBeRead, IsReportedByEveryReader) {
  const support::TemporaryFolder folder;
  const std::string path = folder / "secret";
  support::write_file(path, "[1]");
  fs::permissions(path, fs::perms::none);
  const support::WithoutCapabilities without;
  errno = 0;
  EXPECT_EQ(Config_Open(path.c_str()), nullptr);
  EXPECT_EQ(errno, EACCES);
  expect_unreadable_json(path.c_str(), EACCES);
  Logger *logger = Logger_New(LOGGER_LEVEL_DEBUG, path.c_str(), 0);
  EXPECT_EQ(logger->stream, nullptr);
  Logger_Delete(logger);
}

}  // namespace
