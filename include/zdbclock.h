/**
 * @file zdbclock.h
 * The clocks in single numbers, and an interval split into its units.
 *
 * All functions are re-entrant and keep no state.
 */
#ifndef ZORVCRT_ZDBCLOCK_H
#define ZORVCRT_ZDBCLOCK_H

#include <stdint.h>

#include "zfxapi.h"

ZFX_BEGIN_DECLS

/** An interval, whole and split. */
typedef struct ZfxHrTimeDiff {
  uint64_t total;        /**< all of it, in nanoseconds */
  uint64_t hours;        /**< whole hours, without limit */
  uint64_t minutes;      /**< 0 to 59 */
  uint64_t seconds;      /**< 0 to 59 */
  uint64_t milliseconds; /**< 0 to 999 */
  uint64_t microseconds; /**< 0 to 999 */
  uint64_t nanoseconds;  /**< 0 to 999 */
} ZfxHrTimeDiff;

/**
 * Read the monotonic clock, for intervals.
 *
 * @return nanoseconds since a moment that stays the same while the machine runs
 */
ZFX_API uint64_t fphrtime(void);

/**
 * Read the real-time clock.
 *
 * @return milliseconds since 1970-01-01 00:00:00 UTC
 */
ZFX_API uint64_t fphrtimms(void);

/**
 * Split the interval between two readings.
 *
 * @param difference receives the interval; null receives nothing
 * @param a          a reading in nanoseconds, of fphrtime() for example
 * @param b          another one; the order does not matter
 */
ZFX_API void pphrtimediff(ZfxHrTimeDiff *difference, int64_t a, int64_t b);

ZFX_END_DECLS

#endif
