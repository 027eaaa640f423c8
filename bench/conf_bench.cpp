// Configuration files of 10,000 keys: loading and looking up, beside a walk with strcasecmp and, where it is
// found, GLib's key files.
#include <benchmark/benchmark.h>
#include <strings.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "conf.h"

#ifdef HAVE_GLIB
#include <glib.h>
#endif

namespace {

constexpr int kKeys = 10000;

std::string key(int i) {
  return "some_setting_" + std::to_string(i * 7919 % kKeys);
}

// A file of one section, removed at the end of the program.
class File {
 public:
  File() {
    const int descriptor = ::mkstemp(path_.data());
    if (descriptor >= 0) ::close(descriptor);
    std::ofstream text(path_);
    text << "# a configuration\n[main]\n";
    for (int i = 0; i < kKeys; ++i) {
      text << key(i) << " = value number " << i << "\n";
    }
  }
  ~File() { ::unlink(path_.c_str()); }
  File(const File &) = delete;
  File &operator=(const File &) = delete;

  [[nodiscard]] const char *path() const { return path_.c_str(); }

 private:
  std::string path_ = "/tmp/zorvcrt-bench-XXXXXX";
};

const char *file() {
  static const File made;
  return made.path();
}

void load_with_config(benchmark::State &state) {
  for (auto _ : state) {
    Config *config = Config_Open(file());
    benchmark::DoNotOptimize(config);
    Config_Close(config);
  }
}
BENCHMARK(load_with_config);

void read_lines_only(benchmark::State &state) {
  for (auto _ : state) {
    char line[1024];
    FILE *stream = std::fopen(file(), "r");
    while (std::fgets(line, sizeof line, stream) != nullptr) {
      benchmark::DoNotOptimize(line);
    }
    std::fclose(stream);
  }
}
BENCHMARK(read_lines_only);

#ifdef HAVE_GLIB
void load_with_gkeyfile(benchmark::State &state) {
  for (auto _ : state) {
    GKeyFile *keys = g_key_file_new();
    benchmark::DoNotOptimize(g_key_file_load_from_file(keys, file(), G_KEY_FILE_NONE, nullptr));
    g_key_file_free(keys);
  }
}
BENCHMARK(load_with_gkeyfile);
#endif

void look_up_with_config(benchmark::State &state) {
  Config *config = Config_Open(file());
  const ConfigSection *section = Config_GetSection(config, "main");
  int i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(Config_GetEntry(section, key(i++ % kKeys).c_str()));
  }
  Config_Close(config);
}
BENCHMARK(look_up_with_config);

void look_up_by_walking(benchmark::State &state) {
  Config *config = Config_Open(file());
  const ConfigSection *section = Config_GetSection(config, "main");
  int i = 0;
  for (auto _ : state) {
    const std::string wanted = key(i++ % kKeys);
    const ConfigEntry *entry = section->entries;
    while (entry != nullptr && ::strcasecmp(entry->key, wanted.c_str()) != 0) {
      entry = entry->next;
    }
    benchmark::DoNotOptimize(entry);
  }
  Config_Close(config);
}
BENCHMARK(look_up_by_walking);

}  // namespace
