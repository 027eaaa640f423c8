// Colours and progress on terminals.
#include "terminal.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>
#include <utility>

namespace tools {

namespace {

constexpr std::chrono::milliseconds kBetweenNews{100};
constexpr double kMegabyte = 1e6;

bool has_colours(FILE *stream) {
  const char *refusal = std::getenv("NO_COLOR");
  const char *kind = std::getenv("TERM");
  if (refusal != nullptr && *refusal != '\0') return false;
  if (kind != nullptr && std::string_view(kind) == "dumb") return false;
  return ::isatty(::fileno(stream)) != 0;
}

std::string coloured(FILE *stream, const char *colour, const std::string &text) {
  return has_colours(stream) ? std::string(colour) + text + "\033[0m" : text;
}

uint64_t size_of(int input) {
  struct stat status = {};
  const bool has_size = ::fstat(input, &status) == 0 && S_ISREG(status.st_mode);
  return has_size ? static_cast<uint64_t>(status.st_size) : 0;
}

std::string megabytes(uint64_t bytes) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", static_cast<double>(bytes) / kMegabyte);
  return text;
}

}  // namespace

std::string bold(FILE *stream, const std::string &text) {
  return coloured(stream, "\033[1m", text);
}

void complain(const std::string &name, const std::string &message) {
  const std::string front = coloured(stderr, "\033[31m", "zorvcrt " + name + ":");
  std::fprintf(stderr, "%s %s\n", front.c_str(), message.c_str());
}

Progress::Progress(std::string what, int input, bool is_wanted)
    : what_(std::move(what)),
      total_(size_of(input)),
      is_shown_(is_wanted && ::isatty(STDERR_FILENO) != 0 && ::isatty(input) == 0) {}

void Progress::add(uint64_t bytes) {
  done_ += bytes;
  if (!is_shown_ || Clock::now() < next_) return;
  std::string line = what_ + ": " + megabytes(done_);
  if (total_ >= done_) line += " of " + megabytes(total_);
  line += " MB read";
  std::fprintf(stderr, "\r%-*s", static_cast<int>(width_), line.c_str());
  std::fflush(stderr);
  width_ = line.size();
  next_ = Clock::now() + kBetweenNews;
}

void Progress::wipe() {
  if (width_ != 0) std::fprintf(stderr, "\r%*s\r", static_cast<int>(width_), "");
  width_ = 0;
}

}  // namespace tools
