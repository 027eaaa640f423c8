// What becomes of handles when memory or the system's threads are used up, or a thread is quicker than its
// creator. The program puts functions of its own in front of those that the library calls.
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "event.h"
#include "mutex.h"
#include "next_function.hpp"
#include "thread_routines.hpp"
#include "zfxmemory.h"
#include "zfxsemaphore.h"

namespace {

std::atomic<int> blocks;         // that the library has and has not released
std::atomic<int> failing_block;  // which allocation fails, counted from 1; 0 for none
bool threads_fail = false;
bool creators_are_slow = false;

using CreateFunction = int (*)(pthread_t *, const pthread_attr_t *, void *(*)(void *), void *);

}  // namespace

extern "C" void *ZfxMemAlloc(uint64_t size) {
  if (failing_block > 0 && --failing_block == 0) return nullptr;
  ++blocks;
  return std::calloc(1, size);
}

extern "C" void ZfxMemFree(void *pointer) {
  if (pointer != nullptr) --blocks;
  std::free(pointer);
}

extern "C" int pthread_create(pthread_t *thread, const pthread_attr_t *attr, void *(*routine)(void *),
                              void *argument) noexcept {
  if (threads_fail) {
    *thread = 4711;  // undefined after a failure
    return EAGAIN;
  }
  const auto real = support::next_function<CreateFunction>("pthread_create");
  const int result = real(thread, attr, routine, argument);
  if (creators_are_slow) std::this_thread::sleep_for(std::chrono::milliseconds(50));
  return result;
}

namespace {

void *return_at_once(void * /*argument*/) {
  return nullptr;
}

struct ThreadFaults : ::testing::Test {
  void SetUp() override { blocks = 0; }
  void TearDown() override { EXPECT_EQ(blocks, 0) << "blocks are left behind"; }
};

TEST_F(ThreadFaults, CreatingAThreadFailsWithoutATraceWhicheverAllocationFails) {
  int allocations = 0;
  ZfxThread *thread = nullptr;
  while (thread == nullptr && allocations < 100) {
    failing_block = ++allocations;
    thread = ZfxCreateThread(return_at_once, 1);
    EXPECT_TRUE(thread != nullptr || blocks == 0) << "allocation " << allocations;
  }
  failing_block = 0;
  EXPECT_GT(allocations, 4) << "a record, two events and a mutex";
  ZfxTerminateThread(thread);
}

TEST_F(ThreadFaults, CreatingAThreadFailsWithoutATraceWhenTheSystemHasNoMoreThreads) {
  threads_fail = true;
  EXPECT_EQ(ZfxCreateThread(return_at_once, 1), nullptr);
  threads_fail = false;
}

struct Seen {
  uint64_t handle = 0;
  uint64_t own_id = 0;
  std::atomic<bool> is_over{false};
};

TEST_F(ThreadFaults, AThreadQuickerThanItsCreatorStillFindsItsHandleAndKeepsTheMarkOfItsEnd) {
  Seen seen;
  creators_are_slow = true;
  ZfxThread *thread = ZfxCreateThread(
      [](void *argument) -> void * {
        auto &own = data_of<Seen>(argument);
        own.handle = static_cast<ZfxThread *>(argument)->thread;
        own.own_id = ZfxGetCurrentThreadId();
        mark_the_end(argument);
        own.is_over = true;
        return nullptr;
      },
      address_of(&seen));
  creators_are_slow = false;
  wait_until([&] { return seen.is_over.load(); });
  EXPECT_EQ(seen.handle, seen.own_id);
  EXPECT_EQ(ZfxIsThreadFinished(thread), 1);
  ZfxTerminateThread(thread);
}

TEST_F(ThreadFaults, AThreadLeavesNothingBehindWhenItIsTerminated) {
  for (int round = 0; round < 10; ++round) {
    ZfxTerminateThread(ZfxCreateThread(return_at_once, 1));
  }
}

TEST_F(ThreadFaults, CreatingAnEventAMutexOrASemaphoreGivesNullWithoutMemory) {
  failing_block = 1;
  EXPECT_EQ(ZfxCreateEvent(), nullptr);
  failing_block = 1;
  EXPECT_EQ(ZfxCreateMutex(), nullptr);
  failing_block = 1;
  EXPECT_EQ(ZfxCreateSemaphore(1), nullptr);
  EXPECT_EQ(failing_block, 0);
}

TEST_F(ThreadFaults, ARefusedSemaphoreCountReleasesTheBlock) {
  EXPECT_EQ(ZfxCreateSemaphore(UINT32_MAX), nullptr);
}

TEST_F(ThreadFaults, HandlesLeaveNothingBehindWhenTheyAreClosed) {
  ZfxCloseEvent(ZfxCreateEvent());
  ZfxDestroyMutex(ZfxCreateMutex());
  ZfxDestroySemaphore(ZfxCreateSemaphore(1));
}

}  // namespace
