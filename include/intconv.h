/**
 * @file intconv.h
 * Texts to integers and back in the bases 8, 10 and 16, without a locale and without an error channel: for
 * bad input a conversion returns the caller's default.
 *
 * Every conversion reads the digits that it finds and ignores what follows them. A value that does not fit
 * wraps silently, modulo 2 to the 32nd or 64th power. All functions are re-entrant, none allocates and none
 * sets errno.
 */
#ifndef ZORVCRT_INTCONV_H
#define ZORVCRT_INTCONV_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Tell whether a character is a digit, and which value the conversions below give it.
 *
 * @param character the character
 * @param base      8, 10 or 16; in any other base nothing is a digit
 * @param value     receives the digit's value, 0 for what is no digit; may be null
 * @return 1 for a digit of the base, else 0
 *
 * Base 8 accepts '8' and '9' too, with the values 8 and 9. In base 16 only the letters carry a value, 10 to
 * 15 in either case; '0' to '9' are digits that count 0. Both are promises that stored data depends on.
 */
ZFX_API int32_t intconv_isdigit(int32_t character, int32_t base, int32_t *value);

/**
 * Read a signed 32-bit integer.
 *
 * @param text          blanks and tabs, an optional '-' with blanks and tabs behind it, then digits; null and
 *                      "" give the default. A '+' is not accepted.
 * @param base          8, 10 or 16, digits as intconv_isdigit() sees them
 * @param default_value what to return when no digit is found
 * @return the value
 */
ZFX_API int32_t intconv_atoi32s(const char *text, int32_t base, int32_t default_value);

/**
 * Read an unsigned 32-bit integer: kept for its default only, use intconv_atoi64u() for values.
 *
 * @param text          null, "" and a text that does not begin with a digit give the default. For a text that
 *                      begins with a digit the function does not return: it looks at that digit for as long
 *                      as it is there.
 * @param base          8, 10 or 16
 * @param default_value what to return when the first character is no digit
 * @return the default
 */
ZFX_API uint32_t intconv_atoi32u(const char *text, int32_t base, uint32_t default_value);

/** Read a signed 64-bit integer: as intconv_atoi32s(), but a '+' is accepted where a '-' is. */
ZFX_API int64_t intconv_atoi64s(const char *text, int32_t base, int64_t default_value);

/**
 * Read an unsigned 64-bit integer.
 *
 * @param text          digits from the first character on: neither white space nor a sign is accepted; null
 *                      and "" give the default
 * @param base          8, 10 or 16, digits as intconv_isdigit() sees them
 * @param default_value what to return when the first character is no digit
 * @return the value
 */
ZFX_API uint64_t intconv_atoi64u(const char *text, int32_t base, uint64_t default_value);

/**
 * Write an unsigned 64-bit integer, with upper-case letters in base 16.
 *
 * @param value the integer
 * @param base  8, 10 or 16
 * @param text  receives the digits: at most 22 bytes in base 8, 20 in base 10, 16 in base 16. No terminator
 * is written behind them; the caller puts one at the returned count or passes a zeroed area. Null receives
 * nothing and gives -1.
 * @return the number of digits, or -1 for another base; then an empty text is stored
 */
ZFX_API int32_t intconv_i64utoa(uint64_t value, int32_t base, char *text);

ZFX_END_DECLS

#endif
