// Lines over a connection.
#include "line_socket.hpp"

#include <sys/time.h>
#include <zorvcrt.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "command.hpp"

namespace tools {

namespace {

[[noreturn]] void fail(const char *what, int error) {
  throw Failure(std::string(what) + ": " + std::strerror(error));
}

}  // namespace

LineSocket::~LineSocket() {
  ZfxCloseSocket(socket_);
}

void LineSocket::wait(int32_t limit, Clock::time_point end) const {
  using std::chrono::microseconds;
  const auto left = std::max(std::chrono::duration_cast<microseconds>(end - Clock::now()), microseconds(0));
  timeval timeout = {left.count() / 1000000, static_cast<suseconds_t>(left.count() % 1000000)};
  int32_t error = 0;
  const int32_t ready = ZfxSocketReadSelect(socket_, limit < 0 ? nullptr : &timeout, &error);
  if (ready < 0) fail("waiting", error);
  if (ready == 0) throw Failure("no answer within " + std::to_string(limit) + " ms");
}

bool LineSocket::read_more() {
  std::array<char, kLongestLine> block;
  const int32_t count = ZfxSocketRead(socket_, block.data(), static_cast<uint32_t>(block.size()));
  if (count < 0) fail("reading", errno);
  unread_.append(block.data(), static_cast<std::size_t>(count));
  return count != 0;
}

// The limit is one for the whole line, however slowly its bytes arrive.
std::optional<std::string> LineSocket::read_line(int32_t limit) {
  const auto end_of_time = Clock::now() + std::chrono::milliseconds(limit);
  std::size_t end = unread_.find('\n');
  for (bool more = true; more && end == std::string::npos && unread_.size() <= kLongestLine;) {
    wait(limit, end_of_time);
    more = read_more();
    end = unread_.find('\n');
  }
  if (unread_.empty()) return std::nullopt;
  const std::size_t length = std::min({end, unread_.size(), kLongestLine});
  std::string line = unread_.substr(0, length);
  unread_.erase(0, length == end ? length + 1 : length);
  return line;
}

void LineSocket::write_line(const std::string &line) {
  const std::string text = line + "\n";
  for (std::size_t done = 0; done < text.size();) {
    const int32_t count =
        ZfxSocketWrite(socket_, text.data() + done, static_cast<uint32_t>(text.size() - done));
    if (count < 0) fail("writing", errno);
    done += static_cast<std::size_t>(count);
  }
}

}  // namespace tools
