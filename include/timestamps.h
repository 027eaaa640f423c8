/**
 * @file timestamps.h
 * Broken-down times, written zones and seconds since 1970-01-01 00:00:00 UTC.
 *
 * UTC here is the time scale of POSIX: every day has 86400 seconds, whatever TZ and the zone files of the
 * machine say. Years are those of the Gregorian calendar, carried on before its introduction.
 */
#ifndef ZORVCRT_TIMESTAMPS_H
#define ZORVCRT_TIMESTAMPS_H

#include <stdint.h>
#include <time.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Turn a broken-down time into seconds, reading it as UTC, and normalise it.
 *
 * @param seconds receives the seconds since the epoch, or 0 when the result is -1; null receives nothing
 * @param record  the time. Fields may lie outside their usual ranges (month 12, day 0, hour 25, a 30
 *                February) and are carried. On return every field is normalised, weekday and day of year
 *                included, the daylight flag and the offset are 0 and the zone name is "UTC", a constant of
 *                the library. A time that cannot be represented, with a year outside the range of tm_year,
 *                leaves the record as it was. Null counts as such a time.
 * @return 0, or -1 when the time lies before the epoch (the record is normalised all the same) or cannot be
 *         represented (errno is then EOVERFLOW)
 *
 * The results are those of the GNU C library's mktime() with TZ set to the empty text, daylight flag
 * included: a positive tm_isdst takes one hour off, zero and negative ones change nothing. Neither TZ nor the
 * state of tzset() is read or changed. Re-entrant.
 */
ZFX_API int64_t ZfxTimeToUTC(uint64_t *seconds, struct tm *record);

/**
 * Shift a broken-down time by a written zone, in place.
 *
 * @param record the time; its hour, minute and second, the date where the day changes, and the daylight flag
 *               are set. Null is left alone, and the result is then -1 for every zone that is not empty.
 * @param zone   the zone, terminated; null or empty changes nothing:
 *               - "GMT", "UTC": no shift, daylight flag 0
 *               - '+' or '-' and a number that ends at the first non-digit: above 99 it is hours x 100 +
 *                 minutes, else hours; daylight flag -1. '+' is ADDED and '-' is SUBTRACTED, a promise to
 *                 callers that rely on this direction. "+01:00" is one hour, "+0030" thirty hours.
 *               - a name, case-sensitive, with the hours subtracted and the daylight flag: "EST" 4, 0; "EDT"
 *                 5, 1; "CST" 5, 0; "CDT" 6, 1; "MST" 6, 0; "MDT" 7, 1; "PST" 7, 0; "PDT" 8, 1; "CET" -1, -1;
 *                 "EET" -1, -1
 * @return 0 when the zone was applied or was empty, -1 for any other text, with @p record unchanged
 *
 * The date moves by at most one day, so that a longer shift leaves an hour outside 0 to 23, which
 * ZfxTimeToUTC() carries. The move follows tables of its own, which are a promise too:
 * - A leap year is told by its number since 1900: 2000, stored as 100, is a common year.
 * - Back from day 1 of a month: the month before, with the day from this list by tm_mon 0 to 11: 31 (of
 *   December), 30, 28 or 29, 30, 31, 30, 31, 30, 31, 31, 30, 31; above 11 day 30. With a negative tm_mon only
 *   the day becomes 0.
 * - Forward: day 28 of February goes to 1 March or, in a leap year, to day 29; day 30 of April, June,
 *   September and November and every day 31 go to day 1 of the next month; every other day to the next
 *   number, so that 29 February becomes a 30 February, which ZfxTimeToUTC() carries.
 *
 * Sums are formed in 32 bits and wrap. Re-entrant.
 */
ZFX_API int32_t ZfxTimestampToUTC(struct tm *record, const char *zone);

/**
 * Write a time as "2024-02-29 12:00:00", in UTC, with a blank in the middle and no zone behind.
 *
 * @param seconds  seconds since the epoch, negative ones included
 * @param buffer   receives the text, terminated; null receives nothing. A text that does not fit, or a time
 *                 whose year is outside the range of tm_year, gives an empty text, never a part of one.
 * @param capacity room in @p buffer in bytes; 20 hold every year of four digits; below 1 nothing is written
 * @return @p buffer
 *
 * Years outside 1000 to 9999 are written as strftime() writes "%Y". Re-entrant: no static area is shared.
 */
ZFX_API char *ZfxFormatIso8601(time_t seconds, char *buffer, int32_t capacity);

ZFX_END_DECLS

#endif
