// The clocks in single numbers, and an interval split into its units.
#include "zdbclock.h"

#include <ctime>

namespace {

constexpr uint64_t kNanosecondsPerMicrosecond = 1000;
constexpr uint64_t kNanosecondsPerMillisecond = 1000000;
constexpr uint64_t kNanosecondsPerSecond = 1000000000;
constexpr uint64_t kMillisecondsPerSecond = 1000;

struct Reading {
  uint64_t seconds;
  uint64_t nanoseconds;
};

Reading read_clock(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return {static_cast<uint64_t>(now.tv_sec), static_cast<uint64_t>(now.tv_nsec)};
}

// The difference of two readings that lie further apart than their own type reaches is still right.
uint64_t distance(int64_t a, int64_t b) {
  const auto x = static_cast<uint64_t>(a);
  const auto y = static_cast<uint64_t>(b);
  return a >= b ? x - y : y - x;
}

}  // namespace

uint64_t fphrtime(void) {
  const Reading now = read_clock(CLOCK_MONOTONIC);
  return now.seconds * kNanosecondsPerSecond + now.nanoseconds;
}

uint64_t fphrtimms(void) {
  const Reading now = read_clock(CLOCK_REALTIME);
  return now.seconds * kMillisecondsPerSecond + now.nanoseconds / kNanosecondsPerMillisecond;
}

void pphrtimediff(ZfxHrTimeDiff *difference, int64_t a, int64_t b) {
  if (difference == nullptr) return;
  const uint64_t total = distance(a, b);
  const uint64_t seconds = total / kNanosecondsPerSecond;
  difference->total = total;
  difference->hours = seconds / 3600;
  difference->minutes = seconds / 60 % 60;
  difference->seconds = seconds % 60;
  difference->milliseconds = total / kNanosecondsPerMillisecond % 1000;
  difference->microseconds = total / kNanosecondsPerMicrosecond % 1000;
  difference->nanoseconds = total % 1000;
}
