/**
 * @file readrcs.h
 * Single settings from the system's settings file, without the settings tree: each thread keeps a copy of the
 * file's lines of its own and answers from the environment first, then from that copy.
 *
 * The file is "/usr/local/zorv/sys/conf/quor.conf" or, when that cannot be opened, "/.ZORVrcs". It is read at
 * a thread's first question and never again by that thread, unless it closes its copy; a file without a line
 * leaves no copy and is read at each question. While neither file can be opened every answer is null, the
 * environment's settings included.
 *
 * Lines are taken simply: "NAME=value", the name up to the first '=' with all the blanks in it, compared
 * without regard to case. Section headers are lines like any other, values are not expanded, and the first
 * line with the name wins. Trailing white space is not part of a line. A line of more than 510 characters is
 * taken as several of at most 510; a line with a zero byte ends there.
 *
 * Threads share nothing but the key of the copies, so they may all read at the same time.
 */
#ifndef ZORVCRT_READRCS_H
#define ZORVCRT_READRCS_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Tell the value of a setting.
 *
 * @param name the setting's name; null gives null
 * @param mask accepted for likeness with QuorConfQuery() and not looked at
 * @return a new text that the caller releases with ZfxFreeRCS(): the environment's value, or else the file's.
 *         The file's begins right behind the '=', leading blanks included; at a '#' it is cut and loses the
 *         white space in front of it, but never its first character. Null when there is no such setting, no
 *         file, no memory, or after ZfxCloseRCS().
 *
 * The copies lie under a thread-local key of the library's own, made at the first call.
 */
ZFX_API char *ZfxReadRCS(const char *name, uint32_t mask);

/**
 * Tell the value of a setting from copies of the file that are kept under a key of the caller's.
 *
 * @param key  a key of ZfxCreateTLS(), made with tlsRCSDealloc() as its destructor and used for nothing but
 *             this family. Under a number that is no key nothing can be kept, and each call reads the file.
 * @param name as for ZfxReadRCS()
 * @param mask as for ZfxReadRCS()
 * @return as for ZfxReadRCS()
 */
ZFX_API char *ZfxReadTlsRCS(uint32_t key, const char *name, uint32_t mask);

/** Release an answer. @param string a text from one of the functions above; null is ignored */
ZFX_API void ZfxFreeRCS(char *string);

/**
 * Start the calling thread without a copy of the file. The file is not read.
 *
 * @param key a key as for ZfxReadTlsRCS(), fresh or closed in this thread: a copy that is still there is
 *            forgotten and not released
 * @return the result of ZfxSetTLSValue(): 0 or an error number
 */
ZFX_API int32_t ZfxOpenTlsRCS(uint32_t key);

/** Release the calling thread's copy of the file; its next question reads the file again. @param key a key as
 * for ZfxReadTlsRCS() */
ZFX_API void ZfxCloseTlsRCS(uint32_t key);

/**
 * End the use of ZfxReadRCS() in this process.
 *
 * @return 0 when ZfxReadRCS() has never been called; otherwise the result of ZfxDeleteTLS() on the library's
 *         own key, and EINVAL for a second close
 *
 * Releases the calling thread's copy; other threads that have one end before, for the copies of those that
 * still run are never released. No read is to follow: one that does gives null.
 */
ZFX_API int32_t ZfxCloseRCS(void);

/** Release a thread's copy of the file: the destructor of the keys of this family, run at a thread's end.
 * @param list the value of the key; null is ignored */
ZFX_API void tlsRCSDealloc(void *list);

ZFX_END_DECLS

#endif
