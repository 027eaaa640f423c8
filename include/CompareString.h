/**
 * @file CompareString.h
 * Comparison of zero-terminated byte texts: with or without case, whole or over a limited length, for the
 * order or for equality only.
 *
 * Bytes are compared as signed numbers: 0x80 to 0xFF order below all of ASCII. "Without case" maps both bytes
 * through the upper-case table of the process locale first. All functions are re-entrant, as far as nobody
 * changes the locale at the same time, and none allocates.
 */
#ifndef ZORVCRT_COMPARESTRING_H
#define ZORVCRT_COMPARESTRING_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Order two texts without regard to case.
 *
 * @param a first text; null counts as empty
 * @param b second text; null counts as empty
 * @return -1, 0 or 1 as @p a is lower than, equal to or higher than @p b; a proper prefix is the lower one
 */
ZFX_API int32_t ZfxCompareNoCase(const char *a, const char *b);

/**
 * Order the beginnings of two texts without regard to case.
 *
 * Only as many bytes are compared as @p n, @p a and @p b all have, so a text that is a prefix of the other
 * compares equal whatever @p n is: "ab" against "abc" over 3 bytes gives 0.
 *
 * @param a first text; null counts as empty
 * @param b second text; null counts as empty
 * @param n largest number of bytes to compare; 0 or less compares nothing and gives 0
 * @return -1, 0 or 1
 */
ZFX_API int32_t ZfxCompareLenNoCase(const char *a, const char *b, int32_t n);

/** Order the beginnings of two texts by their bytes; otherwise as ZfxCompareLenNoCase(). */
ZFX_API int32_t ZfxCompareLen(const char *a, const char *b, int32_t n);

/**
 * Tell whether two texts are the same.
 *
 * @param a first text; null equals only null
 * @param b second text; null equals only null
 * @return 1 when equal, else 0
 */
ZFX_API int32_t ZfxStrEquals(const char *a, const char *b);

/** Tell whether two texts are the same but for case; otherwise as ZfxStrEquals(). */
ZFX_API int32_t ZfxStrNoCaseEquals(const char *a, const char *b);

/**
 * Tell whether the first bytes of two texts are the same.
 *
 * @param a first text; null equals only null
 * @param b second text; null equals only null
 * @param n number of bytes that must agree, 0 or less for the whole texts. A text that ends earlier than the
 *          other within them is not equal to it: "ab" and "abc" agree over 2 bytes and differ over 3.
 * @return 1 when equal, else 0
 */
ZFX_API int32_t ZfxStrLenEquals(const char *a, const char *b, int32_t n);

/** Tell whether the first bytes of two texts are the same but for case; otherwise as ZfxStrLenEquals(). */
ZFX_API int32_t ZfxStrLenNoCaseEquals(const char *a, const char *b, int32_t n);

ZFX_END_DECLS

#endif
