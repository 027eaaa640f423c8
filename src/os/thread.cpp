// Threads: the record that owner and thread share, and who gives back what when either of them is done.
#include "thread.h"

#include <semaphore.h>

#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>

#include "handles.hpp"

namespace {

// The block behind a record. A running thread touches none of it but the record.
struct ThreadBlock {
  ZfxThread record;
  pthread_t handle;  // the thread, also after the record's field has been cleared
};
static_assert(std::is_standard_layout_v<ThreadBlock> && offsetof(ThreadBlock, record) == 0,
              "a record's address is that of its block");

ThreadBlock *block_of(ZfxThread *thread) {
  return reinterpret_cast<ThreadBlock *>(thread);
}

void release_mutex(ZfxMutex *mutex) {
  if (mutex == nullptr) return;
  if (ZfxLockMutex(mutex, 0) == 0) {
    ZfxUnlockMutex(mutex);
    ZfxDestroyMutex(mutex);
    return;
  }
  // The thread has ended with it, or the caller has it; which of them cannot be told. Only its holder may
  // unlock a mutex and nobody may destroy a locked one, so it is released as the plain storage that it is.
  pthread_mutexattr_destroy(&mutex->attr);
  ZfxMemFree(mutex);
}

struct ThreadReleaser {
  void operator()(ThreadBlock *block) const {
    ZfxThread &record = block->record;
    ZfxCloseEvent(std::exchange(record.stopEvent, nullptr));
    ZfxCloseEvent(std::exchange(record.threadEvent, nullptr));
    release_mutex(std::exchange(record.mutex, nullptr));
    pthread_attr_destroy(&record.attr);
    ZfxMemFree(block);
  }
};
using UniqueThread = std::unique_ptr<ThreadBlock, ThreadReleaser>;

// A block with all that a thread needs, or nothing.
UniqueThread allocate_thread() {
  auto block = zorvcrt::allocate_record<ThreadBlock>();
  if (block == nullptr || pthread_attr_init(&block->record.attr) != 0) return nullptr;
  UniqueThread thread(block.release());
  ZfxThread &record = thread->record;
  pthread_attr_setdetachstate(&record.attr, PTHREAD_CREATE_JOINABLE);
  pthread_attr_setinheritsched(&record.attr, PTHREAD_INHERIT_SCHED);
  record.stopEvent = ZfxCreateEvent();
  record.threadEvent = ZfxCreateEvent();
  record.mutex = ZfxCreateMutex();
  const bool complete =
      record.stopEvent != nullptr && record.threadEvent != nullptr && record.mutex != nullptr;
  return complete ? std::move(thread) : nullptr;
}

// What a new thread is given; it belongs to the thread once there is one.
struct Start {
  ZfxThreadRoutine routine;
  ZfxThread *record;
  sem_t handle_stored;
};
struct StartReleaser {
  void operator()(Start *start) const {
    sem_destroy(&start->handle_stored);
    ZfxMemFree(start);
  }
};
using UniqueStart = std::unique_ptr<Start, StartReleaser>;

UniqueStart allocate_start(ZfxThreadRoutine routine, ZfxThread *record) {
  auto block = zorvcrt::allocate_record<Start>();
  if (block == nullptr) return nullptr;
  *block = {routine, record, {}};
  sem_init(&block->handle_stored, 0, 0);
  return UniqueStart(block.release());
}

// A thread can be running before its creator knows its handle, and a short one could mark its end before the
// creator has stored the handle: the mark would be overwritten. So the thread waits for the handle first, out
// of reach of a cancellation, which is for the routine alone.
void *enter_thread(void *argument) {
  int cancel_state = PTHREAD_CANCEL_ENABLE;
  pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancel_state);
  UniqueStart start(static_cast<Start *>(argument));
  while (sem_wait(&start->handle_stored) != 0) {
    // interrupted by a signal
  }
  const ZfxThreadRoutine routine = start->routine;
  ZfxThread *const record = start->record;
  start.reset();
  pthread_setcancelstate(cancel_state, nullptr);
  return routine(record);
}

// The end of a thread that has not marked it: nobody has to give the thread back afterwards.
void end_running(ZfxThread *thread, pthread_t handle) {
  if (thread->stopEvent == nullptr) {
    pthread_cancel(handle);
    return;
  }
  ZfxSetEvent(thread->stopEvent);
  if (pthread_equal(handle, pthread_self()) != 0) {
    pthread_detach(handle);
  } else {
    pthread_join(handle, nullptr);
  }
}

}  // namespace

ZfxThread *ZfxCreateThread(ZfxThreadRoutine routine, uint64_t userData) {
  if (routine == nullptr) return nullptr;
  UniqueThread thread = allocate_thread();
  if (thread == nullptr) return nullptr;
  ZfxThread *const record = &thread->record;
  record->userData = userData;
  UniqueStart start = allocate_start(routine, record);
  if (start == nullptr) return nullptr;
  if (pthread_create(&thread->handle, &record->attr, enter_thread, start.get()) != 0) return nullptr;

  __atomic_store_n(&record->thread, thread.release()->handle, __ATOMIC_RELEASE);
  sem_post(&start.release()->handle_stored);
  return record;
}

void ZfxTerminateThread(ZfxThread *thread) {
  if (thread == nullptr) return;
  const UniqueThread owner(block_of(thread));
  const pthread_t handle = __atomic_load_n(&thread->thread, __ATOMIC_ACQUIRE);
  if (handle != 0) {
    end_running(thread, handle);
    __atomic_store_n(&thread->thread, 0, __ATOMIC_RELAXED);
  } else {
    // Nobody joins a thread that has marked its end, and without this its stack would stay for ever.
    pthread_detach(owner->handle);
  }
}

void ZfxThreadCleanup(ZfxThread *thread) {
  if (thread == nullptr) return;
  ZfxCloseEvent(std::exchange(thread->threadEvent, nullptr));
  // The mark comes last: who sees it may release the record.
  __atomic_store_n(&thread->thread, 0, __ATOMIC_RELEASE);
}

int32_t ZfxIsThreadFinished(const ZfxThread *thread) {
  return thread == nullptr || __atomic_load_n(&thread->thread, __ATOMIC_ACQUIRE) == 0 ? 1 : 0;
}

uint64_t ZfxGetCurrentThreadId() {
  return pthread_self();
}

int32_t ZfxGetThreadConcurrency() {
  return pthread_getconcurrency();
}

int32_t ZfxSetThreadConcurrency(int32_t level) {
  const int32_t current = pthread_getconcurrency();
  return current >= level ? current : pthread_setconcurrency(level);
}
