/**
 * @file uu.h
 * The data lines of uuencode: a length character, groups of four characters for three bytes each, a newline.
 * A line stands for at most 45 bytes. There are no "begin" and "end" lines and no closing empty line.
 *
 * All functions are re-entrant.
 */
#ifndef ZORVCRT_UU_H
#define ZORVCRT_UU_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Encode bytes into lines.
 *
 * @param data the bytes; null counts as none
 * @param n    number of bytes; below 1 writes nothing
 * @param out  receives the lines, not terminated. Must hold @p size bytes and one more, because the newline
 *             behind a line is not counted against the size. Null has no room.
 * @param size capacity of @p out in bytes
 * @return 0 when all is encoded; 1 when the room does not suffice, and what was written so far stays: the
 *         length character of a line where it lies within the size, and as many of its groups as fit
 *
 * Bytes that a last group lacks count as zero; a sextet of 0 is written '`'. n bytes make 62 characters for
 * every 45 of them and, for a rest of r bytes, (r + 2) / 3 * 4 + 2.
 */
ZFX_API int32_t zfx_uuencode(const void *data, int32_t n, char *out, int32_t size);

/**
 * Decode lines.
 *
 * @param text   the lines, zero-terminated; null gives 0. At a line that is empty or whose length character
 *               stands for 0 ('`' or a blank) the decoding ends.
 * @param unused not looked at
 * @param out    receives the bytes; null has no room
 * @param size   capacity of @p out in bytes
 * @return 0 when all is decoded; 1 when the room does not suffice, and the groups decoded so far stay
 *
 * Only the first 80 characters of a line count, and 79 of a last one without a newline; characters that a
 * line lacks count as blanks. Nothing is written behind the decoded bytes, and their number is not returned:
 * it is the sum of the length characters, each less 32 and modulo 64.
 */
ZFX_API int32_t zfx_uudecode(const char *text, int32_t unused, void *out, int32_t size);

ZFX_END_DECLS

#endif
