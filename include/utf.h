/**
 * @file utf.h
 * Conversion of UCS-2 text to UTF-8 (RFC 3629, but for surrogates).
 */
#ifndef ZORVCRT_UTF_H
#define ZORVCRT_UTF_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Convert UCS-2 units to UTF-8.
 *
 * @param units the 16-bit units in the machine's byte order; null counts as none
 * @param n     number of units; below 1 gives an empty text
 * @param out   receives a new zero-terminated text, which the caller releases with ZfxMemFree(); null when
 *              memory is short or the text would exceed INT32_MAX bytes. A null @p out converts nothing.
 * @return the length of the text in bytes; 0 when there is none
 *
 * Every unit is encoded by itself: a surrogate becomes a sequence of three bytes, and a unit 0 a zero byte
 * inside the text. Re-entrant.
 */
ZFX_API int32_t Ucs2ToUtf8(const uint16_t *units, int32_t n, char **out);

ZFX_END_DECLS

#endif
