/**
 * @file format.h
 * A printf into a bounded area that can stand inside an expression.
 */
#ifndef ZORVCRT_FORMAT_H
#define ZORVCRT_FORMAT_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Format a text into an area.
 *
 * @param buffer receives the text, always terminated; null receives nothing
 * @param size   capacity of @p buffer in bytes; what does not fit is cut, below 1 nothing is written
 * @param format a printf format; null counts as empty
 * @return @p buffer
 *
 * A value that the C library refuses to format (a wide character without a multibyte form) ends the text
 * where it would stand. Re-entrant.
 */
ZFX_API char *string_format(char *buffer, int32_t size, const char *format, ...) ZFX_PRINTF(3, 4);

ZFX_END_DECLS

#endif
