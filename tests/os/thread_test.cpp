#include "thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "thread_routines.hpp"

extern "C" void *routine_in_c(void *argument);

namespace {

struct Seen {
  ZfxThread *argument = nullptr;
  ZfxThread record{};
  pthread_t self = 0;
  int detach_state = -1;
  int inheritance = -1;
};

void *look_at_the_record(void *argument) {
  auto &seen = data_of<Seen>(argument);
  seen.argument = static_cast<ZfxThread *>(argument);
  seen.record = *seen.argument;
  seen.self = pthread_self();
  pthread_attr_getdetachstate(&seen.argument->attr, &seen.detach_state);
  pthread_attr_getinheritsched(&seen.argument->attr, &seen.inheritance);
  return nullptr;
}

TEST(ZfxCreateThread, GivesTheRoutineTheRecordWithAllFieldsSet) {
  Seen seen;
  ZfxThread *thread = ZfxCreateThread(look_at_the_record, address_of(&seen));
  ASSERT_NE(thread, nullptr);
  ZfxMutex *const mutex = thread->mutex;
  ZfxTerminateThread(thread);
  EXPECT_EQ(seen.argument, thread);
  EXPECT_EQ(seen.record.reserved, 0U);
  EXPECT_EQ(seen.record.thread, seen.self);
  EXPECT_EQ(seen.record.mutex, mutex);
  EXPECT_NE(seen.record.mutex, nullptr);
  EXPECT_NE(seen.record.threadEvent, nullptr);
  EXPECT_NE(seen.record.stopEvent, nullptr);
  EXPECT_NE(seen.record.threadEvent, seen.record.stopEvent);
  EXPECT_EQ(seen.record.userData, address_of(&seen));
  EXPECT_EQ(seen.detach_state, PTHREAD_CREATE_JOINABLE);
  EXPECT_EQ(seen.inheritance, PTHREAD_INHERIT_SCHED);
}

TEST(ZfxCreateThread, GivesTheCreatorARecordOfARunningThreadWithFreeMutexAndClearEvents) {
  ZfxThread *thread = ZfxCreateThread(run_until_stopped, UINT64_MAX);
  EXPECT_NE(thread->thread, 0U);
  EXPECT_EQ(thread->userData, UINT64_MAX);
  EXPECT_EQ(ZfxIsThreadFinished(thread), 0);
  EXPECT_EQ(ZfxCheckEvent(thread->threadEvent), 0);
  EXPECT_EQ(ZfxCheckEvent(thread->stopEvent), 0);
  EXPECT_EQ(ZfxLockMutex(thread->mutex, 0), 0);
  ZfxUnlockMutex(thread->mutex);
  ZfxTerminateThread(thread);
}

TEST(ZfxCreateThread, StartsNothingWithoutARoutine) {
  EXPECT_EQ(ZfxCreateThread(nullptr, 1), nullptr);
}

TEST(ZfxCreateThread, RunsRoutinesWrittenInC) {
  uint64_t number = 21;
  ZfxThread *thread = ZfxCreateThread(routine_in_c, address_of(&number));
  ZfxTerminateThread(thread);
  EXPECT_EQ(number, 42U);
}

// Threads this short have often ended before their creator is back from the system's call.
TEST(ZfxThreadCleanup, KeepsItsMarkHoweverEarlyItComes) {
  for (int round = 0; round < 500; ++round) {
    ZfxThread *thread = ZfxCreateThread(mark_the_end, 0);
    wait_until_finished(thread);
    ASSERT_EQ(thread->thread, 0U);
    ASSERT_EQ(thread->threadEvent, nullptr);
    ZfxTerminateThread(thread);
  }
}

TEST(ZfxThreadCleanup, ClosesTheThreadEventAndKeepsTheRest) {
  ZfxThread *thread = ZfxCreateThread(mark_the_end, 42);
  wait_until_finished(thread);
  EXPECT_EQ(thread->threadEvent, nullptr);
  EXPECT_NE(thread->stopEvent, nullptr);
  EXPECT_NE(thread->mutex, nullptr);
  EXPECT_EQ(thread->userData, 42U);
  ZfxTerminateThread(thread);
}

TEST(ZfxThreadCleanup, HandsOverWhatTheThreadWroteBefore) {
  int written = 0;
  ZfxThread *thread = ZfxCreateThread(
      [](void *argument) -> void * {
        data_of<int>(argument) = 42;
        return mark_the_end(argument);
      },
      address_of(&written));
  wait_until_finished(thread);
  EXPECT_EQ(written, 42);
  ZfxTerminateThread(thread);
}

TEST(ZfxThreadCleanup, ToleratesARecordWithoutThreadEvent) {
  ZfxThread *thread = ZfxCreateThread(
      [](void *argument) -> void * {
        auto *record = static_cast<ZfxThread *>(argument);
        ZfxCloseEvent(record->threadEvent);
        record->threadEvent = nullptr;
        return mark_the_end(argument);
      },
      0);
  wait_until_finished(thread);
  ZfxTerminateThread(thread);
}

TEST(ZfxThreadCleanup, IgnoresNull) {
  ZfxThreadCleanup(nullptr);
}

TEST(ZfxIsThreadFinished, IsTrueForNull) {
  EXPECT_EQ(ZfxIsThreadFinished(nullptr), 1);
}

TEST(ZfxIsThreadFinished, IsFalseForAThreadThatReturnedWithoutMarkingItsEnd) {
  std::atomic<int> runs{0};
  ZfxThread *thread = ZfxCreateThread(
      [](void *argument) -> void * {
        ++data_of<std::atomic<int>>(argument);
        return nullptr;
      },
      address_of(&runs));
  wait_until([&] { return runs == 1; });
  EXPECT_EQ(ZfxIsThreadFinished(thread), 0);
  ZfxTerminateThread(thread);
}

TEST(ZfxGetCurrentThreadId, IsTheSystemsHandleOfTheCaller) {
  EXPECT_EQ(ZfxGetCurrentThreadId(), uint64_t{pthread_self()});
  uint64_t other = 0;
  std::thread([&] { other = ZfxGetCurrentThreadId(); }).join();
  EXPECT_NE(other, 0U);
}

TEST(ZfxSetThreadConcurrency, RaisesTheLevelAndNeverLowersIt) {
  const int32_t before = ZfxGetThreadConcurrency();
  EXPECT_EQ(before, pthread_getconcurrency());
  const int32_t level = before + 5;
  EXPECT_EQ(ZfxSetThreadConcurrency(level), 0);
  for (const int32_t wanted : {level, level - 1, 0, -1, INT32_MIN}) {
    EXPECT_EQ(ZfxSetThreadConcurrency(wanted), level) << wanted;
    EXPECT_EQ(ZfxGetThreadConcurrency(), level);
  }
  EXPECT_EQ(ZfxSetThreadConcurrency(level + 1), 0);
  EXPECT_EQ(ZfxGetThreadConcurrency(), level + 1);
}

}  // namespace
