/**
 * @file RelativeDirToAbsolute.h
 * Making a path absolute.
 */
#ifndef ZORVCRT_RELATIVEDIRTOABSOLUTE_H
#define ZORVCRT_RELATIVEDIRTOABSOLUTE_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Put the current directory in front of a path that does not begin with '/'.
 *
 * @param destination receives the absolute path, always terminated; must hold 2048 bytes. A longer path is
 * cut at 2047. It may be the same area as @p path. Null gives -1.
 * @param path        the path, absolute or relative; null gives -1
 * @return the number of bytes written, without the terminator; -1 for a missing argument, or when the current
 *         directory is longer than 1023 bytes or gone (see errno), and then @p destination holds ""
 *
 * Nothing is looked up or tidied: "../a" in "/b" gives "/b/../a". A current directory whose name ends in a
 * backslash gets no '/' behind it. Re-entrant; the current directory is that of the process.
 */
ZFX_API int32_t ZfxRelativeDirToAbsolute(char *destination, const char *path);

ZFX_END_DECLS

#endif
