/**
 * @file GetFileLine.h
 * Reading of a text file line by line, without its comments and blank lines.
 */
#ifndef ZORVCRT_GETFILELINE_H
#define ZORVCRT_GETFILELINE_H

#include <stdint.h>
#include <stdio.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Read the next line that says something.
 *
 * @param buffer receives the line without the white space around it; null gives null
 * @param size   capacity of @p buffer in bytes, all of which are cleared before the line is read. Below 2
 *               there is no room for a line and the result is null; below 1 nothing is written.
 * @param stream the open text file; null gives null
 * @return @p buffer, or null when no such line is left or the stream cannot be read; @p buffer then holds "".
 *         When the end of the file had been met before the call, @p buffer is not touched.
 *
 * Lines that are empty or blank and lines whose first character behind white space is '#' are passed over. A
 * line longer than @p size - 1 bytes comes in pieces, each taken for a line of its own: a piece of a long
 * comment that does not begin with '#' is handed back. A line is read up to a zero byte in it.
 *
 * Re-entrant for different streams; white space is what isspace() says in the process locale.
 */
ZFX_API char *GetFileLine(char *buffer, int32_t size, FILE *stream);

ZFX_END_DECLS

#endif
