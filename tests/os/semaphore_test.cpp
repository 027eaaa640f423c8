#include <gtest/gtest.h>
#include <pthread.h>
#include <semaphore.h>
#include <signal.h>

#include <atomic>
#include <climits>
#include <ctime>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "next_function.hpp"
#include "zfxsemaphore.h"

namespace {

// The processor clock that the library sees: the real one, or a list of readings. With a list, what a wait
// does is written down: t for a try, c for a look at the clock, s for a sleep.
struct Script {
  bool is_on = false;
  std::vector<clock_t> readings;
  std::size_t next = 0;
  std::size_t release_before_try = SIZE_MAX;
  ZfxSemaphore *semaphore = nullptr;
  std::string trace;
  std::vector<long> pauses;
} script;

}  // namespace

extern "C" clock_t clock() noexcept {
  if (script.is_on) {
    script.trace += 'c';
    // Past the end of the list so much time is over that every wait ends.
    return script.next < script.readings.size() ? script.readings[script.next++] : LONG_MAX;
  }
  timespec used{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
  return used.tv_sec * CLOCKS_PER_SEC + used.tv_nsec / 1000;
}

extern "C" int nanosleep(const timespec *pause, timespec *rest) {
  if (!script.is_on) return clock_nanosleep(CLOCK_MONOTONIC, 0, pause, rest);
  script.trace += 's';
  script.pauses.push_back(pause->tv_sec * 1000000000 + pause->tv_nsec);
  return 0;
}

extern "C" int sem_trywait(sem_t *semaphore) noexcept {
  static const auto real = support::next_function<int (*)(sem_t *)>("sem_trywait");
  if (script.is_on) {
    script.trace += 't';
    if (script.release_before_try-- == 0) ZfxSemaphoreRelease(script.semaphore);
  }
  return real(semaphore);
}

namespace {

struct SemaphoreDestroyer {
  void operator()(ZfxSemaphore *semaphore) const { ZfxDestroySemaphore(semaphore); }
};

struct Semaphore : std::unique_ptr<ZfxSemaphore, SemaphoreDestroyer> {
  explicit Semaphore(uint32_t count) : unique_ptr(ZfxCreateSemaphore(count)) {}
};

int count_of(const Semaphore &semaphore) {
  int count = 0;
  while (ZfxSemaphoreTryObtain(semaphore.get(), 0) == 1) {
    ++count;
  }
  return count;
}

struct Wait {
  int32_t result;
  std::string trace;
};

// A wait for a semaphore of count 0 that is released before the given try.
Wait scripted_wait(int32_t milliseconds, std::vector<clock_t> readings, std::size_t release_before_try) {
  const Semaphore semaphore(0);
  script = {};
  script.readings = std::move(readings);
  script.release_before_try = release_before_try;
  script.semaphore = semaphore.get();
  script.is_on = true;
  const int32_t result = ZfxSemaphoreTryObtain(semaphore.get(), milliseconds);
  script.is_on = false;
  return {result, script.trace};
}

Wait scripted_timeout(int32_t milliseconds, std::vector<clock_t> readings) {
  return scripted_wait(milliseconds, std::move(readings), SIZE_MAX);
}

int64_t nanoseconds_of(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return time.tv_sec * 1000000000 + time.tv_nsec;
}

TEST(ZfxCreateSemaphore, CanBeObtainedAsOftenAsItsCountSays) {
  for (const uint32_t count : {0U, 1U, 2U, 100U}) {
    const Semaphore semaphore(count);
    EXPECT_EQ(count_of(semaphore), static_cast<int>(count));
  }
}

TEST(ZfxCreateSemaphore, RefusesACountAboveTheSystemsLimit) {
  EXPECT_NE(Semaphore(SEM_VALUE_MAX - 1), nullptr);
  EXPECT_NE(Semaphore(SEM_VALUE_MAX), nullptr);
  EXPECT_EQ(Semaphore(uint32_t{SEM_VALUE_MAX} + 1), nullptr);
  EXPECT_EQ(Semaphore(UINT32_MAX), nullptr);
}

TEST(ZfxSemaphoreRelease, AddsOne) {
  const Semaphore semaphore(1);
  ZfxSemaphoreRelease(semaphore.get());
  EXPECT_EQ(count_of(semaphore), 2);
}

TEST(ZfxSemaphoreObtain, TakesOne) {
  const Semaphore semaphore(2);
  ZfxSemaphoreObtain(semaphore.get());
  EXPECT_EQ(count_of(semaphore), 1);
}

TEST(ZfxSemaphoreObtain, WaitsForARelease) {
  const Semaphore semaphore(0);
  int written = 0;
  std::thread releaser([&] {
    written = 42;
    ZfxSemaphoreRelease(semaphore.get());
  });
  ZfxSemaphoreObtain(semaphore.get());
  EXPECT_EQ(written, 42);
  EXPECT_EQ(count_of(semaphore), 0);
  releaser.join();
}

TEST(ZfxSemaphoreObtain, EndsWithoutTakingAnythingWhenASignalHandlerRuns) {
  const Semaphore semaphore(0);
  struct sigaction action {};
  action.sa_handler = [](int) {};
  sigaction(SIGUSR1, &action, nullptr);
  std::atomic<bool> ended{false};
  std::thread waiter([&] {
    ZfxSemaphoreObtain(semaphore.get());
    ended = true;
  });
  while (!ended) {
    pthread_kill(waiter.native_handle(), SIGUSR1);
    std::this_thread::yield();
  }
  waiter.join();
  ZfxSemaphoreRelease(semaphore.get());
  EXPECT_EQ(count_of(semaphore), 1);
}

TEST(ZfxSemaphoreTryObtain, TriesOnceForATimeBelowOne) {
  for (const int32_t milliseconds : {0, -1, INT32_MIN}) {
    const Wait wait = scripted_timeout(milliseconds, {});
    EXPECT_EQ(wait.result, 0);
    EXPECT_EQ(wait.trace, "t");
    const Semaphore semaphore(1);
    EXPECT_EQ(ZfxSemaphoreTryObtain(semaphore.get(), milliseconds), 1);
    EXPECT_EQ(count_of(semaphore), 0);
  }
}

TEST(ZfxSemaphoreTryObtain, TakesFromAFreeSemaphoreAtOnceWhateverTheTime) {
  for (const int32_t milliseconds : {1, 1000, INT32_MAX}) {
    const Semaphore semaphore(2);
    EXPECT_EQ(ZfxSemaphoreTryObtain(semaphore.get(), milliseconds), 1);
    EXPECT_EQ(count_of(semaphore), 1);
  }
}

TEST(ZfxSemaphoreTryObtain, GoesStraightBackToTheNextTryWhileTheProcessorClockStandsStill) {
  const Wait wait = scripted_timeout(1, {500, 500, 500, 500, 1500});
  EXPECT_EQ(wait.result, 0);
  EXPECT_EQ(wait.trace, "ctctctctc");
}

TEST(ZfxSemaphoreTryObtain, PausesFiftyNanosecondsOnceTheProcessorClockHasMoved) {
  const Wait wait = scripted_timeout(1, {500, 501, 502, 502, 1500});
  EXPECT_EQ(wait.result, 0);
  EXPECT_EQ(wait.trace, "ctcstcstcstc");
  EXPECT_EQ(script.pauses, (std::vector<long>{50, 50, 50}));
}

TEST(ZfxSemaphoreTryObtain, EndsWhenAsManyWholeMillisecondsOfProcessorTimeAreUsed) {
  EXPECT_EQ(scripted_timeout(1, {7, 1006, 1007}).trace, "ctcstc");
  EXPECT_EQ(scripted_timeout(2, {7, 2006, 2007}).trace, "ctcstc");
  EXPECT_EQ(scripted_timeout(INT32_MAX, {0, clock_t{INT32_MAX} * 1000 - 1, clock_t{INT32_MAX} * 1000}).trace,
            "ctcstc");
}

TEST(ZfxSemaphoreTryObtain, TakesFromASemaphoreThatIsReleasedMeanwhile) {
  EXPECT_EQ(scripted_wait(1, {0, 0, 0, 0}, 0).trace, "ct");
  const Wait wait = scripted_wait(1, {0, 0, 1, 2, 3}, 3);
  EXPECT_EQ(wait.result, 1);
  EXPECT_EQ(wait.trace, "ctctcstcst");
}

TEST(ZfxSemaphoreTryObtain, SeesAReleaseByAnotherThread) {
  const Semaphore semaphore(0);
  int written = 0;
  std::thread releaser([&] {
    written = 42;
    ZfxSemaphoreRelease(semaphore.get());
  });
  EXPECT_EQ(ZfxSemaphoreTryObtain(semaphore.get(), 1000000), 1);
  EXPECT_EQ(written, 42);
  releaser.join();
}

TEST(ZfxSemaphoreTryObtain, MeasuresTheProcessorTimeOfAllThreads) {
  const Semaphore semaphore(0);
  std::atomic<bool> is_busy{false};
  std::atomic<bool> is_over{false};
  std::thread busy([&] {
    while (!is_over) {
      is_busy = true;
    }
  });
  while (!is_busy) {
    std::this_thread::yield();
  }
  const int64_t process = nanoseconds_of(CLOCK_PROCESS_CPUTIME_ID);
  const int64_t thread = nanoseconds_of(CLOCK_THREAD_CPUTIME_ID);
  EXPECT_EQ(ZfxSemaphoreTryObtain(semaphore.get(), 30), 0);
  EXPECT_GE(nanoseconds_of(CLOCK_PROCESS_CPUTIME_ID) - process, 29999000);
  EXPECT_LT(nanoseconds_of(CLOCK_THREAD_CPUTIME_ID) - thread, 30000000);
  is_over = true;
  busy.join();
}

TEST(ZfxSemaphore, IgnoresNull) {
  ZfxDestroySemaphore(nullptr);
  ZfxSemaphoreObtain(nullptr);
  ZfxSemaphoreRelease(nullptr);
  EXPECT_EQ(ZfxSemaphoreTryObtain(nullptr, 100), 0);
  EXPECT_EQ(ZfxSemaphoreTryObtain(nullptr, 0), 0);
}

}  // namespace
