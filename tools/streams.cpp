// Input from files and standard input, output.
#include "streams.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "command.hpp"

namespace tools {

namespace {

constexpr char kStandardInput[] = "-";
constexpr std::size_t kBufferSize = 65536;

std::string name_of(const std::string &file) {
  return file == kStandardInput ? "standard input" : file;
}

int opened(const std::string &file) {
  const int descriptor = file == kStandardInput ? STDIN_FILENO : ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) throw Failure(file + ": " + std::strerror(errno));
  return descriptor;
}

[[noreturn]] void fail_to_write() {
  throw Failure(std::string("standard output: ") + std::strerror(errno));
}

bool may_show_progress(Input::Meanwhile written) {
  if (written == Input::Meanwhile::kStandardOutput) return ::isatty(STDOUT_FILENO) == 0;
  return written == Input::Meanwhile::kNothing;
}

}  // namespace

void occupy_closed_standard_streams() {
  for (int i = STDIN_FILENO; i <= STDERR_FILENO; ++i) {
    // Opening gives the lowest free number, which is this one.
    if (::fcntl(i, F_GETFD) < 0) ::open("/dev/null", i == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

Input::Input(const std::string &file, Meanwhile written)
    : name_(name_of(file)),
      descriptor_(opened(file)),
      progress_(name_, descriptor_, may_show_progress(written)),
      stream_(::fopencookie(this, "r", {read_some, nullptr, nullptr, nullptr})) {
  if (stream_) std::setvbuf(stream_.get(), nullptr, _IOFBF, kBufferSize);
  // The JSON parser ends the process when its input cannot be read, so the first byte is tried before it.
  const int c = stream_ ? std::getc(stream_.get()) : EOF;
  if (c != EOF) std::ungetc(c, stream_.get());
  throw_unless_readable();
}

Input::~Input() {
  if (descriptor_ != STDIN_FILENO) ::close(descriptor_);
}

void Input::throw_unless_readable() const {
  if (!stream_ || std::ferror(stream_.get()) != 0) throw Failure(name_ + ": " + std::strerror(errno));
}

ssize_t Input::read_some(void *input, char *area, std::size_t size) {
  Input &self = *static_cast<Input *>(input);
  ssize_t count = 0;
  do {
    count = ::read(self.descriptor_, area, size);
  } while (count < 0 && errno == EINTR);
  if (count > 0) self.progress_.add(static_cast<uint64_t>(count));
  if (count <= 0) self.progress_.wipe();
  return count;
}

std::size_t Input::read(void *area, std::size_t size) {
  const std::size_t count = std::fread(area, 1, size, stream_.get());
  throw_unless_readable();
  return count;
}

std::optional<std::string> Input::read_line() {
  std::string line;
  int c = EOF;
  while ((c = std::getc(stream_.get())) != EOF && c != '\n') {
    line += static_cast<char>(c);
  }
  throw_unless_readable();
  if (c == EOF && line.empty()) return std::nullopt;
  return line;
}

void write_output(const void *bytes, std::size_t size) {
  if (std::fwrite(bytes, 1, size, stdout) != size) fail_to_write();
}

void flush_output() {
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) fail_to_write();
}

}  // namespace tools
