// Loggers: the record, its stream and the functions of the five levels.
#include "logger.h"

#include <unistd.h>

#include <array>
#include <cstdarg>
#include <cstring>

#include "GetErrorText.h"
#include "errno_keeper.hpp"
#include "fixed_text.hpp"
#include "handles.hpp"
#include "logger_line.hpp"

namespace {

using zorvcrt::__print_log;

constexpr char kAppendMode[] = "ae";
constexpr int32_t kErrorTextSize = 1023;
constexpr std::size_t kErrorTextRoom = 1024;

bool is_level(int64_t level) {
  return level >= LOGGER_LEVEL_FATAL && level <= LOGGER_LEVEL_DEBUG;
}

void close_stream(Logger &logger) {
  FILE *const stream = logger.stream;
  logger.stream = nullptr;
  if (stream != nullptr && stream != stdout && stream != stderr) std::fclose(stream);
}

void redirect(const Logger *logger, int descriptor) {
  if (const int32_t target = Logger_GetLogFileno(logger); target >= 0) ::dup2(target, descriptor);
}

}  // namespace

Logger *Logger_New(uint32_t level, const char *path, int32_t use_stderr) {
  if (!is_level(level)) return nullptr;
  auto logger = zorvcrt::allocate_record<Logger>();
  if (!logger) return nullptr;
  logger->to_stderr = use_stderr != 0 ? 1 : 0;
  logger->timestamps = 1;
  logger->level = level;
  if (use_stderr != 0) {
    logger->stream = stderr;
  } else if (path != nullptr) {
    logger->stream = std::fopen(path, kAppendMode);
  }
  return logger.release();
}

void Logger_Delete(Logger *logger) {
  if (logger == nullptr) return;
  close_stream(*logger);
  ZfxMemFree(logger);
}

void Logger_SetCallback(Logger *logger, LoggerCallback callback, void *context) {
  if (logger == nullptr || callback == nullptr) return;
  close_stream(*logger);
  logger->to_stderr = 0;
  logger->callback = callback;
  logger->callback_context = context;
}

void Logger_SetLogLevel(Logger *logger, uint32_t level) {
  if (logger != nullptr) logger->level = level;
}

uint32_t Logger_GetLogLevel(const Logger *logger) {
  return logger == nullptr ? 0 : logger->level;
}

void Logger_SetTextEncoding(Logger *logger, const char *name) {
  if (logger == nullptr) return;
  zorvcrt::copy_text(logger->text_encoding, sizeof logger->text_encoding, zorvcrt::view_of(name));
}

void Logger_LogDebug(const Logger *logger, const char *location, const char *format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  __print_log(logger, LOGGER_LEVEL_DEBUG, location, 0, format, arguments);
  va_end(arguments);
}

void Logger_LogInfo(const Logger *logger, const char *location, const char *format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  __print_log(logger, LOGGER_LEVEL_INFO, location, 0, format, arguments);
  va_end(arguments);
}

void Logger_LogWarning(const Logger *logger, const char *location, int32_t error, const char *format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  __print_log(logger, LOGGER_LEVEL_WARNING, location, error, format, arguments);
  va_end(arguments);
}

void Logger_LogError(const Logger *logger, const char *location, int32_t error, const char *format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  __print_log(logger, LOGGER_LEVEL_ERROR, location, error, format, arguments);
  va_end(arguments);
}

void Logger_LogFatalError(const Logger *logger, const char *location, int32_t error, const char *format,
                          ...) {
  std::va_list arguments;
  va_start(arguments, format);
  __print_log(logger, LOGGER_LEVEL_FATAL, location, error, format, arguments);
  va_end(arguments);
}

void Logger_LogSystemError(const Logger *logger, const char *location, int32_t error, int32_t use_strerror) {
  const zorvcrt::ErrnoKeeper callers_errno;
  std::array<char, kErrorTextRoom> area;
  const char *text = area.data();
  if (use_strerror != 0) {
    text = ::strerror_r(error, area.data(), area.size());
  } else {
    ZfxGetErrorText(error, area.data(), kErrorTextSize);
  }
  if (text != nullptr && *text != '\0') Logger_LogError(logger, location, error, "%s", text);
}

void Logger_RedirectStdout(const Logger *logger) {
  redirect(logger, STDOUT_FILENO);
}

void Logger_RedirectStderr(const Logger *logger) {
  redirect(logger, STDERR_FILENO);
}

int32_t Logger_GetLogFileno(const Logger *logger) {
  return logger == nullptr || logger->stream == nullptr ? -1 : ::fileno(logger->stream);
}

int32_t Logger_GetMaxPrecisionSz(int32_t level, int32_t /*length*/) {
  return zorvcrt::kLevels[is_level(level) ? static_cast<std::size_t>(level) : 0].max_text_precision;
}

int32_t Logger_GetMaxPrecision(int32_t level, const char *string) {
  if (string == nullptr || *string == '\0') return 0;
  return Logger_GetMaxPrecisionSz(level, 0);
}
