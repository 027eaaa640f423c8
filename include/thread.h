/**
 * @file thread.h
 * Threads that are asked to end, and waited for.
 *
 * A thread has a record that its creator and the thread itself share. The life of both:
 *
 *     owner                                      thread
 *     ZfxCreateThread(routine, userData)   ->    routine(record)
 *     ...                                        works, and polls record->stopEvent
 *     ZfxTerminateThread(record)                 ZfxThreadCleanup(record), as its last use of the record
 *
 * Any thread may call any of the functions on a record that lives, that is until ZfxTerminateThread().
 */
#ifndef ZORVCRT_THREAD_H
#define ZORVCRT_THREAD_H

#include <pthread.h>
#include <stdint.h>

#include "event.h"
#include "mutex.h"
#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * A thread. Records are made by ZfxCreateThread() only, which puts more than these fields into their block.
 * All fields are set when the start routine begins to run.
 */
typedef struct ZfxThread {
  uint64_t reserved; /**< 0 */
  /** The running thread; 0 when it has finished. While the thread may call ZfxThreadCleanup() others ask
   * ZfxIsThreadFinished() instead of reading the field. The library joins or detaches the thread; hosts do
   * neither, but for the one case that ZfxTerminateThread() names. */
  pthread_t thread;
  pthread_attr_t attr;   /**< the attributes that the thread was made with */
  ZfxMutex *mutex;       /**< for the use of owner and thread */
  ZfxEvent *threadEvent; /**< for the use of owner and thread; null once ZfxThreadCleanup() has closed it */
  ZfxEvent *stopEvent;   /**< set when the thread is to end; the start routine polls it */
  uint64_t userData;     /**< what ZfxCreateThread() was given */
} ZfxThread;

/** What a thread runs: it is called with the thread's ZfxThread record; its result is not kept. */
typedef void *(*ZfxThreadRoutine)(void *thread);

/**
 * Start a thread, joinable and with the scheduling of its creator.
 *
 * @param routine  what it runs; null starts nothing
 * @param userData a value for the routine, which finds it in the record
 * @return the record, to be released with ZfxTerminateThread(); null for a null @p routine or when memory or
 *         the system's threads are used up, and then nothing is left behind
 */
ZFX_API ZfxThread *ZfxCreateThread(ZfxThreadRoutine routine, uint64_t userData);

/**
 * End a thread and release its record. To be called exactly once, also for a thread that has finished.
 *
 * @param thread the record, gone afterwards; null is ignored
 *
 * A thread that has not marked its end with ZfxThreadCleanup() has its stopEvent set and is waited for
 * without limit. One that has marked it is not waited for: it may still be on its way out of its start
 * routine, and its resources go back to the system when it is. The host never joins or detaches such a thread
 * itself: by the time of this call its handle could be that of another thread.
 *
 * When the owner has closed stopEvent and put null in its place, a running thread is cancelled and not waited
 * for. It may then still run for a while, so it must not use its record; and its handle, which the host has
 * read from the field before, is the host's to join or to detach.
 *
 * The thread itself may call this as its last use of the record; nobody waits then.
 *
 * The mutex goes with the record, also when the ended thread or the caller has it locked, and so do both
 * events. Nobody else may be using or waiting for them.
 */
ZFX_API void ZfxTerminateThread(ZfxThread *thread);

/**
 * Mark the end of a thread: close threadEvent, and set the thread field to 0.
 *
 * @param thread the record of the calling thread; null is ignored
 *
 * For the thread itself, before it returns from its start routine or exits. From here on its owner may
 * release the record, so this is the thread's last use of it. Who still waits for threadEvent must have
 * stopped before. What the thread wrote before can be read by everyone to whom ZfxIsThreadFinished() has
 * said 1.
 */
ZFX_API void ZfxThreadCleanup(ZfxThread *thread);

/**
 * Tell whether a thread has marked its end.
 *
 * @param thread the record; null counts as finished
 * @return 1 when it has, else 0, also for a thread that has returned without ZfxThreadCleanup()
 */
ZFX_API int32_t ZfxIsThreadFinished(const ZfxThread *thread);

/** Tell the system's handle of the calling thread. @return pthread_self() as a number */
ZFX_API uint64_t ZfxGetCurrentThreadId(void);

/** Tell the concurrency level, a hint to the system. @return the level, 0 when none has been set */
ZFX_API int32_t ZfxGetThreadConcurrency(void);

/**
 * Raise the concurrency level; it is never lowered.
 *
 * @param level the level wanted
 * @return the current level when it is @p level or more, and then nothing changes; else 0 when the level has
 *         been raised, or an error number
 */
ZFX_API int32_t ZfxSetThreadConcurrency(int32_t level);

ZFX_END_DECLS

#endif
