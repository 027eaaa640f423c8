// Logging when the system refuses: lines are completed or lost, and nothing else suffers.
#include <unistd.h>

#include <cerrno>
#include <string>
#include <thread>

#include "call_walk.hpp"
#include "files.hpp"
#include "files_only_test.hpp"
#include "logfilename.h"
#include "logger.h"
#include "sourceloc.h"

namespace {

using faults::CallFault;
using faults::SystemCall;

// A logger whose file cannot be opened is there and writes nothing.
void make_logger(CallFault &fault) {
  const support::TemporaryFolder folder;
  const std::string path = folder / "log";
  Logger *logger = fault.during([&] { return Logger_New(LOGGER_LEVEL_DEBUG, path.c_str(), 0); });
  ASSERT_NE(logger, nullptr);
  EXPECT_EQ(Logger_GetLogFileno(logger) < 0, fault.struck());
  Logger_LogInfo(logger, "", "message");
  EXPECT_EQ(std::filesystem::exists(path), !fault.struck());
  Logger_Delete(logger);
}

void delete_logger(CallFault &fault) {
  const support::TemporaryFolder folder;
  Logger *logger = Logger_New(LOGGER_LEVEL_DEBUG, (folder / "log").c_str(), 0);
  fault.during([&] { Logger_Delete(logger); });
}

void give_logger_callback(CallFault &fault) {
  const support::TemporaryFolder folder;
  Logger *logger = Logger_New(LOGGER_LEVEL_DEBUG, (folder / "log").c_str(), 0);
  fault.during([&] {
    Logger_SetCallback(
        logger, [](void *, const char *) {}, nullptr);
  });
  EXPECT_EQ(Logger_GetLogFileno(logger), -1);
  Logger_Delete(logger);
}

constexpr char kMessage[] = "message\n";
constexpr char kNoFile[] = "#2 No such file or directory\n";

// A line that is interrupted or taken in parts is completed, one that the system refuses is lost; errno
// stays, and the next line is whole.
template <auto kLog, const char *kEnd = kMessage>
void log_line(CallFault &fault) {
  const support::EnvironmentVariable zone("TZ", "UTC0");
  const support::TemporaryFolder folder;
  const std::string path = folder / "log";
  Logger *logger = Logger_New(LOGGER_LEVEL_DEBUG, path.c_str(), 0);
  errno = EDOM;
  fault.during([&] { kLog(logger); });
  EXPECT_EQ(errno, EDOM);
  const std::string text = support::read_file(path);
  const bool is_refused = fault.struck("write") && fault.error() != EINTR && fault.error() != support::kShort;
  const bool may_be_lost = is_refused || fault.is_persistent();
  EXPECT_TRUE(text.ends_with(kEnd) || (may_be_lost && text.empty())) << text;
  kLog(logger);
  EXPECT_TRUE(support::read_file(path).ends_with(kEnd));
  Logger_Delete(logger);
}

// Standard output stays what it was when it cannot be redirected.
template <int kDescriptor, auto kRedirect>
void redirect(CallFault &fault) {
  const support::TemporaryFolder folder;
  const std::string path = folder / "log";
  Logger *logger = Logger_New(LOGGER_LEVEL_DEBUG, path.c_str(), 0);
  std::string elsewhere;
  {
    support::CapturedDescriptor captured(kDescriptor);
    fault.during([&] { kRedirect(logger); });
    EXPECT_EQ(::write(kDescriptor, "text", 4), 4);
    elsewhere = captured.text();
  }
  EXPECT_EQ(elsewhere, fault.struck() ? "text" : "");
  EXPECT_EQ(support::read_file(path), fault.struck() ? "" : "text");
  Logger_Delete(logger);
}

// Shortening the caller's text is tried in two ways; the path does not depend on it, nor does errno.
void compose_path(CallFault &fault) {
  const support::EnvironmentVariable zone("TZ", "UTC0");
  char folder[] = "/var/log/";
  char path[4096] = "";
  errno = EDOM;
  EXPECT_EQ(fault.during([&] { return CrtGetLogFileName(path, folder, "x", "log", 0, 0, 0); }), path);
  EXPECT_STREQ(path, "/var/log/x.log");
  if (fault.struck("process_vm_writev") && !fault.is_persistent() && fault.error() != EFAULT) {
    EXPECT_STREQ(folder, "/var/log") << "the other way does it";
  }
  EXPECT_EQ(errno, EDOM);
}

void compose_path_with_time(CallFault &fault) {
  const support::EnvironmentVariable zone("TZ", "UTC0");
  char path[4096] = "";
  EXPECT_EQ(fault.during([&] { return CrtGetLogFileName(path, "/var", "x", "log", 0, 0, 1); }), path);
  EXPECT_EQ(std::string(path).size(), std::string("/var/x_20261121204500000.log").size()) << path;
}

// The directory of the settings, or that without any, when they cannot be read.
template <auto kCompose>
void compose_configured(CallFault &fault) {
  support::write_file("/usr/local/zorv/sys/conf/quor.conf", "QUOR_LOG=/configured\n");
  std::thread([&] {
    char path[4096] = "";
    EXPECT_EQ(fault.during([&] { return kCompose(path); }), path);
    const std::string found = path;
    EXPECT_TRUE(found == "/configured/x.log" || (fault.struck() && found == "/tmp/x.log")) << found;
  }).join();
}

// The first call of a thread keeps its text under a key.
void tell_location(CallFault &fault) {
  std::thread([&] {
    const std::string text = fault.during([] { return ZfxGetSourceLocation("f", "a/x.c", 1); });
    EXPECT_EQ(text, fault.struck() ? "" : "f@x.c:1");
    EXPECT_STREQ(ZfxGetSourceLocation("f", "a/x.c", 1), "f@x.c:1");
  }).join();
}

constexpr SystemCall kCalls[] = {
    {"CrtGetLogFileName", "Shortened", compose_path},
    {"CrtGetLogFileName", "WithTheTime", compose_path_with_time},
    {"Logger_Delete", "WithAFile", delete_logger},
    {"Logger_LogDebug", "ToAFile",
     log_line<[](const Logger *logger) { Logger_LogDebug(logger, "here", "message"); }>},
    {"Logger_LogError", "ToAFile",
     log_line<[](const Logger *logger) { Logger_LogError(logger, "here", 1, "message"); }>},
    {"Logger_LogFatalError", "ToAFile",
     log_line<[](const Logger *logger) { Logger_LogFatalError(logger, "here", 1, "message"); }>},
    {"Logger_LogInfo", "ToAFile",
     log_line<[](const Logger *logger) { Logger_LogInfo(logger, "here", "message"); }>},
    {"Logger_LogSystemError", "ToAFile",
     log_line<[](const Logger *logger) { Logger_LogSystemError(logger, "", ENOENT, 1); }, kNoFile>},
    {"Logger_LogWarning", "ToAFile",
     log_line<[](const Logger *logger) { Logger_LogWarning(logger, "here", 1, "message"); }>},
    {"Logger_New", "WithAFile", make_logger},
    {"Logger_RedirectStderr", "ToAFile", redirect<STDERR_FILENO, Logger_RedirectStderr>},
    {"Logger_RedirectStdout", "ToAFile", redirect<STDOUT_FILENO, Logger_RedirectStdout>},
    {"Logger_SetCallback", "InsteadOfAFile", give_logger_callback},
    {"ZfxGetSourceLocation", "FirstOfAThread", tell_location},
    {"getLogFileName", "Configured",
     compose_configured<[](char *path) { return getLogFileName(path, nullptr, "x", nullptr, 0, 0); }>},
    {"getLogFileNameEx", "Configured",
     compose_configured<[](char *path) { return getLogFileNameEx(path, "", "x", nullptr, 0, 0, 0); }>},
};

// First in the file, and under ctest in a process of its own: the key is made once.
TEST(LocationRefused, IsEmptyWithoutAKeyAndThereWithTheNextCall) {
  support::FailingCalls no_key(1, 0, true);
  const std::string text = ZfxGetSourceLocation("f", "x.c", 1);
  if (no_key.stop()) {
    EXPECT_EQ(no_key.function(), "pthread_key_create");
    EXPECT_EQ(text, "");
  }
  EXPECT_STREQ(ZfxGetSourceLocation("f", "x.c", 1), "f@x.c:1");
}

struct LogRefused : faults::FilesOnlyTest, ::testing::WithParamInterface<SystemCall> {};

TEST_P(LogRefused, KeepsItsContractWhicheverSystemCallFails) {
  faults::walk(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Call, LogRefused, ::testing::ValuesIn(kCalls), faults::RowName());

}  // namespace
