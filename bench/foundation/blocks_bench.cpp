// Zero-filled blocks, taken and given back.
#include <cstdlib>

#include "contender.hpp"
#include "zfxmemory.h"

namespace {

constexpr char kWork[] = "blocks";

[[maybe_unused]] const bool added = [] {
  for (const std::size_t size : {16U, 64U, 512U, 4096U}) {
    const std::string input = std::to_string(size) + " bytes";
    bench::contender(kWork, input, bench::kOwn, [=](benchmark::State &state) {
      for (auto _ : state) {
        void *block = ZfxMemAlloc(size);
        benchmark::DoNotOptimize(block);
        ZfxMemFree(block);
      }
    });
    bench::contender(kWork, input, "calloc", [=](benchmark::State &state) {
      for (auto _ : state) {
        void *block = std::calloc(1, size);
        benchmark::DoNotOptimize(block);
        std::free(block);
      }
    });
  }
  return true;
}();

}  // namespace
