// A log line with two values, flushed, against one bare write(2) of the same bytes. The files lie in memory,
// so that the figures are those of the code and not of a disk. Each peer writes its own kind of line.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>

#include "contender.hpp"
#include "logger.h"

#ifdef HAVE_SPDLOG
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#endif
#ifdef HAVE_GLOG
#include <glog/logging.h>
#endif
#ifdef HAVE_LOG4C
#include <log4c.h>
#include <log4c/appender_type_stream2.h>
#endif

namespace {

constexpr char kWork[] = "log-line";
constexpr char kInput[] = "two values";
constexpr char kConstantInput[] = "constant text";

constexpr char kLocation[] = "open_table@storage.c:120";
constexpr char kFormat[] = "cannot open %s after %d attempts";
constexpr char kName[] = "/data/tables/customers.tab";
constexpr char kText[] = "cannot open /data/tables/customers.tab after 3 attempts";

// A file without a name that appends; it is emptied now and then, at the cost of nothing that counts.
class MemoryFile {
 public:
  MemoryFile() : descriptor_(::memfd_create("log", MFD_CLOEXEC)) {
    ::fcntl(descriptor_, F_SETFL, ::fcntl(descriptor_, F_GETFL) | O_APPEND);
  }
  ~MemoryFile() { ::close(descriptor_); }
  MemoryFile(const MemoryFile &) = delete;
  MemoryFile &operator=(const MemoryFile &) = delete;

  [[nodiscard]] int descriptor() const { return descriptor_; }
  [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

  // Every iteration of every contender calls this, so it falls out of the ratios.
  void empty_now_and_then() {
    if (++lines_ % 65536 == 0 && ::ftruncate(descriptor_, 0) != 0) std::perror("ftruncate");
  }

 private:
  int descriptor_;
  unsigned lines_ = 0;
};

// A contender that writes one line per step to the file, by way of what it has opened on it; what it has
// written must have reached the file at once.
template <class Open, class Write, class Close>
void writer(const char *input, const char *name, Open open, Write write, Close close) {
  bench::contender(kWork, input, name, [=](benchmark::State &state) {
    MemoryFile file;
    auto *const opened = open(file);
    write(opened);
    if (::lseek(file.descriptor(), 0, SEEK_END) <= 0) state.SkipWithError("not flushed");
    for (auto _ : state) {
      write(opened);
      file.empty_now_and_then();
    }
    close(opened);
  });
}

Logger *open_logger(const MemoryFile &file) {
  return Logger_New(LOGGER_LEVEL_DEBUG, file.path().c_str(), 0);
}

template <class Write>
void own_writer(const char *input, Write write) {
  writer(input, bench::kOwn, open_logger, write, Logger_Delete);
}

std::string one_line() {
  MemoryFile file;
  Logger *logger = open_logger(file);
  Logger_LogError(logger, kLocation, 2, kFormat, kName, 3);
  Logger_Delete(logger);
  std::array<char, 512> line;
  const ssize_t size = ::pread(file.descriptor(), line.data(), line.size(), 0);
  return {line.data(), static_cast<std::size_t>(size)};
}

void add_bare_write(const char *input) {
  static const std::string line = one_line();
  writer(
      input, "bare write(2)", [](MemoryFile &file) { return &file; },
      [](MemoryFile *file) {
        if (::write(file->descriptor(), line.data(), line.size()) < 0) std::perror("write");
      },
      [](MemoryFile *) {});
}

void print_with_ctime(FILE *stream) {
  const std::time_t now = std::time(nullptr);
  std::array<char, 32> text;
  std::snprintf(text.data(), text.size(), "%.19s ", std::ctime(&now));
  std::array<char, 8192> message;
  std::snprintf(message.data(), message.size(), kFormat, kName, 3);
  std::fprintf(stream, "[%s%s] %s: #%d %s%s", text.data(), "  ERROR", kLocation, 2, message.data(),
               std::strchr(message.data(), '\n') == nullptr ? "\n" : "");
  std::fflush(stream);
}

#ifdef HAVE_SPDLOG
void add_spdlog() {
  writer(
      kInput, "spdlog",
      [](const MemoryFile &file) {
        auto sink = std::make_shared<spdlog::sinks::basic_file_sink_mt>(file.path());
        auto *logger = new spdlog::logger("log", std::move(sink));
        logger->flush_on(spdlog::level::trace);
        return logger;
      },
      [](spdlog::logger *logger) {
        logger->log(spdlog::source_loc{"storage.c", 120, "open_table"}, spdlog::level::err,
                    "cannot open {} after {} attempts", kName, 3);
      },
      [](spdlog::logger *logger) { delete logger; });
}
#endif

#ifdef HAVE_GLOG
void add_glog() {
  google::InitGoogleLogging("log_bench");
  FLAGS_logbuflevel = -1;
  FLAGS_timestamp_in_logfile_name = false;
  writer(
      kInput, "glog",
      [](const MemoryFile &file) {
        google::SetLogDestination(google::GLOG_INFO, file.path().c_str());
        LOG(INFO) << "opens the file";
        return &file;
      },
      [](const MemoryFile *) { LOG(INFO) << "cannot open " << kName << " after " << 3 << " attempts"; },
      [](const MemoryFile *) { google::SetLogDestination(google::GLOG_INFO, ""); });
}
#endif

#ifdef HAVE_LOG4C
// log4c keeps appenders and categories by name for good, so each opening has a name of its own.
void add_log4c() {
  log4c_init();
  writer(
      kInput, "log4c",
      [](const MemoryFile &file) {
        static int openings = 0;
        const std::string name = "storage" + std::to_string(++openings);
        FILE *stream = std::fopen(file.path().c_str(), "a");
        std::setvbuf(stream, nullptr, _IONBF, 0);
        log4c_appender_t *appender = log4c_appender_get(name.c_str());
        log4c_appender_set_type(appender, log4c_appender_type_get("stream2"));
        log4c_stream2_set_fp(appender, stream);
        log4c_appender_set_layout(appender, log4c_layout_get("dated"));
        log4c_category_t *category = log4c_category_get(name.c_str());
        log4c_category_set_priority(category, LOG4C_PRIORITY_DEBUG);
        log4c_category_set_appender(category, appender);
        return category;
      },
      [](log4c_category_t *category) {
        log4c_category_log(category, LOG4C_PRIORITY_ERROR, kFormat, kName, 3);
      },
      [](log4c_category_t *category) {
        auto *appender = const_cast<log4c_appender_t *>(log4c_category_get_appender(category));
        std::fclose(log4c_stream2_get_fp(appender));
      });
}
#endif

[[maybe_unused]] const bool added = [] {
  own_writer(kInput, [](Logger *logger) { Logger_LogError(logger, kLocation, 2, kFormat, kName, 3); });
  own_writer(kConstantInput, [](Logger *logger) { Logger_LogError(logger, kLocation, 2, kText); });
  add_bare_write(kInput);
  add_bare_write(kConstantInput);
  writer(
      kInput, "printf and ctime", [](const MemoryFile &file) { return std::fopen(file.path().c_str(), "a"); },
      print_with_ctime, [](FILE *stream) { std::fclose(stream); });
#ifdef HAVE_SPDLOG
  add_spdlog();
#endif
#ifdef HAVE_GLOG
  add_glog();
#endif
#ifdef HAVE_LOG4C
  add_log4c();
#endif
  return true;
}();

}  // namespace
