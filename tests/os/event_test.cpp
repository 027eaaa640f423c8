#include "event.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <ctime>
#include <memory>
#include <thread>

namespace {

// The calendar clock that the library sees: the real one, or one that stands still for some looks before each
// of its steps.
struct Calendar {
  bool is_real = true;
  time_t now = 0;
  int looks_per_second = 1;
  int looks = 0;
} calendar;

}  // namespace

extern "C" time_t time(time_t *result) noexcept {
  timespec real{};
  clock_gettime(CLOCK_REALTIME, &real);
  time_t now = real.tv_sec;
  if (!calendar.is_real) now = calendar.now + calendar.looks++ / calendar.looks_per_second;
  if (result != nullptr) *result = now;
  return now;
}

namespace {

struct EventCloser {
  void operator()(ZfxEvent *event) const { ZfxCloseEvent(event); }
};

struct Event : std::unique_ptr<ZfxEvent, EventCloser> {
  Event() : unique_ptr(ZfxCreateEvent()) {}
};

// How often a wait that runs into its time-out looks at a calendar with so many looks per second.
int looks_of_wait(int32_t seconds, int looks_per_second) {
  const Event event;
  calendar = {false, 1000, looks_per_second, 0};
  EXPECT_EQ(ZfxWaitEvent(event.get(), seconds), 0);
  calendar.is_real = true;
  return calendar.looks;
}

TEST(ZfxCreateEvent, GivesAnEventThatIsClear) {
  const Event event;
  ASSERT_NE(event, nullptr);
  EXPECT_EQ(ZfxCheckEvent(event.get()), 0);
}

TEST(ZfxCloseEvent, ClosesSetAndClearEventsAndIgnoresNull) {
  ZfxCloseEvent(ZfxCreateEvent());
  ZfxEvent *set = ZfxCreateEvent();
  ZfxSetEvent(set);
  ZfxCloseEvent(set);
  ZfxCloseEvent(nullptr);
}

TEST(ZfxCheckEvent, TellsWhetherTheEventIsSetAndLeavesItSo) {
  const Event event;
  EXPECT_EQ(ZfxSetEvent(event.get()), 0);
  EXPECT_EQ(ZfxCheckEvent(event.get()), 1);
  EXPECT_EQ(ZfxCheckEvent(event.get()), 1);
}

TEST(ZfxCheckEvent, TakesNullForAnEventThatIsNeverSet) {
  EXPECT_EQ(ZfxCheckEvent(nullptr), 0);
}

TEST(ZfxSetEvent, SetsASetEventNotASecondTime) {
  const Event event;
  EXPECT_EQ(ZfxSetEvent(event.get()), 0);
  EXPECT_EQ(ZfxSetEvent(event.get()), 0);
  EXPECT_EQ(ZfxResetEvent(event.get()), 0);
  EXPECT_EQ(ZfxCheckEvent(event.get()), 0);
}

TEST(ZfxSetEvent, RefusesNullWithAnErrorNumber) {
  errno = 0;
  EXPECT_EQ(ZfxSetEvent(nullptr), -1);
  EXPECT_EQ(errno, EINVAL);
}

TEST(ZfxSetEvent, FromManyThreadsNeedsAtMostOneResetPerSetter) {
  constexpr int kSetters = 4;
  const Event event;
  for (int round = 0; round < 200; ++round) {
    std::thread setters[kSetters];
    for (std::thread &setter : setters) {
      setter = std::thread([&] { EXPECT_EQ(ZfxSetEvent(event.get()), 0); });
    }
    for (std::thread &setter : setters) {
      setter.join();
    }
    int resets = 0;
    while (ZfxResetEvent(event.get()) == 0) {
      ++resets;
    }
    ASSERT_GE(resets, 1);
    ASSERT_LE(resets, kSetters);
  }
}

TEST(ZfxResetEvent, ClearsASetEvent) {
  const Event event;
  ZfxSetEvent(event.get());
  EXPECT_EQ(ZfxResetEvent(event.get()), 0);
  EXPECT_EQ(ZfxCheckEvent(event.get()), 0);
}

TEST(ZfxResetEvent, ReportsAClearEventAndLeavesItClear) {
  const Event event;
  errno = 0;
  EXPECT_EQ(ZfxResetEvent(event.get()), -1);
  EXPECT_EQ(errno, EAGAIN);
  EXPECT_EQ(ZfxCheckEvent(event.get()), 0);
}

TEST(ZfxResetEvent, RefusesNullWithAnErrorNumber) {
  errno = 0;
  EXPECT_EQ(ZfxResetEvent(nullptr), -1);
  EXPECT_EQ(errno, EINVAL);
}

TEST(ZfxWaitEvent, LooksOnceForATimeOfZeroOrLess) {
  const Event event;
  calendar = {false, 1000, INT_MAX, 0};  // with a clock that stands still no other wait would end
  for (const int32_t seconds : {0, -1, INT32_MIN}) {
    EXPECT_EQ(ZfxWaitEvent(event.get(), seconds), 0) << seconds;
  }
  EXPECT_EQ(calendar.looks, 6);
}

TEST(ZfxWaitEvent, FindsASetEventAtOnceWhateverTheTimeAndLeavesItSet) {
  const Event event;
  ZfxSetEvent(event.get());
  calendar = {false, 1000, INT_MAX, 0};
  for (const int32_t seconds : {INT32_MIN, -1, 0, 1, INT32_MAX}) {
    EXPECT_EQ(ZfxWaitEvent(event.get(), seconds), 1) << seconds;
  }
  EXPECT_EQ(ZfxCheckEvent(event.get()), 1);
}

TEST(ZfxWaitEvent, EndsWhenTheClockHasMadeAsManyStepsAsThereAreSeconds) {
  EXPECT_EQ(looks_of_wait(1, 1), 2);
  EXPECT_EQ(looks_of_wait(1, 10), 11);
  EXPECT_EQ(looks_of_wait(2, 10), 21);
  EXPECT_EQ(looks_of_wait(100, 10), 1001);
  EXPECT_EQ(looks_of_wait(100000, 1), 100001);
}

TEST(ZfxWaitEvent, SeesAnEventThatAnotherThreadSetsMeanwhile) {
  const Event event;
  const Event answer;
  std::atomic<bool> started{false};
  std::thread waiter([&] {
    started = true;
    EXPECT_EQ(ZfxWaitEvent(event.get(), 1000), 1);
    ZfxSetEvent(answer.get());
  });
  while (!started) {
    std::this_thread::yield();
  }
  EXPECT_EQ(ZfxCheckEvent(answer.get()), 0);
  ZfxSetEvent(event.get());
  EXPECT_EQ(ZfxWaitEvent(answer.get(), 1000), 1);
  waiter.join();
}

// What the setter wrote before is the waiter's to read; the thread sanitizer would object otherwise.
TEST(ZfxWaitEvent, HandsOverWhatWasWrittenBeforeTheEventWasSet) {
  const Event event;
  int written = 0;
  std::thread setter([&] {
    written = 42;
    ZfxSetEvent(event.get());
  });
  EXPECT_EQ(ZfxWaitEvent(event.get(), 1000), 1);
  EXPECT_EQ(written, 42);
  setter.join();
}

TEST(ZfxWaitEvent, SpinsInsteadOfSleeping) {
  const Event event;
  rusage before{};
  rusage after{};
  const time_t start = time(nullptr);
  getrusage(RUSAGE_THREAD, &before);
  EXPECT_EQ(ZfxWaitEvent(event.get(), 1), 0);
  getrusage(RUSAGE_THREAD, &after);
  EXPECT_GE(time(nullptr) - start, 1);
  EXPECT_LT(after.ru_nvcsw - before.ru_nvcsw, 5) << "the thread gave its processor away by itself";
}

TEST(ZfxWaitEvent, TakesNullForAnEventThatIsNeverSetAndDoesNotWaitForIt) {
  calendar = {false, 1000, INT_MAX, 0};
  EXPECT_EQ(ZfxWaitEvent(nullptr, 1000), 0);
}

}  // namespace
