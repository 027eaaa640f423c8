// Runs a fuzz target over its seeds without a fuzzer: every file of the folders that are named, whole and cut
// after each of its bytes.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "input.hpp"

namespace {

// Of a longer seed only so many beginnings are run, spread over its length.
constexpr std::size_t kMostBeginnings = 512;

void run(const std::string &input) {
  const auto copy = fuzz::exact_copy(input);
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(copy.get()), input.size());
}

void run_with_beginnings(const std::string &input) {
  const std::size_t stride = input.size() / kMostBeginnings + 1;
  for (std::size_t size = 0; size < input.size(); size += stride) {
    run(input.substr(0, size));
  }
  run(input);
}

}  // namespace

int main(int argc, char **argv) {
  std::vector<std::filesystem::path> seeds;
  for (int i = 1; i < argc; ++i) {
    for (const auto &entry : std::filesystem::directory_iterator(argv[i])) {
      seeds.push_back(entry.path());
    }
  }
  std::sort(seeds.begin(), seeds.end());
  for (const auto &seed : seeds) {
    std::printf("%s\n", seed.filename().c_str());
    std::fflush(stdout);
    std::ifstream file(seed, std::ios::binary);
    run_with_beginnings({std::istreambuf_iterator<char>(file), {}});
  }
  std::printf("%zu seeds\n", seeds.size());
  return seeds.empty() ? 1 : 0;
}
