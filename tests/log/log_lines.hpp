// What the tests of the logger share: a logger on a file of its own and the plain model of a line.
#pragma once

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "files.hpp"
#include "logger.h"

namespace log_lines {

/// A logger at a level on a file in a temporary folder.
class FileLogger {
 public:
  explicit FileLogger(uint32_t level = LOGGER_LEVEL_DEBUG)
      : path_(folder_ / "x.log"), logger_(Logger_New(level, path_.c_str(), 0)) {}
  ~FileLogger() { Logger_Delete(logger_); }
  FileLogger(const FileLogger &) = delete;
  FileLogger &operator=(const FileLogger &) = delete;

  operator Logger *() { return logger_; }
  Logger *operator->() { return logger_; }
  [[nodiscard]] const std::string &path() const { return path_; }
  [[nodiscard]] std::string text() const { return support::read_file(path_); }

  /// The text without the times, which every line of it must have.
  [[nodiscard]] std::string text_without_time() const {
    std::string text = this->text();
    EXPECT_GE(text.size(), 21U);
    return text.size() < 21 ? text : text.erase(1, 20);
  }

 private:
  support::TemporaryFolder folder_;
  std::string path_;
  Logger *logger_;
};

/// Logs at a level given by number; information and debug lines take no error number.
inline void log_at(Logger *logger, uint32_t level, const char *location, int32_t number,
                   const std::string &message) {
  switch (level) {
    case 1:
      return Logger_LogFatalError(logger, location, number, "%s", message.c_str());
    case 2:
      return Logger_LogError(logger, location, number, "%s", message.c_str());
    case 3:
      return Logger_LogWarning(logger, location, number, "%s", message.c_str());
    case 4:
      return Logger_LogInfo(logger, location, "%s", message.c_str());
    default:
      return Logger_LogDebug(logger, location, "%s", message.c_str());
  }
}

/// The line without its time, restated with the printf family.
inline std::string model_line(uint32_t level, const char *location, int32_t number,
                              const std::string &message) {
  static const char *const names[] = {"       ", "  FATAL", "  ERROR", "WARNING", "   INFO", "  DEBUG"};
  static const std::size_t bounds[] = {0, 8192, 8192, 8192, 8191, 65535};
  std::vector<char> area(65536);
  std::snprintf(area.data(), bounds[level], "%s", message.c_str());
  char number_part[32] = "";
  if (number != 0 && level < 4) std::snprintf(number_part, sizeof number_part, "#%d ", number);
  char location_part[512] = "";
  if (location != nullptr && *location != '\0') {
    const std::string whole = std::string(location) + ": ";
    std::snprintf(location_part, sizeof location_part, "%s", whole.c_str());
  }
  const char *end = std::strchr(area.data(), '\n') == nullptr ? "\n" : "";
  return "[" + std::string(names[level]) + "] " + location_part + number_part + area.data() + end;
}

}  // namespace log_lines
