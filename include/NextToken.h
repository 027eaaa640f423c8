/**
 * @file NextToken.h
 * Cutting a delimited line into its fields.
 */
#ifndef ZORVCRT_NEXTTOKEN_H
#define ZORVCRT_NEXTTOKEN_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Cut the next field out of a delimited line.
 *
 * @param string    the line; null counts as empty
 * @param delimiter the byte between fields; there is no quoting or escaping
 * @param out       receives the field without the white space around it, always terminated. Null receives
 *                  nothing, and the fields then count as empty.
 * @param size      capacity of @p out in bytes; below 1 as a null @p out
 * @param position  in: the offset to start at, 0 at first; out: where the next call goes on. A negative
 * offset counts as 0, one past the end as the end; null starts at 0 and reports nothing.
 * @return 1 when a field was produced, 0 when the line is used up
 *
 * A field longer than @p size - 1 is cut before its white space is removed; the position still moves past all
 * of it. An empty field that is followed by more text comes back joined with the delimiter and the field
 * after it: "a,,b" gives "a", then ",b". A delimiter at the very end adds no field ("a," is one field), but
 * white space behind it does ("a, " is "a" and an empty field).
 *
 * A line is read up to the offset INT32_MAX. Re-entrant; white space is what isspace() says in the process
 * locale.
 */
ZFX_API int32_t ZfxNextToken(const char *string, char delimiter, char *out, int32_t size, int32_t *position);

ZFX_END_DECLS

#endif
