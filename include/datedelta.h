/**
 * @file datedelta.h
 * Moving a point in time by days, weeks, months or years of the local calendar.
 */
#ifndef ZORVCRT_DATEDELTA_H
#define ZORVCRT_DATEDELTA_H

#include <stdint.h>
#include <time.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/**
 * Move a point in time, and snap it to the start of its week, month or year if wanted.
 *
 * @param base       seconds since 1970-01-01 00:00:00 UTC
 * @param amount     how many units forward, or back when negative
 * @param unit       1 day, 2 week, 3 month, 4 year
 * @param mode       what becomes of the date, by unit; the time of day stays:
 *                   - day: no meaning, any value
 *                   - week: 1 keeps the weekday, any other goes to the first day of the week
 *                   - month: 1 keeps the day, any other goes to day 1
 *                   - year: 1 keeps month and day, 3 keeps the month and goes to day 1, any other goes to 1
 *                     January
 * @param flags      what @p out_packed holds besides the year: 2 the month, 4 the day, 6 both; other bits are
 *                   ignored
 * @param out_time   receives the new time; null receives nothing
 * @param out_packed receives the new date of the local calendar, (year x 16 + month 1-12 or 0) x 32 + day or
 *                   0, in 32 bits; 0 when its year cannot be represented; null receives nothing
 * @return 0; -1, with nothing stored, for any other unit, and for a week, month or year when the year of @p
 *         base cannot be represented
 *
 * - Days and weeks are 86400 and 604800 seconds whatever the clock does in between. The product with @p
 *   amount is formed in 32 bits and wraps, beyond 24855 days or 3550 weeks; the sum wraps in 64 bits.
 * - The first day of the week is the setting "QUOR_FIRST_WEEKDAY", asked for as QuorConfQuery() does with all
 *   levels: a digit 0 (Sunday) to 6 (7 to 9 count as 0), or a text that begins with the first three letters
 *   of an English weekday in any case. Any other text, and no setting, is Monday.
 * - A month that keeps its day makes the 31st a 30th in April, June, September and November, and 29 February
 *   a 28th in common years. A 30 or 31 February is not cut but carried into March. A year that keeps its day
 *   makes 29 February a 28th in common years.
 * - The local time is that of TZ or the zone of the machine as they are now, with daylight saving. Months and
 *   years go through mktime() with the daylight flag of the base, so that a move from summer into winter
 *   shows one hour less on the clock and one from winter into summer one hour more; from the first or last
 *   hour of a day it can so land on the neighbouring day. A time that mktime() cannot represent is stored as
 *   -1.
 *
 * Re-entrant as far as nobody changes the environment or the settings at the same time. A week loads the
 * settings when they are not loaded yet, which ends the process where QuorConfQuery() does.
 */
ZFX_API int32_t ZfxDateDelta(time_t base, int32_t amount, int32_t unit, int32_t mode, int32_t flags,
                             time_t *out_time, uint32_t *out_packed);

ZFX_END_DECLS

#endif
