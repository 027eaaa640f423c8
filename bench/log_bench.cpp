// A flushed log line against one bare write(2) of the same bytes and against the printf family with ctime().
// The files lie in memory, so that the figures are those of the code and not of a disk.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>

#include "logger.h"

namespace {

constexpr char kLocation[] = "open_table@storage.c:120";
constexpr char kFormat[] = "cannot open %s after %d attempts";
constexpr char kName[] = "/data/tables/customers.tab";

// A file without a name that appends; it is emptied now and then, outside the measured time.
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

std::string one_line() {
  MemoryFile file;
  Logger *logger = Logger_New(LOGGER_LEVEL_DEBUG, file.path().c_str(), 0);
  Logger_LogError(logger, kLocation, 2, kFormat, kName, 3);
  Logger_Delete(logger);
  char line[512];
  const ssize_t size = ::pread(file.descriptor(), line, sizeof line, 0);
  return {line, static_cast<std::size_t>(size)};
}

void BareWrite(benchmark::State &state) {
  MemoryFile file;
  const std::string line = one_line();
  for (auto _ : state) {
    benchmark::DoNotOptimize(::write(file.descriptor(), line.data(), line.size()));
    file.empty_now_and_then();
  }
}
BENCHMARK(BareWrite);

void LoggerLine(benchmark::State &state) {
  MemoryFile file;
  Logger *logger = Logger_New(LOGGER_LEVEL_DEBUG, file.path().c_str(), 0);
  for (auto _ : state) {
    Logger_LogError(logger, kLocation, 2, kFormat, kName, 3);
    file.empty_now_and_then();
  }
  Logger_Delete(logger);
}
BENCHMARK(LoggerLine);

void LoggerLineOfConstantText(benchmark::State &state) {
  MemoryFile file;
  Logger *logger = Logger_New(LOGGER_LEVEL_DEBUG, file.path().c_str(), 0);
  for (auto _ : state) {
    Logger_LogError(logger, kLocation, 2, "cannot open /data/tables/customers.tab after 3 attempts");
    file.empty_now_and_then();
  }
  Logger_Delete(logger);
}
BENCHMARK(LoggerLineOfConstantText);

void PrintfWithCtime(benchmark::State &state) {
  MemoryFile file;
  FILE *stream = std::fopen(file.path().c_str(), "a");
  for (auto _ : state) {
    const std::time_t now = std::time(nullptr);
    char text[32];
    std::snprintf(text, sizeof text, "%.19s ", std::ctime(&now));
    char message[8192];
    std::snprintf(message, sizeof message, kFormat, kName, 3);
    std::fprintf(stream, "[%s%s] %s: #%d %s%s", text, "  ERROR", kLocation, 2, message,
                 std::strchr(message, '\n') == nullptr ? "\n" : "");
    std::fflush(stream);
    file.empty_now_and_then();
  }
  std::fclose(stream);
}
BENCHMARK(PrintfWithCtime);

void DroppedLine(benchmark::State &state) {
  Logger *logger = Logger_New(LOGGER_LEVEL_ERROR, "/dev/null", 0);
  for (auto _ : state) {
    Logger_LogDebug(logger, kLocation, kFormat, kName, 3);
  }
  Logger_Delete(logger);
}
BENCHMARK(DroppedLine);

}  // namespace
