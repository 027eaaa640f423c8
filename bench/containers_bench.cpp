// The string buffer, the string list and the linked list beside what a host would write instead: std::string,
// std::vector, std::list, and where it is found GLib.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "strbuf.h"
#include "zfxmemory.h"

#ifdef ZORVCRT_BENCH_GLIB
#include <glib.h>
#endif

namespace {

constexpr int64_t kTextSize = 1 << 20;

void build_with_strbuf(benchmark::State &state) {
  const std::string piece(static_cast<std::size_t>(state.range(0)), 'x');
  for (auto _ : state) {
    strbuf *buffer = strbuf_create(16, nullptr);
    for (int64_t length = 0; length < kTextSize; length += state.range(0)) {
      strbuf_append(buffer, piece.data(), static_cast<int32_t>(piece.size()));
    }
    benchmark::DoNotOptimize(strbuf_get(buffer));
    strbuf_destroy(buffer);
  }
}
BENCHMARK(build_with_strbuf)->Arg(1)->Arg(10)->Arg(100);

void build_with_std_string(benchmark::State &state) {
  const std::string piece(static_cast<std::size_t>(state.range(0)), 'x');
  for (auto _ : state) {
    std::string text;
    for (int64_t length = 0; length < kTextSize; length += state.range(0)) {
      text.append(piece.data(), piece.size());
    }
    benchmark::DoNotOptimize(text.data());
  }
}
BENCHMARK(build_with_std_string)->Arg(1)->Arg(10)->Arg(100);

}  // namespace
