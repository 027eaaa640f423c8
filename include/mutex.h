/**
 * @file mutex.h
 * Mutexes: one thread at a time.
 *
 * Any thread may call any of the functions; only destroying must come after the last use, and only the thread
 * that has a mutex unlocks it. A thread that locks a mutex which it has already waits for ever.
 */
#ifndef ZORVCRT_MUTEX_H
#define ZORVCRT_MUTEX_H

#include <pthread.h>
#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/** A mutex of ZfxCreateMutex(). */
typedef struct ZfxMutex {
  pthread_mutex_t mutex;    /**< the system's mutex, a normal and not a recursive one */
  pthread_mutexattr_t attr; /**< the attributes that it was made with, the system's defaults */
  /** Advice, and not the truth: 1 after a lock with waiting and after a try that found the mutex busy, 0 at
   * first and after an unlock; a try that obtained the mutex leaves it alone. The library writes it
   * atomically and a host that looks at it while other threads use the mutex reads it atomically too
   * (`__atomic_load_n(&mutex->locked, __ATOMIC_RELAXED)`). */
  int32_t locked;
} ZfxMutex;

/**
 * Create a mutex, free at first.
 *
 * @return the mutex, to be destroyed with ZfxDestroyMutex(); null when the allocator fails
 */
ZFX_API ZfxMutex *ZfxCreateMutex(void);

/**
 * Lock a mutex, with or without waiting for it. Mind the results: they differ between the two.
 *
 * @param mutex the mutex
 * @param wait  other than 0 to wait until the mutex is free, 0 to try once
 * @return with waiting: 1, obtained. Without: 0 when the mutex was free and is obtained, 1 when it was busy
 *         and is not obtained. For a null mutex -1.
 */
ZFX_API int32_t ZfxLockMutex(ZfxMutex *mutex, int32_t wait);

/** Unlock a mutex that the calling thread has. @param mutex the mutex; null is ignored */
ZFX_API void ZfxUnlockMutex(ZfxMutex *mutex);

/** Destroy a mutex that is free and that nobody uses any more. @param mutex the mutex; null is ignored */
ZFX_API void ZfxDestroyMutex(ZfxMutex *mutex);

ZFX_END_DECLS

#endif
