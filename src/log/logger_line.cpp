// One line from its parts to the callback or, by a single write, to the stream.
#include "logger_line.hpp"

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "errno_keeper.hpp"
#include "fixed_text.hpp"
#include "handles.hpp"
#include "text_writer.hpp"
#include "time_text.hpp"

namespace {

using zorvcrt::TextWriter;
using zorvcrt::UniqueMalloc;

// Room for all of a line but its message: time 20, name 7, location 511, number 13, brackets and ends.
constexpr std::size_t kAroundMessage = 600;

// Messages are formatted on the stack up to here. What a debug line has beyond it takes a heap block, so that
// the many short ones neither touch nor need 64 KiB of a thread's stack.
constexpr std::size_t kStackBound = 8192;

constexpr std::size_t kLocationRoom = 512;
constexpr uint32_t kFirstLevelWithoutNumber = LOGGER_LEVEL_INFO;

// Holds a stream for this thread. A thread that is cancelled meanwhile finishes its line first: it would
// leave the stream locked for all others.
class StreamLock {
 public:
  explicit StreamLock(FILE *stream) : stream_(stream) {
    ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancel_state_);
    ::flockfile(stream_);
  }
  ~StreamLock() {
    ::funlockfile(stream_);
    ::pthread_setcancelstate(cancel_state_, nullptr);
  }
  StreamLock(const StreamLock &) = delete;
  StreamLock &operator=(const StreamLock &) = delete;

 private:
  FILE *stream_;
  int cancel_state_ = PTHREAD_CANCEL_ENABLE;
};

void append_location(TextWriter &line, std::string_view location) {
  if (location.empty()) return;
  line.append(zorvcrt::FixedText<kLocationRoom>(location).append(": ").view());
}

// All of the line that stands in front of the message.
void append_front(TextWriter &line, const Logger &logger, uint32_t level, const char *location,
                  int32_t number) {
  line.append("[");
  if (logger.timestamps != 0) line.append(zorvcrt::current_time_text());
  line.append(zorvcrt::kLevels[level].name).append("] ");
  append_location(line, zorvcrt::view_of(location));
  if (number != 0 && level < kFirstLevelWithoutNumber) line.append("#").append_number(number).append(" ");
}

// Gives the length that the whole message has, which may be more than fits.
std::size_t format_message(char *area, std::size_t bound, const char *format, std::va_list arguments)
    __attribute__((format(printf, 3, 0)));

std::size_t format_message(char *area, std::size_t bound, const char *format, std::va_list arguments) {
  *area = '\0';
  const int length = format == nullptr ? 0 : std::vsnprintf(area, bound, format, arguments);
  // A value that cannot be formatted leaves what stands in front of it, terminated.
  return length < 0 ? std::strlen(area) : static_cast<std::size_t>(length);
}

void write_all(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(descriptor, text.data(), text.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return;
    text.remove_prefix(static_cast<std::size_t>(count));
  }
}

// The line goes past the stream's buffer, which would cut a long one into several writes; what the host has
// left in the buffer goes first. A stream without a descriptor (one in memory) takes the line as it is.
void print(FILE *stream, std::string_view line) {
  const StreamLock lock(stream);
  ::fflush_unlocked(stream);
  if (const int descriptor = ::fileno_unlocked(stream); descriptor >= 0) {
    write_all(descriptor, line);
  } else {
    ::fwrite_unlocked(line.data(), 1, line.size(), stream);
    ::fflush_unlocked(stream);
  }
}

void call_back(const Logger &logger, std::string_view line, std::size_t message_length) {
  const UniqueMalloc<char> block(static_cast<char *>(std::malloc(message_length + kAroundMessage)));
  if (!block) return;
  zorvcrt::copy_text(block.get(), static_cast<int64_t>(message_length + kAroundMessage), line);
  logger.callback(logger.callback_context, block.get());
}

// Adds the line end to a message at the offset, if it wants one, and hands the line over.
void finish_and_deliver(const Logger &logger, char *line, std::size_t message_offset) {
  const std::string_view message = line + message_offset;
  std::size_t size = message_offset + message.size();
  if (message.find('\n') == std::string_view::npos) line[size++] = '\n';
  if (logger.callback != nullptr) {
    call_back(logger, {line, size}, message.size());
  } else {
    print(logger.stream, {line, size});
  }
}

}  // namespace

void zorvcrt::__print_log(const Logger *logger, uint32_t level, const char *location, int32_t number,
                          const char *format, std::va_list arguments) {
  if (logger == nullptr || logger->level < level) return;
  if (logger->callback == nullptr && logger->stream == nullptr) return;
  const zorvcrt::ErrnoKeeper callers_errno;

  std::array<char, kAroundMessage + kStackBound> area;  // not cleared: most lines use little of it
  TextWriter front(area);
  append_front(front, *logger, level, location, number);
  const std::size_t offset = front.size();

  std::va_list again;
  va_copy(again, arguments);
  callers_errno.restore();
  const std::size_t bound = std::min(kLevels[level].message_bound, kStackBound);
  const std::size_t wanted = format_message(area.data() + offset, bound, format, arguments);

  UniqueMalloc<char> longer;
  const std::size_t longer_bound = std::min(kLevels[level].message_bound, wanted + 1);
  if (longer_bound > kStackBound) {
    longer.reset(static_cast<char *>(std::malloc(kAroundMessage + longer_bound)));
  }
  if (longer) {
    std::memcpy(longer.get(), area.data(), offset);
    callers_errno.restore();
    format_message(longer.get() + offset, longer_bound, format, again);
  }
  va_end(again);
  finish_and_deliver(*logger, longer ? longer.get() : area.data(), offset);
}
