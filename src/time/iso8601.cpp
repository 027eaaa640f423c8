// The ISO 8601 reader: what the scanner finds, to seconds.
#include "iso8601.h"

#include "iso8601_scanner.hpp"
#include "timestamps_utc.hpp"
#include "timestamps_zone.hpp"

uint64_t ZfxParseIso8601(const char *text, uint64_t length, struct tm *tm_out) {
  if (text == nullptr && length != 0) return 0;
  zorvcrt::IsoTime written;
  if (!zorvcrt::scan_iso8601({text, length}, written)) return 0;
  tm record = zorvcrt::record_of(written, 0);
  if (tm_out != nullptr) *tm_out = record;
  // The zone goes on as the number that its text "+hhmm" is read as: one below an hour counts as hours.
  zorvcrt::shift_by_numeric_zone(record, written.zone_sign, written.zone_hours * 100 + written.zone_minutes);
  int64_t seconds = 0;
  return zorvcrt::utc_seconds(record, seconds) && seconds > 0 ? static_cast<uint64_t>(seconds) : 0;
}
