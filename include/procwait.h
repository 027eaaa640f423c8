/**
 * @file procwait.h
 * Waiting for a child process.
 */
#ifndef ZORVCRT_PROCWAIT_H
#define ZORVCRT_PROCWAIT_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Wait for a child to end or to stop.
 *
 * @param process the child's id. It is handed to waitpid() as it is, so -1 stands for any child, 0 and other
 *                values above INT32_MAX for the members of a process group.
 * @param timeout 0 to look once; above 0 the largest number of sleeps of one millisecond between further
 *                looks; below 0 to wait without limit
 * @param code    receives the exit code, 0 to 255, of a child that ended normally, and -1 for a child that
 * was killed by a signal or is stopped; otherwise left alone. May be null.
 * @return 1 when the child has ended, and is thereby collected, or has been stopped since the last look; 0
 *         when it is still running; -1 with errno set when there is no such child (ECHILD) or a signal
 *         interrupted a wait without limit (EINTR)
 *
 * The time-out counts sleeps, not time: on a busy machine the whole takes longer. A signal shortens one
 * sleep. Re-entrant; of several threads that wait for one child one gets it.
 */
ZFX_API int32_t ZfxWaitProcess(uint32_t process, int32_t timeout, int32_t *code);

ZFX_END_DECLS

#endif
