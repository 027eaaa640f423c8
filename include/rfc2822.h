/**
 * @file rfc2822.h
 * Reading dates as electronic mail writes them (RFC 2822, section 3.3), and dates of either kind.
 */
#ifndef ZORVCRT_RFC2822_H
#define ZORVCRT_RFC2822_H

#include <stdint.h>
#include <time.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Turn a date and time such as "Thu, 29 Feb 2024 12:00:00 GMT " into seconds.
 *
 * @param text   the characters, which need no terminator; null counts as empty when @p length is 0 and is a
 *               failure otherwise
 * @param length number of characters; none behind them is read
 * @param tm_out receives the fields as written, before the zone is applied, with tm_year and tm_mon in their
 *               own counting, the daylight flag -1 and weekday, day of year, offset and zone name 0; null
 *               receives nothing. A failure leaves it as it was.
 * @return seconds since 1970-01-01 00:00:00 UTC; 0 on failure, and also for the epoch itself, every time
 *         before it and a time that cannot be represented, for which @p tm_out is set
 *
 * What is read, with single blanks between:
 * - The weekday "Mon" to "Sun" and whatever follows it up to a blank. A text without a weekday loses its
 *   first character, so it begins with one to spare: " 29 Feb 2024 ...".
 * - The day, two digits. A blank in place of the second one counts as the digit -16, so a day of one digit
 *   needs two blanks behind it and is far off: "1  Feb" is day -6. With one blank it is a failure.
 * - The month "Jan" to "Dec" and whatever follows it up to a blank.
 * - The year, any number of digits. Up to 99 it counts from 1900: "24" is 1924.
 * - Hour, minute and second, each any number of digits, with ':' between. Seconds cannot be left out.
 * - The zone as ZfxTimestampToUTC() reads it, "+0100" or "EST". It counts only with a blank, tab, line feed
 *   or carriage return behind it; without one, or when its name is not known, the time is UTC. What follows
 *   is ignored.
 *
 * Names are told apart by case. A text may end anywhere between these parts; what was not read is 0. Values
 * are not checked against their ranges but carried; numbers wrap in 32 bits.
 *
 * Re-entrant. The time taken grows linearly with the length.
 */
ZFX_API uint64_t ZfxParseRfc2822(const char *text, uint64_t length, struct tm *tm_out);

/**
 * Turn a date of either kind into seconds: ZfxParseRfc2822(), and when that gives 0 ZfxParseIso8601().
 *
 * @param text   as for both
 * @param length as for both
 * @param tm_out as for both: holds what the last of them that could read the text has stored. A mail date of
 *               the epoch or before counts as read, so that it stays there when the second cannot read it.
 * @return the first result that is not 0, else 0
 *
 * Re-entrant.
 */
ZFX_API uint64_t ZfxParseTimestamp(const char *text, uint64_t length, struct tm *tm_out);

ZFX_END_DECLS

#endif
