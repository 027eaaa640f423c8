/**
 * @file event.h
 * Events: flags that one thread sets and others look at or wait for.
 *
 * A set event stays set, however many threads have seen it, until it is reset. Any thread may call any of the
 * functions; only closing must come after the last use. Setting looks at the event first and then sets it, so
 * two threads that set a clear event in the same moment can set it twice, and it then takes two resets to
 * clear it.
 */
#ifndef ZORVCRT_EVENT_H
#define ZORVCRT_EVENT_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/** An event. */
typedef struct ZfxEvent ZfxEvent;

/**
 * Create an event, clear at first.
 *
 * @return the event, to be closed with ZfxCloseEvent(); null when the allocator fails
 */
ZFX_API ZfxEvent *ZfxCreateEvent(void);

/** Close an event that nobody uses any more. @param event the event; null is ignored */
ZFX_API void ZfxCloseEvent(ZfxEvent *event);

/**
 * Tell whether an event is set, and leave it as it is.
 *
 * @param event the event; null is never set
 * @return 1 when it is set, else 0
 */
ZFX_API int32_t ZfxCheckEvent(ZfxEvent *event);

/**
 * Wait until an event is set, and leave it set.
 *
 * @param event   the event; for null the result is 0 at once
 * @param seconds the longest time to wait, in whole seconds; 0 or less looks once
 * @return 1 when the event is set, 0 when the time is over
 *
 * The wait spins: it reacts without the delay of being woken and keeps its processor busy all the time. It
 * follows the calendar clock in steps of one second, so that a wait of n seconds ends between n - 1 and n
 * seconds after the call, and a clock that is set back makes it longer.
 */
ZFX_API int32_t ZfxWaitEvent(ZfxEvent *event, int32_t seconds);

/**
 * Set an event; one that is set already stays as it is.
 *
 * @param event the event
 * @return 0; -1 with errno set on an error, which for a null event is EINVAL
 */
ZFX_API int32_t ZfxSetEvent(ZfxEvent *event);

/**
 * Clear an event.
 *
 * @param event the event
 * @return 0 when the event was set and is clear now; -1 with errno EAGAIN when it was clear and has stayed
 * so, and with errno EINVAL for a null event
 */
ZFX_API int32_t ZfxResetEvent(ZfxEvent *event);

ZFX_END_DECLS

#endif
