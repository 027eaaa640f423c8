// Dates against the C library, GLib and APR (where these are installed): reading ISO 8601 and mail dates,
// broken-down times to UTC, and formatting. Every contender goes through the same random times of 2000 to
// 2040.
#include <benchmark/benchmark.h>
#include <zorvcrt.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <random>
#include <string>

#ifdef HAVE_GLIB
#include <glib.h>
#endif
#ifdef HAVE_APR
#include <apr_date.h>
#endif

namespace {

constexpr std::size_t kTimes = 256;

struct Times {
  Times() {
    std::mt19937 random(1);
    for (std::size_t i = 0; i < kTimes; ++i) {
      seconds[i] = 946684800 + static_cast<time_t>(random() % 1262304000);
      gmtime_r(&seconds[i], &record[i]);
      std::array<char, 64> area;
      iso[i].assign(area.data(), strftime(area.data(), area.size(), "%Y-%m-%dT%H:%M:%SZ", &record[i]));
      mail[i].assign(area.data(),
                     strftime(area.data(), area.size(), "%a, %d %b %Y %H:%M:%S GMT ", &record[i]));
      plain[i].assign(area.data(), strftime(area.data(), area.size(), "%Y-%m-%d %H:%M:%S", &record[i]));
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

// Runs one(i) over all times, and stops the benchmark when a result is not the time that was written.
template <class Function>
void run_checked(benchmark::State &state, Function one) {
  for (std::size_t i = 0; i < kTimes; ++i) {
    if (static_cast<time_t>(one(i)) != times().seconds[i]) state.SkipWithError("wrong result");
  }
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(one(i));
    i = (i + 1) % kTimes;
  }
}

time_t seconds_by_strptime(const std::string &text, const char *format) {
  tm fields{};
  return strptime(text.c_str(), format, &fields) == nullptr ? -1 : timegm(&fields);
}

void BM_Iso_Strptime(benchmark::State &state) {
  run_checked(state, [](std::size_t i) { return seconds_by_strptime(times().iso[i], "%Y-%m-%dT%H:%M:%SZ"); });
}

void BM_Iso_ZfxParseIso8601(benchmark::State &state) {
  run_checked(state, [](std::size_t i) {
    return ZfxParseIso8601(times().iso[i].data(), times().iso[i].size(), nullptr);
  });
}

void BM_Iso_ZfxParseTimestamp(benchmark::State &state) {
  run_checked(state, [](std::size_t i) {
    return ZfxParseTimestamp(times().iso[i].data(), times().iso[i].size(), nullptr);
  });
}

void BM_Mail_Strptime(benchmark::State &state) {
  run_checked(
      state, [](std::size_t i) { return seconds_by_strptime(times().mail[i], "%a, %d %b %Y %H:%M:%S GMT"); });
}

void BM_Mail_ZfxParseRfc2822(benchmark::State &state) {
  run_checked(state, [](std::size_t i) {
    return ZfxParseRfc2822(times().mail[i].data(), times().mail[i].size(), nullptr);
  });
}

#ifdef HAVE_GLIB
void BM_Iso_GLib(benchmark::State &state) {
  run_checked(state, [](std::size_t i) {
    GDateTime *time = g_date_time_new_from_iso8601(times().iso[i].c_str(), nullptr);
    const gint64 seconds = g_date_time_to_unix(time);
    g_date_time_unref(time);
    return seconds;
  });
}
#endif

#ifdef HAVE_APR
void BM_Mail_Apr(benchmark::State &state) {
  run_checked(state, [](std::size_t i) { return apr_time_sec(apr_date_parse_rfc(times().mail[i].c_str())); });
}
#endif

void BM_ToUtc_SwitchedZone(benchmark::State &state) {
  run_checked(state, [](std::size_t i) {
    tm fields = times().record[i];
    const char *before = std::getenv("TZ");
    setenv("TZ", "", 1);
    tzset();
    const time_t seconds = mktime(&fields);
    if (before != nullptr) {
      setenv("TZ", before, 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
    return seconds;
  });
}

void BM_ToUtc_Timegm(benchmark::State &state) {
  run_checked(state, [](std::size_t i) {
    tm fields = times().record[i];
    return timegm(&fields);
  });
}

void BM_ToUtc_ZfxTimeToUTC(benchmark::State &state) {
  run_checked(state, [](std::size_t i) {
    tm fields = times().record[i];
    uint64_t seconds = 0;
    ZfxTimeToUTC(&seconds, &fields);
    return seconds;
  });
}

// Formatting is checked by what comes out for every time.
template <class Function>
void run_formatting(benchmark::State &state, Function one) {
  std::array<char, 64> area;
  for (std::size_t i = 0; i < kTimes; ++i) {
    one(i, area);
    if (times().plain[i] != area.data()) state.SkipWithError("wrong text");
  }
  std::size_t i = 0;
  for (auto _ : state) {
    one(i, area);
    benchmark::DoNotOptimize(area.data());
    benchmark::ClobberMemory();
    i = (i + 1) % kTimes;
  }
}

void BM_Format_GmtimeAndStrftime(benchmark::State &state) {
  run_formatting(state, [](std::size_t i, std::array<char, 64> &area) {
    tm fields{};
    gmtime_r(&times().seconds[i], &fields);
    strftime(area.data(), area.size(), "%Y-%m-%d %H:%M:%S", &fields);
  });
}

void BM_Format_ZfxFormatIso8601(benchmark::State &state) {
  run_formatting(state, [](std::size_t i, std::array<char, 64> &area) {
    ZfxFormatIso8601(times().seconds[i], area.data(), static_cast<int32_t>(area.size()));
  });
}

BENCHMARK(BM_Iso_Strptime);
#ifdef HAVE_GLIB
BENCHMARK(BM_Iso_GLib);
#endif
BENCHMARK(BM_Iso_ZfxParseIso8601);
BENCHMARK(BM_Iso_ZfxParseTimestamp);
BENCHMARK(BM_Mail_Strptime);
#ifdef HAVE_APR
BENCHMARK(BM_Mail_Apr);
#endif
BENCHMARK(BM_Mail_ZfxParseRfc2822);
BENCHMARK(BM_ToUtc_SwitchedZone);
BENCHMARK(BM_ToUtc_Timegm);
BENCHMARK(BM_ToUtc_ZfxTimeToUTC);
BENCHMARK(BM_Format_GmtimeAndStrftime);
BENCHMARK(BM_Format_ZfxFormatIso8601);

}  // namespace
