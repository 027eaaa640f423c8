/**
 * @file realconv.h
 * Texts to reals and back, in the library's own plain form: digits, a point, digits. There is no exponent in
 * either direction and no locale. Both functions are re-entrant, neither allocates and neither sets errno.
 */
#ifndef ZORVCRT_REALCONV_H
#define ZORVCRT_REALCONV_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Read a real.
 *
 * @param text          white space (blank, tab, line feed, vertical tab, form feed, carriage return), an
 *                      optional '-' with white space behind it, digits, and a fraction when a '.' is directly
 *                      followed by a digit; what follows is ignored, an exponent too: "1e5" is 1. Null and a
 *                      text that goes on with neither a digit nor a '-' ("+1.5", ".5", "abc") give the
 * default.
 * @param default_value what to return for such a text
 * @return the value; a '-' without digits gives negative zero
 *
 * The integer part is gathered in a signed 64-bit integer; so are the digits of the fraction and the power of
 * ten that they are divided by. All three wrap silently: up to 18 digits on either side of the point count as
 * written. From 64 fraction digits on the power of ten has become 0 and the value infinite.
 */
ZFX_API double realconv_atof(const char *text, double default_value);

/**
 * Write a real as integer part, point and fraction part.
 *
 * @param buffer receives the text, always terminated; null receives nothing
 * @param size   capacity of @p buffer in bytes; 0 writes nothing. 39 hold every value, a smaller area a
 *               text cut to @p size - 2 bytes before its trailing zeros are removed.
 * @param value  the value. A magnitude of 2 to the 63rd power or more is written as "9223372036854775807.0"
 *               with its sign, no number as "0.0".
 *
 * The fraction part is the fraction times ten to the 16th power, cut to an integer, and is written without
 * leading zeros: 1.05 gives "1.5" and 1.0625 gives "1.625". Trailing zeros are removed, a final point gets
 * one back ("100.0"). Stored documents carry this form, so it is a promise. A fraction that is not exact in
 * binary keeps its residue: 3.14159 begins with "3.14158999999999".
 */
ZFX_API void realconv_ftoa(char *buffer, uint64_t size, double value);

ZFX_END_DECLS

#endif
