// Mutexes: the system's normal mutex with a note beside it of what happened to it last.
#include "mutex.h"

#include <atomic>

#include "handles.hpp"

namespace {

// Threads write the note without having the mutex, and hosts read it, so it is written atomically.
void note(ZfxMutex *mutex, int32_t locked) {
  std::atomic_ref(mutex->locked).store(locked, std::memory_order_relaxed);
}

}  // namespace

ZfxMutex *ZfxCreateMutex() {
  auto mutex = zorvcrt::allocate_record<ZfxMutex>();
  if (mutex == nullptr) return nullptr;
  pthread_mutexattr_init(&mutex->attr);
  pthread_mutex_init(&mutex->mutex, &mutex->attr);
  return mutex.release();
}

int32_t ZfxLockMutex(ZfxMutex *mutex, int32_t wait) {
  if (mutex == nullptr) return -1;
  if (wait != 0) {
    pthread_mutex_lock(&mutex->mutex);
  } else if (pthread_mutex_trylock(&mutex->mutex) == 0) {
    return 0;
  }
  note(mutex, 1);
  return 1;
}

void ZfxUnlockMutex(ZfxMutex *mutex) {
  if (mutex == nullptr) return;
  // The note comes first: once the mutex is free, its next holder may destroy it.
  note(mutex, 0);
  pthread_mutex_unlock(&mutex->mutex);
}

void ZfxDestroyMutex(ZfxMutex *mutex) {
  if (mutex == nullptr) return;
  pthread_mutexattr_destroy(&mutex->attr);
  pthread_mutex_destroy(&mutex->mutex);
  ZfxMemFree(mutex);
}
