/**
 * @file Base64.h
 * Base64 (RFC 4648, alphabet with '+' and '/', padding '=') into new buffers.
 *
 * All functions are re-entrant.
 */
#ifndef ZORVCRT_BASE64_H
#define ZORVCRT_BASE64_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Encode bytes.
 *
 * @param data   the bytes; null counts as none
 * @param length number of bytes
 * @param out    receives a new zero-terminated text without line breaks, which the caller releases with
 *               ZfxMemFree(); null when memory is short or the length of the text exceeds 32 bits (more than
 *               3,221,225,469 bytes). A null @p out encodes nothing.
 * @return the length of the text, always a multiple of 4; 0 when there is none
 */
ZFX_API uint32_t ZfxBase64Encode(const void *data, uint32_t length, char **out);

/**
 * Decode a text.
 *
 * @param text   the characters; null counts as none. They are read up to a zero byte, the first '=' or
 *               @p length of them. What is not in the alphabet (white space, line breaks, '-', bytes above
 *               0x7F) is skipped.
 * @param length largest number of characters to read
 * @param out    receives a new block of the bytes and at least one zero byte behind them, which the caller
 *               releases with ZfxMemFree(); null when memory is short. A null @p out decodes nothing. While a
 *               text of more than 8 KiB is decoded, the block may be large enough for @p length characters,
 *               if there is memory for that; one that is less than half used is cut.
 * @return the number of bytes. Of characters that do not fill a group of four, two give one byte, three give
 *         two, and a single one is dropped.
 */
ZFX_API uint32_t ZfxBase64Decode(const char *text, uint32_t length, void **out);

ZFX_END_DECLS

#endif
