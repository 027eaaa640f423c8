// How a benchmark enters the tables: by its name "work/input/contender", from which bench/report.py takes the
// rows apart again. Our own contender is called "zorvcrt".
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <string>
#include <utility>

namespace bench {

inline constexpr char kOwn[] = "zorvcrt";

/// Adds a contender, whose body takes a benchmark::State &.
template <class Body>
benchmark::internal::Benchmark *contender(const std::string &work, const std::string &input, const char *name,
                                          Body body) {
  return benchmark::RegisterBenchmark((work + "/" + input + "/" + name).c_str(), std::move(body));
}

/// The same for a body that is to be repeated as it is and gives a result.
template <class Body>
void repeated(const std::string &work, const std::string &input, const char *name, Body body) {
  contender(work, input, name, [body](benchmark::State &state) {
    for (auto _ : state) {
      auto result = body();
      benchmark::DoNotOptimize(result);
      benchmark::ClobberMemory();
    }
  });
}

/// Bytes that are the same in every run.
inline std::string random_bytes(std::size_t size) {
  std::mt19937 random(20261121);
  std::string bytes(size, '\0');
  for (char &byte : bytes) {
    byte = static_cast<char>(random());
  }
  return bytes;
}

}  // namespace bench
