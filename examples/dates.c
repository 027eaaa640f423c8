/* Read dates, write them in UTC, and plan ahead in the local calendar. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <zorvcrt.h>

static void show(const char *text) {
  char utc[32];
  struct tm written;
  const uint64_t seconds = ZfxParseTimestamp(text, strlen(text), &written);
  if (seconds == 0)
    printf("%-34s no date\n", text);
  else
    printf("%-34s %s, written as %02d:%02d\n", text, ZfxFormatIso8601((time_t)seconds, utc, sizeof utc),
           written.tm_hour, written.tm_min);
}

int main(void) {
  char text[32];
  time_t due;
  uint32_t packed;
  const uint64_t start = fphrtime();
  ZfxHrTimeDiff taken;

  show("2024-02-29T12:00:00Z");
  show("2024-02-29 12:00:00-0530");         /* offsets are added as they stand: 12:00 less 5:30 */
  show("Thu, 29 Feb 2024 12:00:00 +0100 "); /* the blank behind the zone is needed */
  show("2024-02-29T12:00Z");                /* a zone cannot follow "hh:mm" */

  setenv("TZ", "UTC0", 1);
  if (ZfxDateDelta(1709208000, 1, 3, 1, 6, &due, &packed) != 0) return 1; /* a month on, the day kept */
  printf("due %s, year %u, month %u, day %u\n", ZfxFormatIso8601(due, text, sizeof text), packed >> 9,
         packed >> 5 & 15, packed & 31);

  pphrtimediff(&taken, (int64_t)fphrtime(), (int64_t)start);
  return taken.hours == 0 ? 0 : 1;
}
