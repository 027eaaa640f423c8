// Start routines and waits that the tests of threads share.
#pragma once

#include <thread>

#include "thread.h"

inline uint64_t address_of(void *pointer) {
  return reinterpret_cast<uint64_t>(pointer);
}

// The user data of a record, which points to a T of the test.
template <class T>
T &data_of(void *argument) {
  return *reinterpret_cast<T *>(static_cast<ZfxThread *>(argument)->userData);
}

template <class Condition>
void wait_until(Condition condition) {
  while (!condition()) {
    std::this_thread::yield();
  }
}

inline void wait_until_finished(const ZfxThread *thread) {
  wait_until([&] { return ZfxIsThreadFinished(thread) == 1; });
}

inline void wait_until_stopped(ZfxThread *thread) {
  wait_until([&] { return ZfxCheckEvent(thread->stopEvent) == 1; });
}

inline void *run_until_stopped(void *argument) {
  wait_until_stopped(static_cast<ZfxThread *>(argument));
  return nullptr;
}

inline void *mark_the_end(void *argument) {
  ZfxThreadCleanup(static_cast<ZfxThread *>(argument));
  return nullptr;
}
