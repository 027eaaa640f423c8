// Dates: reading ISO 8601 and mail dates, broken-down times to UTC, and formatting. Every contender goes
// through the same random times of 2000 to 2040 and is checked on all of them first.
#include <array>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "contender.hpp"
#include "iso8601.h"
#include "rfc2822.h"
#include "timestamps.h"

#ifdef HAVE_GLIB
#include <glib.h>
#endif
#ifdef HAVE_APR
#include <apr_date.h>
#endif
#ifdef HAVE_ABSL
#include <absl/time/time.h>
#endif

namespace {

constexpr std::size_t kTimes = 256;
constexpr char kInput[] = "2000 to 2040";
constexpr char kIso[] = "%Y-%m-%dT%H:%M:%SZ";
constexpr char kMail[] = "%a, %d %b %Y %H:%M:%S GMT";
constexpr char kMailText[] = "%a, %d %b %Y %H:%M:%S GMT ";  // we pass over a zone that the text ends in
constexpr char kPlain[] = "%Y-%m-%d %H:%M:%S";

using Area = std::array<char, 64>;

struct Times {
  Times() {
    std::mt19937 random(1);
    for (std::size_t i = 0; i < kTimes; ++i) {
      seconds[i] = 946684800 + static_cast<time_t>(random() % 1262304000);
      gmtime_r(&seconds[i], &record[i]);
      Area area;
      iso[i].assign(area.data(), strftime(area.data(), area.size(), kIso, &record[i]));
      mail[i].assign(area.data(), strftime(area.data(), area.size(), kMailText, &record[i]));
      plain[i].assign(area.data(), strftime(area.data(), area.size(), kPlain, &record[i]));
    }
  }

  std::array<time_t, kTimes> seconds;
  std::array<tm, kTimes> record;
  std::array<std::string, kTimes> iso;
  std::array<std::string, kTimes> mail;
  std::array<std::string, kTimes> plain;
};

const Times &times() {
  static const Times all;
  return all;
}

// A contender that gives the seconds of the time with an index.
template <class Seconds>
void reader(const char *work, const char *name, Seconds seconds) {
  bench::contender(work, kInput, name, [=](benchmark::State &state) {
    for (std::size_t i = 0; i < kTimes; ++i) {
      if (static_cast<time_t>(seconds(i)) != times().seconds[i]) state.SkipWithError("wrong result");
    }
    std::size_t i = 0;
    for (auto _ : state) {
      benchmark::DoNotOptimize(seconds(i));
      i = (i + 1) % kTimes;
    }
  });
}

time_t seconds_by_strptime(const std::string &text, const char *format) {
  tm fields{};
  return strptime(text.c_str(), format, &fields) == nullptr ? -1 : timegm(&fields);
}

#ifdef HAVE_ABSL
int64_t seconds_by_absl(const std::string &text, const char *format) {
  absl::Time time;
  return absl::ParseTime(format, text, &time, nullptr) ? absl::ToUnixSeconds(time) : -1;
}
#endif

bool add_iso() {
  constexpr char kWork[] = "date-iso";
  reader(kWork, bench::kOwn, [](std::size_t i) {
    return ZfxParseIso8601(times().iso[i].data(), times().iso[i].size(), nullptr);
  });
  reader(kWork, "strptime and timegm",
         [](std::size_t i) { return seconds_by_strptime(times().iso[i], kIso); });
#ifdef HAVE_GLIB
  reader(kWork, "GLib", [](std::size_t i) {
    GDateTime *time = g_date_time_new_from_iso8601(times().iso[i].c_str(), nullptr);
    const gint64 seconds = g_date_time_to_unix(time);
    g_date_time_unref(time);
    return seconds;
  });
#endif
#ifdef HAVE_ABSL
  reader(kWork, "Abseil", [](std::size_t i) { return seconds_by_absl(times().iso[i], absl::RFC3339_sec); });
#endif
  return true;
}

bool add_mail() {
  constexpr char kWork[] = "date-mail";
  reader(kWork, bench::kOwn, [](std::size_t i) {
    return ZfxParseRfc2822(times().mail[i].data(), times().mail[i].size(), nullptr);
  });
  reader(kWork, "strptime and timegm",
         [](std::size_t i) { return seconds_by_strptime(times().mail[i], kMail); });
#ifdef HAVE_APR
  reader(kWork, "APR",
         [](std::size_t i) { return apr_time_sec(apr_date_parse_rfc(times().mail[i].c_str())); });
#endif
#ifdef HAVE_ABSL
  reader(kWork, "Abseil", [](std::size_t i) { return seconds_by_absl(times().mail[i], kMail); });
#endif
  return true;
}

// What to count the seconds of a UTC record takes where there is no timegm().
time_t seconds_by_switching(tm fields) {
  const char *const before = std::getenv("TZ");
  const std::string kept = before == nullptr ? "" : before;
  setenv("TZ", "", 1);
  tzset();
  const time_t seconds = mktime(&fields);
  if (before != nullptr) {
    setenv("TZ", kept.c_str(), 1);
  } else {
    unsetenv("TZ");
  }
  tzset();
  return seconds;
}

bool add_to_utc() {
  constexpr char kWork[] = "date-to-utc";
  reader(kWork, bench::kOwn, [](std::size_t i) {
    tm fields = times().record[i];
    uint64_t seconds = 0;
    ZfxTimeToUTC(&seconds, &fields);
    return seconds;
  });
  reader(kWork, "timegm", [](std::size_t i) {
    tm fields = times().record[i];
    return timegm(&fields);
  });
  reader(kWork, "mktime with TZ switched",
         [](std::size_t i) { return seconds_by_switching(times().record[i]); });
  return true;
}

// A contender that writes the text of the time with an index.
template <class Write>
void writer(const char *name, Write write) {
  bench::contender("date-to-text", kInput, name, [=](benchmark::State &state) {
    Area area;
    for (std::size_t i = 0; i < kTimes; ++i) {
      write(i, area);
      if (times().plain[i] != area.data()) state.SkipWithError("wrong text");
    }
    std::size_t i = 0;
    for (auto _ : state) {
      write(i, area);
      benchmark::DoNotOptimize(area.data());
      benchmark::ClobberMemory();
      i = (i + 1) % kTimes;
    }
  });
}

bool add_to_text() {
  writer(bench::kOwn, [](std::size_t i, Area &area) {
    ZfxFormatIso8601(times().seconds[i], area.data(), static_cast<int32_t>(area.size()));
  });
  writer("gmtime and strftime", [](std::size_t i, Area &area) {
    tm fields{};
    gmtime_r(&times().seconds[i], &fields);
    strftime(area.data(), area.size(), kPlain, &fields);
  });
#ifdef HAVE_GLIB
  writer("GLib", [](std::size_t i, Area &area) {
    GDateTime *time = g_date_time_new_from_unix_utc(times().seconds[i]);
    gchar *text = g_date_time_format(time, kPlain);
    std::memcpy(area.data(), text, std::strlen(text) + 1);
    g_free(text);
    g_date_time_unref(time);
  });
#endif
#ifdef HAVE_ABSL
  writer("Abseil", [](std::size_t i, Area &area) {
    const std::string text =
        absl::FormatTime(kPlain, absl::FromUnixSeconds(times().seconds[i]), absl::UTCTimeZone());
    std::memcpy(area.data(), text.c_str(), text.size() + 1);
  });
#endif
  return true;
}

[[maybe_unused]] const bool added = add_iso() && add_mail() && add_to_utc() && add_to_text();

}  // namespace
