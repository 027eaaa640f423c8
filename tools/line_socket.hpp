// A connection that is read and written line by line, shared by zorvcrt listen and zorvcrt connect.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace tools {

/// The longest line that is handed out; a longer one comes in pieces.
inline constexpr std::size_t kLongestLine = 4095;

class LineSocket {
 public:
  /// Takes the connected socket over.
  explicit LineSocket(int32_t socket) : socket_(socket) {}
  ~LineSocket();
  LineSocket(const LineSocket &) = delete;
  LineSocket &operator=(const LineSocket &) = delete;

  /// The next line without its line feed; none at the end of the stream. Throws Failure when the connection
  /// breaks and, with a limit of 0 or more milliseconds, when the line is not there within it.
  std::optional<std::string> read_line(int32_t limit);

  /// Throws Failure when the peer is gone.
  void write_line(const std::string &line);

 private:
  using Clock = std::chrono::steady_clock;

  void wait(int32_t limit, Clock::time_point end) const;
  bool read_more();

  int32_t socket_;
  std::string unread_;
};

}  // namespace tools
