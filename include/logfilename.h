/**
 * @file logfilename.h
 * Names of log files: directory, name, what tells apart process, thread and time, and extension, as in
 * "/var/log/srv_4711_20261115083812042.txt".
 *
 * All functions are re-entrant; those that read "QUOR_LOG" are as thread-safe as ZfxReadRCS().
 */
#ifndef ZORVCRT_LOGFILENAME_H
#define ZORVCRT_LOGFILENAME_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Compose the path of a log file.
 *
 * @param buffer      receives the path. It must hold the whole of it; more than 4096 bytes, the terminator
 *                    included, are never written, a longer path is cut. Null for a new block of 1024 bytes,
 *                    in which a longer path is cut at 1023.
 * @param directory   null for "/tmp"; empty for a name without directory. See below for a '/' at its end.
 * @param name        null counts as empty
 * @param extension   without its dot or with it; null for "log"
 * @param with_pid    other than 0 adds '_' and the process id
 * @param with_thread other than 0 adds '_' and the lower 32 bits of the calling thread's identifier
 * @param with_time   other than 0 adds '_' and the local time, year to milliseconds in 17 digits
 * @return @p buffer, or the new block, which the caller releases with ZfxMemFree(); null when there is no
 *         memory for it
 *
 * When @p directory ends in '/' or '\\', this last character is not used, and it is also removed from the
 * caller's text, by a terminator in its place ("/" becomes empty that way and still means the root directory
 * in this call). It is declared const all the same, so that constant texts can be given: a text in memory
 * that cannot be written is left as it is, with the same path for a result.
 */
ZFX_API char *CrtGetLogFileName(char *buffer, const char *directory, const char *name, const char *extension,
                                int32_t with_pid, int32_t with_thread, int32_t with_time);

/**
 * Compose the path of a log file in the installation's log directory; otherwise as CrtGetLogFileName().
 *
 * @param buffer      as for CrtGetLogFileName()
 * @param directory   null or empty for the value of the setting "QUOR_LOG" as ZfxReadRCS() tells it, or
 * "/tmp" when that is absent or empty
 * @param name        as for CrtGetLogFileName()
 * @param extension   as for CrtGetLogFileName()
 * @param with_pid    as for CrtGetLogFileName()
 * @param with_thread as for CrtGetLogFileName()
 * @param with_time   as for CrtGetLogFileName()
 * @return as CrtGetLogFileName()
 */
ZFX_API char *getLogFileNameEx(char *buffer, const char *directory, const char *name, const char *extension,
                               int32_t with_pid, int32_t with_thread, int32_t with_time);

/** Compose the path of a log file as getLogFileNameEx() does, without the time. */
ZFX_API char *getLogFileName(char *buffer, const char *directory, const char *name, const char *extension,
                             int32_t with_pid, int32_t with_thread);

ZFX_END_DECLS

#endif
