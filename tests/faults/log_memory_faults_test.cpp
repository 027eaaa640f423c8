// Logging without memory: a line is cut or dropped where its header says so and is otherwise whole.
#include <string>
#include <thread>

#include "allocation_walk.hpp"
#include "files.hpp"
#include "files_only_test.hpp"
#include "logfilename.h"
#include "logger.h"
#include "sourceloc.h"

namespace {

using faults::Fault;
using faults::FaultedCall;
using faults::Owner;
using faults::QuietCall;
using faults::Text;

using Log = Owner<Logger, Logger_Delete>;

constexpr char kSystemFile[] = "/usr/local/zorv/sys/conf/quor.conf";
const std::string kLongMessage(20000, 'm');

// Each thread's copy of the settings, and its source location, are made at its first call.
template <class Scenario>
void in_a_new_thread(Scenario scenario) {
  std::thread(scenario).join();
}

void make_file_logger(Fault &fault) {
  const support::TemporaryFolder folder;
  const std::string path = folder / "log";
  const Log log(fault.during([&] { return Logger_New(LOGGER_LEVEL_DEBUG, path.c_str(), 0); }));
  if (!fault.struck()) {
    ASSERT_NE(log, nullptr);
    EXPECT_GE(Logger_GetLogFileno(log.get()), 0);
  }
  Logger_LogInfo(log.get(), "", "line");
  const bool writes = Logger_GetLogFileno(log.get()) >= 0;
  EXPECT_EQ(std::filesystem::exists(path) && std::filesystem::file_size(path) > 0, writes);
}

void count_line(void *context, const char *line) {
  std::string &lines = *static_cast<std::string *>(context);
  lines += line;
}

// The line of a callback takes a block; without it the line is dropped, and the next one is delivered.
template <auto kLog>
void log_to_callback(Fault &fault) {
  std::string lines;
  lines.reserve(1000);
  const Log log(Logger_New(LOGGER_LEVEL_DEBUG, nullptr, 0));
  Logger_SetCallback(log.get(), count_line, &lines);
  fault.during([&] { kLog(log.get()); });
  EXPECT_EQ(lines.empty(), fault.struck());
  kLog(log.get());
  EXPECT_NE(lines.find("message"), std::string::npos);
}

// A long message is cut to what needs no block; it is a whole line all the same.
void log_long_line(Fault &fault) {
  const support::TemporaryFolder folder;
  const std::string path = folder / "log";
  const Log log(Logger_New(LOGGER_LEVEL_DEBUG, path.c_str(), 0));
  fault.during([&] { Logger_LogDebug(log.get(), "", "%s", kLongMessage.c_str()); });
  const std::string line = support::read_file(path);
  ASSERT_FALSE(line.empty());
  EXPECT_EQ(line.back(), '\n');
  const std::size_t shown = line.size() - 1 - line.find('m');
  EXPECT_EQ(shown, fault.struck() ? 8191U : kLongMessage.size());
}

// The zone is another one than at the last line, so that the C library makes its texts anew.
void log_in_a_new_zone(Fault &fault) {
  const support::TemporaryFolder folder;
  const std::string path = folder / "log";
  const Log log(Logger_New(LOGGER_LEVEL_DEBUG, path.c_str(), 0));
  {
    const support::EnvironmentVariable zone("TZ", "BBB5");
    Logger_LogInfo(log.get(), "", "before");
  }
  const support::EnvironmentVariable zone("TZ", "AAA-1");
  fault.during([&] { Logger_LogInfo(log.get(), "", "message"); });
  EXPECT_TRUE(support::read_file(path).ends_with("INFO] message\n")) << "the line is there with some time";
  ::tzset();  // the C library gets back what it keeps
}

// The directory is the one of the settings.
template <auto kCompose>
void compose_new_path(Fault &fault) {
  constexpr char kPath[] = "/configured/x.log";
  support::write_file(kSystemFile, "QUOR_LOG=/configured\n");
  in_a_new_thread([&] {
    const Text path(fault.during(kCompose));
    const std::string found = path == nullptr ? "" : path.get();
    EXPECT_TRUE(found == kPath || (fault.struck() && (found.empty() || found == "/tmp/x.log"))) << found;
    const Text again(kCompose());
    EXPECT_STREQ(again.get(), kPath);
  });
}

void tell_location(Fault &fault) {
  in_a_new_thread([&] {
    const std::string text = fault.during([] { return ZfxGetSourceLocation("f", "a/x.c", 1); });
    EXPECT_EQ(text, fault.struck() ? "" : "f@x.c:1");
    EXPECT_STREQ(ZfxGetSourceLocation("f", "a/x.c", 1), "f@x.c:1");
  });
}

constexpr FaultedCall kFaulted[] = {
    {"CrtGetLogFileName", "NewBlock",
     compose_new_path<[] { return CrtGetLogFileName(nullptr, "/configured", "x", "log", 0, 0, 0); }>},
    {"Logger_LogDebug", "ToACallback",
     log_to_callback<[](const Logger *log) { Logger_LogDebug(log, "here", "message %d", 1); }>},
    {"Logger_LogDebug", "LongMessage", log_long_line},
    {"Logger_LogError", "ToACallback",
     log_to_callback<[](const Logger *log) { Logger_LogError(log, "here", 1, "message %d", 1); }>},
    {"Logger_LogFatalError", "ToACallback",
     log_to_callback<[](const Logger *log) { Logger_LogFatalError(log, "here", 1, "message %d", 1); }>},
    {"Logger_LogInfo", "ToACallback",
     log_to_callback<[](const Logger *log) { Logger_LogInfo(log, "here", "message %d", 1); }>},
    {"Logger_LogInfo", "InANewZone", log_in_a_new_zone},
    {"Logger_LogSystemError", "ToACallback",
     log_to_callback<[](const Logger *log) { Logger_LogSystemError(log, "message", 2, 0); }>},
    {"Logger_LogWarning", "ToACallback",
     log_to_callback<[](const Logger *log) { Logger_LogWarning(log, "here", 1, "message %d", 1); }>},
    {"Logger_New", "WithAFile", make_file_logger},
    {"ZfxGetSourceLocation", "FirstOfAThread", tell_location},
    {"getLogFileName", "NewBlock",
     compose_new_path<[] { return getLogFileName(nullptr, nullptr, "x", nullptr, 0, 0); }>},
    {"getLogFileNameEx", "NewBlock",
     compose_new_path<[] { return getLogFileNameEx(nullptr, "", "x", nullptr, 0, 0, 0); }>},
};

// Made once, so that the calls below need no memory of their own.
Log sample;
char area[4096];

const QuietCall kQuiet[] = {
    {"CrtGetLogFileName", [] { CrtGetLogFileName(area, "/var", "x", nullptr, 1, 1, 1); }},
    {"Logger_Delete", [] { Logger_Delete(nullptr); }},
    {"Logger_GetLogFileno", [] { EXPECT_GE(Logger_GetLogFileno(sample.get()), 0); }},
    {"Logger_GetLogLevel", [] { Logger_GetLogLevel(sample.get()); }},
    {"Logger_GetMaxPrecision", [] { EXPECT_EQ(Logger_GetMaxPrecision(1, "x"), 8000); }},
    {"Logger_GetMaxPrecisionSz", [] { EXPECT_EQ(Logger_GetMaxPrecisionSz(1, 0), 8000); }},
    {"Logger_LogDebug", [] { Logger_LogDebug(sample.get(), "here", "message"); }},
    {"Logger_LogError", [] { Logger_LogError(sample.get(), "here", 1, "message"); }},
    {"Logger_LogFatalError", [] { Logger_LogFatalError(sample.get(), "here", 1, "message"); }},
    {"Logger_LogInfo", [] { Logger_LogInfo(sample.get(), "here", "message"); }},
    {"Logger_LogSystemError", [] { Logger_LogSystemError(sample.get(), "here", 1, 1); }},
    {"Logger_LogWarning", [] { Logger_LogWarning(sample.get(), "here", 1, "message"); }},
    {"Logger_RedirectStderr", [] { Logger_RedirectStderr(nullptr); }},
    {"Logger_RedirectStdout", [] { Logger_RedirectStdout(nullptr); }},
    {"Logger_SetCallback", [] { Logger_SetCallback(nullptr, nullptr, nullptr); }},
    {"Logger_SetLogLevel", [] { Logger_SetLogLevel(sample.get(), 5); }},
    {"Logger_SetTextEncoding", [] { Logger_SetTextEncoding(sample.get(), "UTF-8"); }},
    {"ZfxGetSourceLocation", [] { ZfxGetSourceLocation("f", "x.c", 1); }},
};

struct LogWithoutMemory : faults::FilesOnlyTest, ::testing::WithParamInterface<FaultedCall> {};

TEST_P(LogWithoutMemory, KeepsItsContractWhicheverAllocationFails) {
  faults::walk(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Call, LogWithoutMemory, ::testing::ValuesIn(kFaulted), faults::RowName());

struct LogFrugal : ::testing::TestWithParam<QuietCall> {
  void SetUp() override { sample.reset(Logger_New(LOGGER_LEVEL_DEBUG, "/dev/null", 0)); }
  void TearDown() override { sample.reset(); }
};

TEST_P(LogFrugal, TakesNoMemory) {
  const support::EnvironmentVariable zone("TZ", "AAA-1");
  faults::expect_no_allocation(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Call, LogFrugal, ::testing::ValuesIn(kQuiet), faults::RowName());

TEST(LogMemoryFaults, NameEveryExportOfTheRoom) {
  EXPECT_EQ(faults::names_in(kFaulted, kQuiet), faults::exported_names("log"));
}

}  // namespace
