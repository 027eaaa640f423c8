#include "mutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

namespace {

struct MutexDestroyer {
  void operator()(ZfxMutex *mutex) const { ZfxDestroyMutex(mutex); }
};

struct Mutex : std::unique_ptr<ZfxMutex, MutexDestroyer> {
  Mutex() : unique_ptr(ZfxCreateMutex()) {}
};

int32_t advice(const Mutex &mutex) {
  return __atomic_load_n(&mutex->locked, __ATOMIC_RELAXED);
}

int32_t try_in_another_thread(const Mutex &mutex) {
  int32_t result = 4711;
  std::thread([&] {
    result = ZfxLockMutex(mutex.get(), 0);
    if (result == 0) ZfxUnlockMutex(mutex.get());
  }).join();
  return result;
}

TEST(ZfxCreateMutex, GivesAFreeNormalMutex) {
  const Mutex mutex;
  ASSERT_NE(mutex, nullptr);
  EXPECT_EQ(mutex->locked, 0);
  int type = -1;
  EXPECT_EQ(pthread_mutexattr_gettype(&mutex->attr, &type), 0);
  EXPECT_EQ(type, PTHREAD_MUTEX_DEFAULT);
  EXPECT_EQ(try_in_another_thread(mutex), 0);
}

TEST(ZfxLockMutex, ObtainsAFreeMutexWithOneWhenItMayWait) {
  const Mutex mutex;
  for (const int32_t wait : {1, -1, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(ZfxLockMutex(mutex.get(), wait), 1) << wait;
    EXPECT_EQ(mutex->locked, 1);
    EXPECT_EQ(try_in_another_thread(mutex), 1) << "was not obtained";
    ZfxUnlockMutex(mutex.get());
  }
}

TEST(ZfxLockMutex, ObtainsAFreeMutexWithZeroWhenItMayNotWaitAndLeavesTheAdvice) {
  const Mutex mutex;
  EXPECT_EQ(ZfxLockMutex(mutex.get(), 0), 0);
  EXPECT_EQ(mutex->locked, 0);
  EXPECT_EQ(try_in_another_thread(mutex), 1) << "was not obtained";
  ZfxUnlockMutex(mutex.get());

  mutex->locked = 1;
  EXPECT_EQ(ZfxLockMutex(mutex.get(), 0), 0);
  EXPECT_EQ(mutex->locked, 1);
  ZfxUnlockMutex(mutex.get());
}

TEST(ZfxLockMutex, LeavesABusyMutexWithOneWhenItMayNotWaitAndSetsTheAdvice) {
  const Mutex mutex;
  EXPECT_EQ(ZfxLockMutex(mutex.get(), 0), 0);
  EXPECT_EQ(advice(mutex), 0);
  EXPECT_EQ(try_in_another_thread(mutex), 1);
  EXPECT_EQ(advice(mutex), 1);
  EXPECT_EQ(ZfxLockMutex(mutex.get(), 0), 1) << "not even its holder obtains it again";
  ZfxUnlockMutex(mutex.get());
}

TEST(ZfxLockMutex, WaitsUntilTheHolderUnlocks) {
  const Mutex mutex;
  std::atomic<bool> started{false};
  int written = 0;
  ZfxLockMutex(mutex.get(), 1);
  std::thread other([&] {
    started = true;
    EXPECT_EQ(ZfxLockMutex(mutex.get(), 1), 1);
    EXPECT_EQ(written, 42);
    ZfxUnlockMutex(mutex.get());
  });
  while (!started) {
    std::this_thread::yield();
  }
  written = 42;
  ZfxUnlockMutex(mutex.get());
  other.join();
}

TEST(ZfxLockMutex, LetsOneThreadInAtATimeHoweverItWasObtained) {
  constexpr int kRounds = 5000;
  const Mutex mutex;
  int counter = 0;
  const auto count = [&](int32_t wait) {
    for (int round = 0; round < kRounds; ++round) {
      while (ZfxLockMutex(mutex.get(), wait) != wait) {
        std::this_thread::yield();
      }
      ++counter;
      ZfxUnlockMutex(mutex.get());
    }
  };
  std::thread threads[] = {std::thread(count, 1), std::thread(count, 1), std::thread(count, 0),
                           std::thread(count, 0)};
  for (std::thread &thread : threads) {
    thread.join();
  }
  EXPECT_EQ(counter, 4 * kRounds);
}

TEST(ZfxLockMutex, RefusesNull) {
  EXPECT_EQ(ZfxLockMutex(nullptr, 0), -1);
  EXPECT_EQ(ZfxLockMutex(nullptr, 1), -1);
}

TEST(ZfxUnlockMutex, FreesTheMutexAndClearsTheAdvice) {
  const Mutex mutex;
  ZfxLockMutex(mutex.get(), 1);
  ZfxUnlockMutex(mutex.get());
  EXPECT_EQ(mutex->locked, 0);
  EXPECT_EQ(try_in_another_thread(mutex), 0);
}

// Two threads pass a mutex on and the second destroys it: the first must not touch it after the unlock.
TEST(ZfxUnlockMutex, IsTheLastUseOfAMutexThatItsNextHolderDestroys) {
  for (int round = 0; round < 300; ++round) {
    ZfxMutex *mutex = ZfxCreateMutex();
    std::atomic<bool> is_locked{false};
    std::thread first([&] {
      ZfxLockMutex(mutex, 1);
      is_locked = true;
      ZfxUnlockMutex(mutex);
    });
    while (!is_locked) {
      std::this_thread::yield();
    }
    ZfxLockMutex(mutex, 1);
    ZfxUnlockMutex(mutex);
    ZfxDestroyMutex(mutex);
    first.join();
  }
}

TEST(ZfxUnlockMutex, IgnoresNull) {
  ZfxUnlockMutex(nullptr);
}

TEST(ZfxDestroyMutex, IgnoresNull) {
  ZfxDestroyMutex(nullptr);
}

}  // namespace
