// Foundation against the C library: comparison without case, and zero-filled blocks.
#include <benchmark/benchmark.h>
#include <strings.h>
#include <zorvcrt.h>

#include <cstdlib>
#include <string>

namespace {

struct Pair {
  explicit Pair(std::size_t length) : lower(length, 'q'), upper(length, 'Q') {}
  std::string lower;
  std::string upper;
};

void BM_StrCaseCmp(benchmark::State &state) {
  const Pair pair(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(strcasecmp(pair.lower.c_str(), pair.upper.c_str()));
  }
}

void BM_ZfxStrNoCaseEquals(benchmark::State &state) {
  const Pair pair(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(ZfxStrNoCaseEquals(pair.lower.c_str(), pair.upper.c_str()));
  }
}

void BM_ZfxCompareNoCase(benchmark::State &state) {
  const Pair pair(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(ZfxCompareNoCase(pair.lower.c_str(), pair.upper.c_str()));
  }
}

void BM_Calloc(benchmark::State &state) {
  for (auto _ : state) {
    void *block = std::calloc(1, static_cast<std::size_t>(state.range(0)));
    benchmark::DoNotOptimize(block);
    std::free(block);
  }
}

void BM_ZfxMemAlloc(benchmark::State &state) {
  for (auto _ : state) {
    void *block = ZfxMemAlloc(static_cast<std::size_t>(state.range(0)));
    benchmark::DoNotOptimize(block);
    ZfxMemFree(block);
  }
}

BENCHMARK(BM_StrCaseCmp)->Arg(16)->Arg(64)->Arg(256);
BENCHMARK(BM_ZfxStrNoCaseEquals)->Arg(16)->Arg(64)->Arg(256);
BENCHMARK(BM_ZfxCompareNoCase)->Arg(16)->Arg(64)->Arg(256);
BENCHMARK(BM_Calloc)->Arg(16)->Arg(64)->Arg(512)->Arg(1024)->Arg(4096);
BENCHMARK(BM_ZfxMemAlloc)->Arg(16)->Arg(64)->Arg(512)->Arg(1024)->Arg(4096);

}  // namespace
