// Settings: a first load of files of growing size, every second value of which refers to others, and the
// query by name. A load starts from the environment of a fresh process and exports all of its settings into
// it.
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "contender.hpp"
#include "temporary_file.hpp"
#include "zorvrcs.h"

namespace {

constexpr char kDeveloperVariable[] = "__KERNEL_DEVELOPER";
constexpr char kNoExportVariable[] = "__QUORCONF_NOENV";

std::string name_of(int i) {
  return "QUOR_BENCH_SETTING_" + std::to_string(i);
}

std::string settings_text(int count) {
  std::string text = "QUOR_BENCH_ROOT=/srv/quor\n";
  for (int i = 1; i < count; ++i) {
    text += name_of(i);
    text += i % 2 == 0 ? "=value number " + std::to_string(i)
                       : "=$QUOR_BENCH_ROOT/${" + name_of(i - 1) + "}/files";
    text += "\n";
  }
  return text;
}

// Replaces the environment by one as a login leaves it, which sends the settings to the file.
class FreshEnvironment {
 public:
  FreshEnvironment(const char *path, bool exports) {
    ::clearenv();
    ::setenv("PATH", "/usr/local/bin:/usr/bin:/bin", 1);
    ::setenv("HOME", "/", 1);
    for (int i = 0; i < 25; ++i) {
      ::setenv(("LOGIN_VARIABLE_" + std::to_string(i)).c_str(), "some value", 1);
    }
    ::setenv(kDeveloperVariable, path, 1);
    if (!exports) ::setenv(kNoExportVariable, "1", 1);
  }
  ~FreshEnvironment() { QuorConfRemove(); }
  FreshEnvironment(const FreshEnvironment &) = delete;
  FreshEnvironment &operator=(const FreshEnvironment &) = delete;
};

double processor_seconds() {
  timespec now{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void add_load(int count) {
  const std::string input = std::to_string(count) + " settings";
  bench::contender("settings-load", input, bench::kOwn, [=](benchmark::State &state) {
    const bench::TemporaryFile file(settings_text(count));
    for (auto _ : state) {
      const FreshEnvironment environment(file.path(), true);
      const double start = processor_seconds();
      QuorConfCreate();
      state.SetIterationTime(processor_seconds() - start);
      if (std::getenv(name_of(count - 1).c_str()) == nullptr) state.SkipWithError("not exported");
    }
  })->UseManualTime();
}

enum class Way { kOwn, kGetenv };

// Queries all names, one after the other. What is not exported getenv() does not find.
void add_query(const std::string &input, const char *name, Way way, bool exports, int32_t levels) {
  bench::contender("settings-query", input, name, [=](benchmark::State &state) {
    constexpr int kCount = 1000;
    const bench::TemporaryFile file(settings_text(kCount));
    const FreshEnvironment environment(file.path(), exports);
    QuorConfCreate();
    std::vector<std::string> names;
    for (int i = 1; i < kCount; ++i) {
      names.push_back(name_of(i));
    }
    std::size_t i = 0;
    const bool is_found = way == Way::kOwn || exports;
    const char *value = nullptr;
    for (auto _ : state) {
      const char *wanted = names[i].c_str();
      value = way == Way::kGetenv ? std::getenv(wanted) : QuorConfQuery(wanted, levels);
      if ((value == nullptr) == is_found) state.SkipWithError("wrong result");
      benchmark::DoNotOptimize(value);
      i = i + 1 == names.size() ? 0 : i + 1;
    }
  });
}

[[maybe_unused]] const bool added = [] {
  for (const int count : {500, 1000, 2000, 4000, 8000}) {
    add_load(count);
  }
  constexpr char kExported[] = "1,000 settings, exported";
  constexpr char kNotExported[] = "1,000 settings, kept out of the environment";
  add_query(kExported, bench::kOwn, Way::kOwn, true, QUOR_LEVEL_ALL);
  add_query(kExported, "getenv", Way::kGetenv, true, 0);
  add_query(kNotExported, bench::kOwn, Way::kOwn, false, QUOR_LEVEL_ALL);
  add_query(kNotExported, "getenv", Way::kGetenv, false, 0);
  return true;
}();

}  // namespace
