/**
 * @file iso8601.h
 * Reading dates and times of the ISO 8601 family.
 */
#ifndef ZORVCRT_ISO8601_H
#define ZORVCRT_ISO8601_H

#include <stdint.h>
#include <time.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Turn a date and time such as "2024-02-29T12:00:00Z" into seconds.
 *
 * @param text   the characters, which need no terminator; null counts as empty when @p length is 0 and is a
 *               failure otherwise
 * @param length number of characters; none behind them is read
 * @param tm_out receives the fields as written, before the zone is applied, with tm_year and tm_mon in their
 *               own counting and weekday, day of year, daylight flag, offset and zone name 0; null receives
 *               nothing. A failure leaves it as it was.
 * @return seconds since 1970-01-01 00:00:00 UTC; 0 on failure, and also for the epoch itself, every time
 *         before it and a time that cannot be represented, for which @p tm_out is set
 *
 * What is read:
 * - The date: "YYYY-MM-DD" with '-', '.' or '/' between, or "YYYYMMDD". Of the latter only the second digits
 *   of month and day count: "20231225" is 5 February. Month and day each take two characters, and a second
 *   one that is no digit counts 0. Years 0000 to 0099 are 1900 to 1999.
 * - One character of any kind but a digit, "T" or a blank for example. It may stand in place of the second
 *   separator, too: "2024-05T10".
 * - The time: "hh", "hhmm", "hhmmss", "hh:mm" or "hh:mm:ss"; colons may be repeated. Where a run of digits
 *   has none of these lengths, its characters are passed over one by one until the rest has: "T123" is 23
 *   hours.
 * - The zone: "Z", "+hh", "+hhmm", "+hh:mm" or the same with '-', behind every form of the time but "hh:mm".
 *   A positive offset is ADDED to the time and a negative one subtracted, as ZfxTimestampToUTC() has it;
 *   without a zone the time is UTC. Characters behind the zone are ignored.
 *
 * A text may end anywhere between these parts; what was not read is 0. "2024" is month 0 and day 0 of 2024,
 * which is 30 November 2023. Values are not checked against their ranges: month 13 or hour 25 are carried.
 * Fractions of a second are a failure.
 *
 * Re-entrant. The time taken grows linearly with the length.
 */
ZFX_API uint64_t ZfxParseIso8601(const char *text, uint64_t length, struct tm *tm_out);

ZFX_END_DECLS

#endif
