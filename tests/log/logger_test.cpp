#include "logger.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "files.hpp"
#include "log_lines.hpp"

extern "C" void log_from_c(Logger *logger);

namespace {

using log_lines::FileLogger;
using log_lines::log_at;
using log_lines::model_line;

// A format that the compiler does not see.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
void log_error_unchecked(Logger *logger, int32_t number, const char *format) {
  Logger_LogError(logger, nullptr, number, format);
}
void log_debug_unchecked(Logger *logger, const char *format) {
  Logger_LogDebug(logger, nullptr, format);
}
#pragma GCC diagnostic pop

TEST(Logger, HasTheSameRecordInC) {
  FileLogger logger;
  log_from_c(logger);
  EXPECT_EQ(logger.text_without_time(), "[WARNING] main@main.c:1: #5 from C 11\n");
}

TEST(Logger_New, RefusesLevelsOutsideOneToFive) {
  support::TemporaryFolder folder;
  const std::string path = folder / "x.log";
  for (const uint32_t level : {0U, 6U, UINT32_MAX, 0x80000001U}) {
    EXPECT_EQ(Logger_New(level, path.c_str(), 0), nullptr) << level;
    EXPECT_EQ(Logger_New(level, nullptr, 1), nullptr) << level;
  }
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(Logger_New, FillsTheRecord) {
  for (uint32_t level = 1; level <= 5; ++level) {
    const FileLogger holder(level);
    const Logger &logger = *const_cast<FileLogger &>(holder).operator->();
    EXPECT_EQ(logger.to_stderr, 0);
    EXPECT_EQ(logger.timestamps, 1);
    EXPECT_NE(logger.stream, nullptr);
    EXPECT_EQ(logger.callback, nullptr);
    EXPECT_EQ(logger.callback_context, nullptr);
    EXPECT_EQ(logger.level, level);
    EXPECT_STREQ(logger.text_encoding, "");
  }
}

TEST(Logger_New, TakesStandardErrorWithTheFlagAndDoesNotLookAtThePath) {
  support::TemporaryFolder folder;
  const std::string path = folder / "x.log";
  Logger *logger = Logger_New(5, path.c_str(), 7);
  EXPECT_EQ(logger->stream, stderr);
  EXPECT_EQ(logger->to_stderr, 1);
  support::CapturedDescriptor errors(2);
  Logger_LogInfo(logger, nullptr, "seen");
  EXPECT_EQ(errors.text().substr(21), "   INFO] seen\n");
  Logger_Delete(logger);
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(Logger_New, AppendsToWhatTheFileHolds) {
  support::TemporaryFolder folder;
  const std::string path = folder / "x.log";
  support::write_file(path, "before\n");
  for (const char *message : {"one", "two"}) {
    Logger *logger = Logger_New(5, path.c_str(), 0);
    logger->timestamps = 0;
    Logger_LogInfo(logger, nullptr, "%s", message);
    Logger_Delete(logger);
  }
  EXPECT_EQ(support::read_file(path), "before\n[   INFO] one\n[   INFO] two\n");
}

TEST(Logger_New, KeepsTheFileFromProgramsThatTheProcessStarts) {
  FileLogger logger;
  EXPECT_NE(::fcntl(Logger_GetLogFileno(logger), F_GETFD) & FD_CLOEXEC, 0);
}

TEST(Logger_New, GivesALoggerThatWritesNothingWhenTheFileCannotBeOpened) {
  support::TemporaryFolder folder;
  const std::string missing = folder / "no such folder/x.log";
  const std::string below_a_file = folder / "file/x.log";
  support::write_file(folder / "file", "");
  for (const char *path :
       {folder.path().c_str(), missing.c_str(), below_a_file.c_str(), static_cast<const char *>(nullptr)}) {
    Logger *logger = Logger_New(5, path, 0);
    ASSERT_NE(logger, nullptr);
    EXPECT_EQ(logger->stream, nullptr);
    EXPECT_EQ(Logger_GetLogFileno(logger), -1);
    Logger_LogError(logger, "x", 1, "to nowhere");
    Logger_RedirectStdout(logger);
    Logger_RedirectStderr(logger);
    Logger_Delete(logger);
  }
}

TEST(Logger_Delete, ClosesTheFileItOpened) {
  support::TemporaryFolder folder;
  const std::string path = folder / "x.log";
  const int before = support::open_descriptors();
  Logger *logger = Logger_New(5, path.c_str(), 0);
  EXPECT_EQ(support::open_descriptors(), before + 1);
  Logger_Delete(logger);
  EXPECT_EQ(support::open_descriptors(), before);
}

TEST(Logger_Delete, LeavesTheStandardStreamsOpen) {
  Logger_Delete(Logger_New(5, nullptr, 1));
  Logger *logger = Logger_New(5, nullptr, 0);
  logger->stream = stdout;
  Logger_Delete(logger);
  EXPECT_GE(::fcntl(1, F_GETFD), 0);
  EXPECT_GE(::fcntl(2, F_GETFD), 0);
}

TEST(Logger, IgnoresNullEverywhere) {
  Logger_Delete(nullptr);
  Logger_SetCallback(
      nullptr, [](void *, const char *) { FAIL(); }, nullptr);
  Logger_SetLogLevel(nullptr, 3);
  EXPECT_EQ(Logger_GetLogLevel(nullptr), 0U);
  Logger_SetTextEncoding(nullptr, "UTF-8");
  for (uint32_t level = 1; level <= 5; ++level) {
    log_at(nullptr, level, "x", 1, "x");
  }
  Logger_LogSystemError(nullptr, "x", 2, 0);
  Logger_RedirectStdout(nullptr);
  Logger_RedirectStderr(nullptr);
  EXPECT_EQ(Logger_GetLogFileno(nullptr), -1);
}

TEST(Logger, WritesItsLevelAndTheLowerOnes) {
  for (const uint32_t own : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 0x80000000U, UINT32_MAX}) {
    FileLogger logger;
    logger->timestamps = 0;
    Logger_SetLogLevel(logger, own);
    EXPECT_EQ(Logger_GetLogLevel(logger), own);
    std::string expected;
    for (uint32_t level = 1; level <= 5; ++level) {
      log_at(logger, level, nullptr, 0, "x");
      if (own >= level) expected += model_line(level, nullptr, 0, "x");
    }
    EXPECT_EQ(logger.text(), expected) << own;
  }
}

TEST(Logger, ShowsTheNumberInFatalErrorAndWarningLinesOnly) {
  FileLogger logger;
  logger->timestamps = 0;
  for (uint32_t level = 1; level <= 5; ++level) {
    log_at(logger, level, nullptr, 5, "x");
    log_at(logger, level, nullptr, 0, "x");
  }
  EXPECT_EQ(logger.text(),
            "[  FATAL] #5 x\n[  FATAL] x\n[  ERROR] #5 x\n[  ERROR] x\n[WARNING] #5 x\n[WARNING] x\n"
            "[   INFO] x\n[   INFO] x\n[  DEBUG] x\n[  DEBUG] x\n");
}

TEST(Logger, ShowsEveryNumber) {
  FileLogger logger;
  logger->timestamps = 0;
  for (const int32_t number : {-1, INT32_MIN, INT32_MAX}) {
    Logger_LogFatalError(logger, "f@x.c:1", number, "x");
  }
  EXPECT_EQ(
      logger.text(),
      "[  FATAL] f@x.c:1: #-1 x\n[  FATAL] f@x.c:1: #-2147483648 x\n[  FATAL] f@x.c:1: #2147483647 x\n");
}

TEST(Logger, AddsALineEndUnlessTheMessageHasOneAnywhere) {
  FileLogger logger;
  logger->timestamps = 0;
  for (const char *message : {"a\nb", "abc", "abc\n", "\n", ""}) {
    Logger_LogInfo(logger, "", "%s", message);
  }
  EXPECT_EQ(logger.text(), "[   INFO] a\nb[   INFO] abc\n[   INFO] abc\n[   INFO] \n[   INFO] \n");
}

TEST(Logger, TakesANullFormatForAnEmptyMessage) {
  FileLogger logger;
  logger->timestamps = 0;
  log_error_unchecked(logger, 3, nullptr);
  EXPECT_EQ(logger.text(), "[  ERROR] #3 \n");
}

TEST(Logger, EndsTheMessageAtAZeroByteInIt) {
  FileLogger logger;
  logger->timestamps = 0;
  Logger_LogInfo(logger, nullptr, "ab%ccd\n", 0);
  EXPECT_EQ(logger.text(), "[   INFO] ab\n");
}

TEST(Logger, ShowsNoTimeWithoutTheFlag) {
  FileLogger logger;
  Logger_LogInfo(logger, nullptr, "x");
  logger->timestamps = 0;
  Logger_LogInfo(logger, nullptr, "x");
  EXPECT_EQ(logger.text_without_time(), "[   INFO] x\n[   INFO] x\n");
}

TEST(Logger, LeavesErrnoAloneAndKnowsItInAFormat) {
  FileLogger logger;
  logger->timestamps = 0;
  for (const int number : {ENOENT, EACCES}) {
    for (const std::size_t length : {0U, 10000U}) {
      const std::string text(length, 'x');
      const std::string format = text + "%m";
      errno = number;
      log_debug_unchecked(logger, format.c_str());
      EXPECT_EQ(errno, number);
      errno = number;
      Logger_LogSystemError(logger, nullptr, 1, 1);
      EXPECT_EQ(errno, number);
    }
  }
  EXPECT_EQ(logger.text().find("[  DEBUG] No such file or directory\n"), 0U);
  EXPECT_NE(logger.text().find("xPermission denied\n"), std::string::npos);
}

// Around the bounds of every level and of the location, with and without a line end of the message's own.
TEST(Logger, EqualsThePlainModelForMessagesAndLocationsOfEveryLength) {
  FileLogger logger;
  logger->timestamps = 0;
  std::mt19937 random(20261115);
  const std::vector<std::size_t> edges{0,    1,     5,     600,   8189,  8190,  8191,  8192,
                                       8193, 20000, 65533, 65534, 65535, 65536, 70000, 200000};
  const std::vector<std::size_t> locations{0, 1, 20, 508, 509, 510, 511, 512, 513, 600, 5000};
  for (const std::size_t edge : edges) {
    for (uint32_t level = 1; level <= 5; ++level) {
      std::string message(edge, 'm');
      for (char &c : message) {
        c = static_cast<char>('a' + random() % 26);
      }
      if (edge != 0 && random() % 3 == 0) message[random() % edge] = '\n';
      std::string location(locations[random() % locations.size()], 'L');
      const int32_t number = random() % 2 == 0 ? 0 : static_cast<int32_t>(random());
      std::filesystem::resize_file(logger.path(), 0);
      log_at(logger, level, location.c_str(), number, message);
      ASSERT_TRUE(logger.text() == model_line(level, location.c_str(), number, message))
          << "level " << level << ", message " << edge << ", location " << location.size();
    }
  }
}

TEST(Logger, CutsALocationAndItsColonAt511Characters) {
  for (const std::size_t length : {508U, 509U, 510U, 511U, 512U, 100000U}) {
    FileLogger logger;
    logger->timestamps = 0;
    const std::string location(length, 'L');
    Logger_LogInfo(logger, location.c_str(), "x");
    EXPECT_EQ(logger.text(), "[   INFO] " + (location + ": ").substr(0, 511) + "x\n") << length;
  }
}

TEST(Logger, WritesBehindWhatTheHostPrintedToTheStream) {
  FileLogger logger;
  logger->timestamps = 0;
  std::fputs("own ", logger->stream);
  Logger_LogInfo(logger, nullptr, "x");
  std::fputs("last", logger->stream);
  EXPECT_EQ(logger.text(), "own [   INFO] x\n");
}

TEST(Logger, PrintsToAStreamWithoutDescriptor) {
  char area[64] = "";
  Logger *logger = Logger_New(5, nullptr, 0);
  logger->timestamps = 0;
  logger->stream = ::fmemopen(area, sizeof area, "w");
  Logger_LogInfo(logger, nullptr, "x");
  EXPECT_STREQ(area, "[   INFO] x\n");
  Logger_Delete(logger);
}

TEST(Logger, KeepsQuietWhenTheStreamCannotBeWritten) {
  Logger *logger = Logger_New(5, "/dev/full", 0);
  Logger_LogInfo(logger, nullptr, "x");
  ::close(Logger_GetLogFileno(logger));
  Logger_LogInfo(logger, nullptr, "x");
  Logger_Delete(logger);
}

struct Received {
  int calls = 0;
  std::string line;
  Logger *nested = nullptr;
};

void receive(void *context, const char *line) {
  auto *received = static_cast<Received *>(context);
  ++received->calls;
  received->line = line;
  if (Logger *nested = std::exchange(received->nested, nullptr)) Logger_LogInfo(nested, "", "nested");
}

TEST(Logger_SetCallback, ClosesTheFileAndReceivesTheLinesFromThenOn) {
  const int before = support::open_descriptors();
  FileLogger logger;
  Received received;
  Logger_LogInfo(logger, nullptr, "file");
  Logger_SetCallback(logger, receive, &received);
  EXPECT_EQ(support::open_descriptors(), before);
  EXPECT_EQ(logger->stream, nullptr);
  EXPECT_EQ(logger->callback, receive);
  EXPECT_EQ(logger->callback_context, &received);
  EXPECT_EQ(Logger_GetLogFileno(logger), -1);
  Logger_LogError(logger, "f@x.c:9", 2, "line");
  EXPECT_EQ(received.calls, 1);
  EXPECT_EQ(received.line.substr(21), "  ERROR] f@x.c:9: #2 line\n");
  EXPECT_EQ(logger.text_without_time(), "[   INFO] file\n");
}

TEST(Logger_SetCallback, ChangesNothingForANullCallback) {
  FileLogger logger;
  FILE *const stream = logger->stream;
  Logger_SetCallback(logger, nullptr, &logger);
  EXPECT_EQ(logger->stream, stream);
  EXPECT_EQ(logger->callback_context, nullptr);
}

TEST(Logger_SetCallback, LeavesStandardErrorOpenAndClearsItsFlag) {
  Logger *logger = Logger_New(5, nullptr, 1);
  Received received;
  Logger_SetCallback(logger, receive, &received);
  EXPECT_EQ(logger->to_stderr, 0);
  EXPECT_GE(::fcntl(2, F_GETFD), 0);
  Logger_Delete(logger);
}

TEST(Logger_SetCallback, ReceivesLinesOfEveryLengthWhole) {
  FileLogger logger;
  Received received;
  Logger_SetCallback(logger, receive, &received);
  logger->timestamps = 0;
  const std::string location(600, 'L');
  for (uint32_t level = 1; level <= 5; ++level) {
    for (const std::size_t length : {0U, 8190U, 8192U, 65534U, 65535U}) {
      const std::string message(length, 'x');
      log_at(logger, level, location.c_str(), INT32_MIN, message);
      EXPECT_TRUE(received.line == model_line(level, location.c_str(), INT32_MIN, message)) << level;
    }
  }
}

TEST(Logger_SetCallback, MayLogItself) {
  FileLogger logger;
  Received received;
  Logger_SetCallback(logger, receive, &received);
  received.nested = logger;
  Logger_LogInfo(logger, "", "outer");
  EXPECT_EQ(received.calls, 2);
  EXPECT_EQ(received.line.substr(21), "   INFO] nested\n");
}

TEST(Logger_SetCallback, IsCalledForTheLevelsOfTheLoggerOnly) {
  Logger *logger = Logger_New(3, nullptr, 0);
  Received received;
  Logger_SetCallback(logger, receive, &received);
  for (uint32_t level = 1; level <= 5; ++level) {
    log_at(logger, level, nullptr, 0, "x");
  }
  EXPECT_EQ(received.calls, 3);
  Logger_Delete(logger);
}

TEST(Logger_SetTextEncoding, KeepsAtMost62Characters) {
  FileLogger logger;
  for (const std::size_t length : {0U, 1U, 61U, 62U, 63U, 100U}) {
    Logger_SetTextEncoding(logger, std::string(length, 'e').c_str());
    EXPECT_EQ(logger->text_encoding, std::string(std::min<std::size_t>(length, 62), 'e'));
  }
  Logger_SetTextEncoding(logger, nullptr);
  EXPECT_STREQ(logger->text_encoding, "");
}

TEST(Logger_LogSystemError, ShowsTheTextOfTheNumberInAnErrorLine) {
  FileLogger logger;
  logger->timestamps = 0;
  Logger_LogSystemError(logger, "open@x.c:1", ENOENT, 0);
  Logger_LogSystemError(logger, "open@x.c:1", ENOENT, 1);
  const std::string line = "[  ERROR] open@x.c:1: #2 No such file or directory\n";
  EXPECT_EQ(logger.text(), line + line);
}

TEST(Logger_LogSystemError, TakesMinusOneForErrnoOnlyWithoutTheFlag) {
  FileLogger logger;
  logger->timestamps = 0;
  errno = EACCES;
  Logger_LogSystemError(logger, nullptr, -1, 0);
  Logger_LogSystemError(logger, nullptr, -1, 1);
  EXPECT_EQ(logger.text(), "[  ERROR] #-1 Permission denied\n[  ERROR] #-1 Unknown error -1\n");
}

TEST(Logger_LogSystemError, IsAnErrorLineAlsoForTheLevel) {
  FileLogger logger(LOGGER_LEVEL_FATAL);
  Logger_LogSystemError(logger, nullptr, ENOENT, 0);
  EXPECT_EQ(logger.text(), "");
}

TEST(Logger_Redirect, SendsStandardOutputAndErrorToTheLog) {
  FileLogger logger;
  logger->timestamps = 0;
  {
    support::CapturedDescriptor output(1);
    support::CapturedDescriptor errors(2);
    Logger_RedirectStdout(logger);
    std::puts("printed");
    std::fflush(stdout);
    Logger_RedirectStderr(logger);
    std::fputs("error\n", stderr);
    Logger_LogInfo(logger, nullptr, "x");
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(errors.text(), "");
  }
  EXPECT_EQ(logger.text(), "printed\nerror\n[   INFO] x\n");
}

// A service that was started without standard input opens its log in its place.
TEST(Logger_Redirect, SendsStandardOutputToALogThatHasDescriptor0) {
  const support::TemporaryFolder folder;
  const std::string path = folder / "x.log";
  EXPECT_EXIT(
      {
        ::close(0);
        const Logger *logger = Logger_New(LOGGER_LEVEL_DEBUG, path.c_str(), 0);
        const bool is_first = Logger_GetLogFileno(logger) == 0;
        Logger_RedirectStdout(logger);
        ::_exit(is_first && ::write(1, "printed", 7) == 7 ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
  EXPECT_EQ(support::read_file(path), "printed");
}

TEST(Logger_GetLogFileno, TellsTheDescriptorOfTheStream) {
  FileLogger logger;
  EXPECT_EQ(Logger_GetLogFileno(logger), ::fileno(logger->stream));
  EXPECT_GE(Logger_GetLogFileno(logger), 0);
}

TEST(Logger_GetMaxPrecision, Is8000To60000ByLevel) {
  for (int32_t level = 1; level <= 4; ++level) {
    EXPECT_EQ(Logger_GetMaxPrecisionSz(level, 0), 8000);
    EXPECT_EQ(Logger_GetMaxPrecision(level, "abc"), 8000);
  }
  EXPECT_EQ(Logger_GetMaxPrecisionSz(5, -1), 60000);
  EXPECT_EQ(Logger_GetMaxPrecision(5, "abc"), 60000);
  for (const int32_t level : {0, -1, 6, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(Logger_GetMaxPrecisionSz(level, 5), 1) << level;
    EXPECT_EQ(Logger_GetMaxPrecision(level, "abc"), 1) << level;
  }
  EXPECT_EQ(Logger_GetMaxPrecision(5, ""), 0);
  EXPECT_EQ(Logger_GetMaxPrecision(5, nullptr), 0);
}

TEST(LoggerMessage, EndsAtAValueThatCannotBeFormatted) {
  std::string lines;
  Logger *logger = Logger_New(5, nullptr, 0);
  const auto collect = [](void *all, const char *line) { *static_cast<std::string *>(all) += line; };
  Logger_SetCallback(logger, collect, &lines);
  const wchar_t lone_surrogate[] = {0xD800, 0};
  Logger_LogError(logger, "here", 2, "cannot open %ls for %s", lone_surrogate, "ann");
  Logger_Delete(logger);
  EXPECT_TRUE(lines.ends_with("  ERROR] here: #2 cannot open \n")) << lines;
}

}  // namespace
