/**
 * @file gets_legacy.h
 * Line input from standard input for callers that know their input.
 */
#ifndef ZORVCRT_GETS_LEGACY_H
#define ZORVCRT_GETS_LEGACY_H

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Read a line from standard input, whatever its length.
 *
 * @param buffer receives the line without its line feed, terminated. It must have room for the longest line
 *               that can come: the function is not told its capacity and has no limit of its own. Where the
 *               input is not the caller's own use safe_gets(). Null gives null with errno EINVAL.
 * @return @p buffer, or null when the input is at its end, with an empty text in @p buffer
 *
 * A carriage return before the line feed is kept. A last line without a line feed is a line. Threads that
 * read at the same time get whole lines.
 */
ZFX_API char *gets_legacy(char *buffer);

ZFX_END_DECLS

#endif
