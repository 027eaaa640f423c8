/**
 * @file safe_gets.h
 * Line input from standard input into a bounded area.
 */
#ifndef ZORVCRT_SAFE_GETS_H
#define ZORVCRT_SAFE_GETS_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Read a line from standard input, as much of it as fits.
 *
 * @param buffer   receives the text without its line feed and a carriage return before that, terminated. Null
 *                 gives null with errno EINVAL.
 * @param capacity capacity of @p buffer in bytes. 0 gives null with errno EINVAL; 1 holds an empty text only
 *                 and gives one also at the end of the input.
 * @param discard  what becomes of the rest of a line that did not fit: 0 leaves it to be read next, anything
 *                 else throws it away
 * @return @p buffer, or null with an empty text in @p buffer when the input is at its end or cannot be read
 *
 * A carriage return that ends the text when the line does not fit is removed as well, together with a line
 * feed that follows it, which completes the line.
 *
 * Lines are those of fgets(): a NUL byte in the input ends the text for the caller and hides what follows it
 * up to the line feed. One thread at a time may read.
 */
ZFX_API char *safe_gets(char *buffer, uint64_t capacity, uint32_t discard);

ZFX_END_DECLS

#endif
