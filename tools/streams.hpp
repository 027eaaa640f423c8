// What a command reads, from a file or from standard input, and what it writes to standard output.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "terminal.hpp"

namespace tools {

/// Opens /dev/null, the wrong way round, for each of the three standard descriptors that is closed, so that
/// nothing else takes its number and using it fails as before.
void occupy_closed_standard_streams();

/// A file, or standard input where its name is "-".
class Input {
 public:
  /// Where the command writes while it reads: news of progress would get in between on a terminal.
  enum class Meanwhile { kNothing, kStandardOutput, kStandardError };

  /// Throws Failure when the file cannot be opened, or is open and cannot be read.
  Input(const std::string &file, Meanwhile written);
  ~Input();
  Input(const Input &) = delete;
  Input &operator=(const Input &) = delete;

  /// What error messages call it.
  [[nodiscard]] const std::string &name() const { return name_; }
  [[nodiscard]] FILE *stream() const { return stream_.get(); }

  /// Fills an area. Gives fewer bytes only at the end; throws Failure when the input cannot be read.
  std::size_t read(void *area, std::size_t size);
  /// The next line without its line feed; none at the end. Throws as read() does.
  std::optional<std::string> read_line();
  /// For those who read the stream by themselves.
  void throw_unless_readable() const;

 private:
  struct Close {
    void operator()(FILE *stream) const { std::fclose(stream); }
  };

  static ssize_t read_some(void *input, char *area, std::size_t size);

  std::string name_;
  int descriptor_;
  Progress progress_;
  std::unique_ptr<FILE, Close> stream_;
};

/// Writes to standard output; throws Failure when that fails.
void write_output(const void *bytes, std::size_t size);
/// Hands on what standard output holds back; throws Failure when that fails.
void flush_output();

}  // namespace tools
