/**
 * @file kill.h
 * Killing a process.
 */
#ifndef ZORVCRT_KILL_H
#define ZORVCRT_KILL_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Kill one process with SIGKILL.
 *
 * @param process the process id
 * @return 0, or the errno of kill(): ESRCH when there is no such process, EPERM when it is not ours to kill
 *
 * Values that are the id of no single process are refused with ESRCH: 0, and everything above INT32_MAX,
 * among it the -1 that a failed start reports as its id. No group of processes is ever signalled.
 *
 * A killed child still has to be collected, with ZfxWaitProcess() or waitpid(). Re-entrant.
 */
ZFX_API int32_t ZfxKillProcess(uint32_t process);

/**
 * Kill one process with SIGKILL, exactly as ZfxKillProcess() does.
 *
 * The children of the process are not killed; callers rely on grandchildren that outlive it.
 */
ZFX_API int32_t ZfxKillProcessTree(uint32_t process);

ZFX_END_DECLS

#endif
