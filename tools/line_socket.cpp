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

bool LineSocket::read_more(int32_t limit) {
  timeval timeout = {limit / 1000, suseconds_t{1000} * (limit % 1000)};
  int32_t error = 0;
  const int32_t ready = ZfxSocketReadSelect(socket_, limit < 0 ? nullptr : &timeout, &error);
  if (ready < 0) fail("waiting", error);
  if (ready == 0) throw Failure("no answer within " + std::to_string(limit) + " ms");
  std::array<char, kLongestLine> block;
  const int32_t count = ZfxSocketRead(socket_, block.data(), static_cast<uint32_t>(block.size()));
  if (count < 0) fail("reading", errno);
  unread_.append(block.data(), static_cast<std::size_t>(count));
  return count != 0;
}

std::optional<std::string> LineSocket::read_line(int32_t limit) {
  std::size_t end = unread_.find('\n');
  while (end == std::string::npos && unread_.size() <= kLongestLine && read_more(limit)) {
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
