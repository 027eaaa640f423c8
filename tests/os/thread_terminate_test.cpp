#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <ctime>

#include "thread_routines.hpp"

namespace {

long pages_of_address_space() {
  long pages = 0;
  FILE *file = std::fopen("/proc/self/statm", "r");
  EXPECT_EQ(std::fscanf(file, "%ld", &pages), 1);
  std::fclose(file);
  return pages;
}

TEST(ZfxTerminateThread, SetsTheStopEventAndWaitsForTheEnd) {
  bool is_over = false;
  ZfxThread *thread = ZfxCreateThread(
      [](void *argument) -> void * {
        auto *record = static_cast<ZfxThread *>(argument);
        wait_until_stopped(record);
        data_of<bool>(argument) = true;
        return mark_the_end(argument);
      },
      address_of(&is_over));
  ZfxTerminateThread(thread);
  EXPECT_TRUE(is_over);
}

TEST(ZfxTerminateThread, JoinsAThreadThatDoesNotMarkItsEnd) {
  bool is_over = false;
  ZfxThread *thread = ZfxCreateThread(
      [](void *argument) -> void * {
        wait_until_stopped(static_cast<ZfxThread *>(argument));
        data_of<bool>(argument) = true;
        return nullptr;
      },
      address_of(&is_over));
  ZfxTerminateThread(thread);
  EXPECT_TRUE(is_over);
}

TEST(ZfxTerminateThread, DoesNotWaitForAThreadThatHasMarkedItsEnd) {
  static std::atomic<int> step;
  step = 0;
  ZfxThread *thread = ZfxCreateThread(
      [](void *argument) -> void * {
        mark_the_end(argument);
        wait_until([] { return step == 1; });
        step = 2;
        return nullptr;
      },
      0);
  wait_until_finished(thread);
  ZfxTerminateThread(thread);
  step = 1;
  wait_until([] { return step == 2; });
}

TEST(ZfxTerminateThread, GivesBackTheStacksOfThreadsThatHaveMarkedTheirEnd) {
  constexpr int kThreads = 400;
  std::size_t stack_size = 0;
  const long before = pages_of_address_space();
  for (int count = 0; count < kThreads; ++count) {
    ZfxThread *thread = ZfxCreateThread(mark_the_end, 0);
    ASSERT_NE(thread, nullptr);
    pthread_attr_getstacksize(&thread->attr, &stack_size);
    wait_until_finished(thread);
    ZfxTerminateThread(thread);
  }
  const long stack_pages = static_cast<long>(stack_size) / 4096;
  EXPECT_LT(pages_of_address_space() - before, kThreads / 4 * stack_pages);
}

TEST(ZfxTerminateThread, CanBeTheLastActOfTheThreadItself) {
  for (const bool marks_its_end : {false, true}) {
    struct Plan {
      bool marks_its_end;
      std::atomic<bool> is_over;
    } plan{marks_its_end, false};
    ASSERT_NE(ZfxCreateThread(
                  [](void *argument) -> void * {
                    auto &own = data_of<Plan>(argument);
                    if (own.marks_its_end) mark_the_end(argument);
                    ZfxTerminateThread(static_cast<ZfxThread *>(argument));
                    own.is_over = true;
                    return nullptr;
                  },
                  address_of(&plan)),
              nullptr);
    wait_until([&] { return plan.is_over.load(); });
  }
}

TEST(ZfxTerminateThread, CancelsAThreadWhoseStopEventIsGoneAndLeavesTheJoinToTheHost) {
  ZfxThread *thread = ZfxCreateThread(
      [](void * /*argument*/) -> void * {
        for (;;) {
          timespec second = {1, 0};
          nanosleep(&second, nullptr);
        }
      },
      0);
  const pthread_t handle = thread->thread;
  ZfxCloseEvent(thread->stopEvent);
  thread->stopEvent = nullptr;
  ZfxTerminateThread(thread);
  void *result = nullptr;
  EXPECT_EQ(pthread_join(handle, &result), 0);
  EXPECT_EQ(result, PTHREAD_CANCELED);
}

TEST(ZfxTerminateThread, ReleasesARecordWithoutMutexAndThreadEvent) {
  ZfxThread *thread = ZfxCreateThread(run_until_stopped, 0);
  ZfxDestroyMutex(thread->mutex);
  thread->mutex = nullptr;
  ZfxCloseEvent(thread->threadEvent);
  thread->threadEvent = nullptr;
  ZfxTerminateThread(thread);
}

TEST(ZfxTerminateThread, ReleasesAMutexThatTheCallerHasLocked) {
  ZfxThread *thread = ZfxCreateThread(run_until_stopped, 0);
  ZfxLockMutex(thread->mutex, 1);
  ZfxTerminateThread(thread);
}

TEST(ZfxTerminateThread, ReleasesAMutexThatTheThreadHasLocked) {
  ZfxThread *thread = ZfxCreateThread(
      [](void *argument) -> void * {
        ZfxLockMutex(static_cast<ZfxThread *>(argument)->mutex, 1);
        return run_until_stopped(argument);
      },
      0);
  ZfxTerminateThread(thread);
}

TEST(ZfxTerminateThread, IgnoresNull) {
  ZfxTerminateThread(nullptr);
}

}  // namespace
