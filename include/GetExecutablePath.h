/**
 * @file GetExecutablePath.h
 * The folder of the running program.
 */
#ifndef ZORVCRT_GETEXECUTABLEPATH_H
#define ZORVCRT_GETEXECUTABLEPATH_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Tell the folder that holds the running program.
 *
 * @param buffer   receives the folder, cut to fit and terminated. Null receives nothing.
 * @param capacity capacity of @p buffer in bytes; 0 writes nothing
 * @return @p buffer
 *
 * The program is what the link "/proc/self/exe" names, up to 2047 bytes of it. The folder comes without a
 * trailing slash: "/usr/bin" for "/usr/bin/prog", and an empty text for "/prog".
 *
 * Where the system shows no such link the current directory is all that is known, and where the link is empty
 * the environment variable "_" stands in for it when it is shorter than @p capacity. A relative program name
 * is then taken from the current directory, and the result keeps its trailing slash, which tells the two
 * apart: "./prog" started in /home/u gives "/home/u/", "bin//prog" gives "/home/u/bin/", and "prog" alone
 * gives "/home/u".
 *
 * Re-entrant, as far as nobody changes the environment or the current directory at the same time.
 */
ZFX_API char *GetExecutablePath(char *buffer, uint32_t capacity);

ZFX_END_DECLS

#endif
