// Composition of log file names.
#include "logfilename.h"

#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <ctime>

#include "fixed_text.hpp"
#include "handles.hpp"
#include "readrcs.h"
#include "text_writer.hpp"
#include "thread.h"
#include "writable_text.hpp"

namespace {

using zorvcrt::TextWriter;
using zorvcrt::view_of;

constexpr std::string_view kDefaultDirectory = "/tmp";
constexpr std::string_view kDefaultExtension = "log";
constexpr char kDirectorySetting[] = "QUOR_LOG";
constexpr uint32_t kAllLevels = 7;

constexpr std::size_t kNewBlockSize = 1024;
constexpr std::size_t kLongestPath = 4096;  // the system's own limit, terminator included
constexpr std::size_t kTimeTextRoom = 96;
constexpr int64_t kNanosecondsPerMillisecond = 1000000;

struct Suffixes {
  bool process;
  bool thread;
  bool time;
};

std::string_view extension_without_dot(const char *extension) {
  std::string_view text = extension == nullptr ? kDefaultExtension : view_of(extension);
  if (text.starts_with('.')) text.remove_prefix(1);
  return text;
}

void append_time(TextWriter &path) {
  std::timespec now{};
  std::tm local{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  ::tzset();  // localtime() does so, localtime_r() need not
  ::localtime_r(&now.tv_sec, &local);
  std::array<char, kTimeTextRoom> area;
  std::snprintf(area.data(), area.size(), "_%04" PRId64 "%02d%02d%02d%02d%02d%03d",
                int64_t{local.tm_year} + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
                local.tm_sec, static_cast<int>(now.tv_nsec / kNanosecondsPerMillisecond));
  path.append(area.data());
}

// The directory without a separator at its end, and what stands between it and the name.
struct Folder {
  explicit Folder(std::string_view text) : path(text), separator(text.empty() ? "" : "/") {
    shortened = path.ends_with('/') || path.ends_with('\\');
    if (shortened) path.remove_suffix(1);
  }
  std::string_view path;
  std::string_view separator;
  bool shortened;
};

// Composes apart from the caller's buffer, which may be the memory of one of the parts.
char *compose(char *buffer, const Folder &folder, const char *name, const char *extension, Suffixes with) {
  std::array<char, kLongestPath> area;
  TextWriter path(area);
  path.append(folder.path).append(folder.separator).append(view_of(name));
  if (with.process) path.append("_").append_number(::getpid());
  if (with.thread) path.append("_").append_number(static_cast<uint32_t>(ZfxGetCurrentThreadId()));
  if (with.time) append_time(path);
  path.append(".").append(extension_without_dot(extension));

  std::size_t size = kLongestPath;
  if (buffer == nullptr) {
    buffer = static_cast<char *>(ZfxMemAlloc(kNewBlockSize));
    size = kNewBlockSize;
  }
  zorvcrt::copy_text(buffer, static_cast<int64_t>(size), path.view());
  return buffer;
}

}  // namespace

char *CrtGetLogFileName(char *buffer, const char *directory, const char *name, const char *extension,
                        int32_t with_pid, int32_t with_thread, int32_t with_time) {
  const Folder folder(directory == nullptr ? kDefaultDirectory : directory);
  const std::size_t length = folder.path.size();
  if (directory != nullptr && folder.shortened) zorvcrt::terminate_if_writable(directory + length);
  return compose(buffer, folder, name, extension, {with_pid != 0, with_thread != 0, with_time != 0});
}

char *getLogFileNameEx(char *buffer, const char *directory, const char *name, const char *extension,
                       int32_t with_pid, int32_t with_thread, int32_t with_time) {
  if (directory != nullptr && *directory != '\0') {
    return CrtGetLogFileName(buffer, directory, name, extension, with_pid, with_thread, with_time);
  }
  const zorvcrt::UniqueBlock<char> setting(ZfxReadRCS(kDirectorySetting, kAllLevels));
  const std::string_view configured = view_of(setting.get());
  const Folder folder(configured.empty() ? kDefaultDirectory : configured);
  return compose(buffer, folder, name, extension, {with_pid != 0, with_thread != 0, with_time != 0});
}

char *getLogFileName(char *buffer, const char *directory, const char *name, const char *extension,
                     int32_t with_pid, int32_t with_thread) {
  return getLogFileNameEx(buffer, directory, name, extension, with_pid, with_thread, 0);
}
