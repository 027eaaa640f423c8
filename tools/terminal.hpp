// What the command does differently where a person watches: colours, and news of work that takes long.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>

namespace tools {

/// The text in bold where the stream is a terminal that takes colours, else as it is. NO_COLOR in the
/// environment with any text, and TERM "dumb", stand for none.
std::string bold(FILE *stream, const std::string &text);

/// Prints "zorvcrt NAME: MESSAGE" and a line end on standard error, the front in red on a terminal.
void complain(const std::string &name, const std::string &message);

/// Tells on standard error how much of an input has been read, once that has taken a second. Only where
/// standard error is a terminal and the input is none. The line is wiped away at the end.
class Progress {
 public:
  /// @param is_wanted false for one that never shows anything
  Progress(std::string what, int input, bool is_wanted);
  ~Progress() { wipe(); }
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;

  void add(uint64_t bytes);
  void wipe();

 private:
  using Clock = std::chrono::steady_clock;

  std::string what_;
  uint64_t total_ = 0;  // 0 when it is not known
  uint64_t done_ = 0;
  std::size_t width_ = 0;  // of the line that stands on the terminal
  bool is_shown_;
  Clock::time_point next_ = Clock::now() + std::chrono::seconds(1);
};

}  // namespace tools
