/**
 * @file zfxsemaphore.h
 * Counting semaphores.
 *
 * Any thread may call any of the functions; only destroying must come after the last use.
 */
#ifndef ZORVCRT_ZFXSEMAPHORE_H
#define ZORVCRT_ZFXSEMAPHORE_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/** A counting semaphore. */
typedef struct ZfxSemaphore ZfxSemaphore;

/**
 * Create a semaphore.
 *
 * @param count the count at first, at most 2147483647
 * @return the semaphore, to be destroyed with ZfxDestroySemaphore(); null when the count is too large or the
 *         allocator fails
 */
ZFX_API ZfxSemaphore *ZfxCreateSemaphore(uint32_t count);

/** Destroy a semaphore that nobody uses any more. @param semaphore the semaphore; null is ignored */
ZFX_API void ZfxDestroySemaphore(ZfxSemaphore *semaphore);

/**
 * Wait until the count is above 0 and take 1 from it.
 *
 * @param semaphore the semaphore; null is ignored
 *
 * The wait sleeps. A signal handler that runs in the calling thread ends it without anything taken, unless
 * the handler was installed with SA_RESTART; who expects such handlers uses ZfxSemaphoreTryObtain(), which
 * tells.
 */
ZFX_API void ZfxSemaphoreObtain(ZfxSemaphore *semaphore);

/**
 * Take 1 from the count if it is above 0, or becomes so within a time.
 *
 * @param semaphore    the semaphore; for null the result is 0
 * @param milliseconds the longest time to wait, in milliseconds of processor time that the whole process
 * uses; below 1 the semaphore is tried once
 * @return 1 when taken, 0 when not
 *
 * The wait polls with the shortest of sleeps between. Its time is that of clock(): a process that does
 * nothing else uses processor time by this polling only, and then the wait is several times longer by the
 * calendar; with many busy threads it is shorter.
 */
ZFX_API int32_t ZfxSemaphoreTryObtain(ZfxSemaphore *semaphore, int32_t milliseconds);

/** Add 1 to the count, which must not pass 2147483647. @param semaphore the semaphore; null is ignored */
ZFX_API void ZfxSemaphoreRelease(ZfxSemaphore *semaphore);

ZFX_END_DECLS

#endif
