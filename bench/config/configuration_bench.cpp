// Configuration files of 10,000 keys in one section: loading them, and looking keys up in another order than
// theirs. libconfig reads the same keys in its own notation.
#include <strings.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "conf.h"
#include "contender.hpp"
#include "temporary_file.hpp"

#ifdef HAVE_GLIB
#include <glib.h>
#endif
#ifdef HAVE_INIH
#include <INIReader.h>
#endif
#ifdef HAVE_INIPARSER
#include <iniparser/iniparser.h>
#endif
#ifdef HAVE_LIBCONFIG
#include <dlfcn.h>
#include <libconfig.h>
#endif

namespace {

constexpr int kKeys = 10000;
constexpr char kInput[] = "10,000 keys";
constexpr char kLoad[] = "configuration-load";
constexpr char kLookUp[] = "configuration-look-up";

std::string key(int i) {
  return "some_setting_" + std::to_string(i * 7919 % kKeys);
}

const char *ini_file() {
  static const bench::TemporaryFile file([] {
    std::string text = "# a configuration\n[main]\n";
    for (int i = 0; i < kKeys; ++i) {
      text += key(i) + " = value number " + std::to_string(i) + "\n";
    }
    return text;
  }());
  return file.path();
}

// The names to be looked up, each with a prefix.
std::vector<std::string> wanted(const std::string &prefix) {
  std::vector<std::string> names;
  for (int i = 0; i < kKeys; ++i) {
    names.push_back(prefix + key(i));
  }
  std::shuffle(names.begin(), names.end(), std::mt19937(1));
  return names;
}

template <class Load>
void loader(const char *name, Load load) {
  bench::repeated(kLoad, kInput, name, [=] {
    load();
    return 0;
  });
}

// A contender that opens something once and looks all names up in it over and over.
template <class Open, class Find>
void finder(const char *name, const std::string &prefix, Open open, Find find) {
  bench::contender(kLookUp, kInput, name, [=](benchmark::State &state) {
    static auto *const opened = open();  // libconfig takes seconds for it
    const std::vector<std::string> names = wanted(prefix);
    std::size_t i = 0;
    for (auto _ : state) {
      benchmark::DoNotOptimize(find(opened, names[i].c_str()));
      i = i + 1 == names.size() ? 0 : i + 1;
    }
  });
}

void read_lines() {
  std::array<char, 1024> line;
  FILE *stream = std::fopen(ini_file(), "r");
  while (std::fgets(line.data(), static_cast<int>(line.size()), stream) != nullptr) {
    benchmark::DoNotOptimize(line.data());
  }
  std::fclose(stream);
}

const ConfigEntry *walk_to(Config *config, const char *name) {
  const ConfigEntry *entry = Config_GetSection(config, "main")->entries;
  while (entry != nullptr && ::strcasecmp(entry->key, name) != 0) {
    entry = entry->next;
  }
  return entry;
}

void add_own() {
  const auto open = [] { return Config_Open(ini_file()); };
  const auto close = [](Config *config) { Config_Close(config); };
  loader(bench::kOwn, [=] { close(open()); });
  loader("reading lines alone", read_lines);
  finder(bench::kOwn, "", open, [](Config *config, const char *name) {
    return Config_GetEntry(Config_GetSection(config, "main"), name);
  });
  finder("linear strcasecmp", "", open, walk_to);
}

#ifdef HAVE_GLIB
void add_glib() {
  const auto open = [] {
    GKeyFile *keys = g_key_file_new();
    g_key_file_load_from_file(keys, ini_file(), G_KEY_FILE_NONE, nullptr);
    return keys;
  };
  const auto close = [](GKeyFile *keys) { g_key_file_free(keys); };
  loader("GKeyFile", [=] { close(open()); });
  finder("GKeyFile", "", open, [](GKeyFile *keys, const char *name) {
    gchar *value = g_key_file_get_value(keys, "main", name, nullptr);
    benchmark::DoNotOptimize(value);
    g_free(value);
    return 0;
  });
}
#endif

#ifdef HAVE_INIH
void add_inih() {
  const auto open = [] { return new INIReader(ini_file()); };
  const auto close = [](INIReader *reader) { delete reader; };
  loader("inih", [=] { close(open()); });
  finder("inih", "", open,
         [](INIReader *reader, const char *name) { return reader->Get("main", name, "").size(); });
}
#endif

#ifdef HAVE_INIPARSER
void add_iniparser() {
  const auto open = [] { return iniparser_load(ini_file()); };
  const auto close = [](dictionary *loaded) { iniparser_freedict(loaded); };
  loader("iniparser", [=] { close(open()); });
  finder("iniparser", "main:", open,
         [](dictionary *loaded, const char *name) { return iniparser_getstring(loaded, name, nullptr); });
}
#endif

#ifdef HAVE_LIBCONFIG
const char *libconfig_file() {
  static const bench::TemporaryFile file([] {
    std::string text = "# a configuration\nmain: {\n";
    for (int i = 0; i < kKeys; ++i) {
      text += key(i) + " = \"value number " + std::to_string(i) + "\";\n";
    }
    return text + "};\n";
  }());
  return file.path();
}

// Loaded apart from us, because it has functions for its own text buffer that carry the names of ours.
struct Libconfig {
  Libconfig() {
    void *library = ::dlopen("libconfig.so.9", RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
    if (library == nullptr) return;
    init = reinterpret_cast<decltype(init)>(::dlsym(library, "config_init"));
    read_file = reinterpret_cast<decltype(read_file)>(::dlsym(library, "config_read_file"));
    lookup = reinterpret_cast<decltype(lookup)>(::dlsym(library, "config_lookup"));
    destroy = reinterpret_cast<decltype(destroy)>(::dlsym(library, "config_destroy"));
  }

  decltype(&config_init) init = nullptr;
  decltype(&config_read_file) read_file = nullptr;
  decltype(&config_lookup) lookup = nullptr;
  decltype(&config_destroy) destroy = nullptr;
};

void add_libconfig() {
  static const Libconfig libconfig;
  if (libconfig.destroy == nullptr) return;
  const auto open = [] {
    auto *config = new config_t;
    libconfig.init(config);
    libconfig.read_file(config, libconfig_file());
    return config;
  };
  const auto close = [](config_t *config) {
    libconfig.destroy(config);
    delete config;
  };
  loader("libconfig", [=] { close(open()); });
  finder("libconfig", "main.", open,
         [](config_t *config, const char *name) { return libconfig.lookup(config, name); });
}
#endif

[[maybe_unused]] const bool added = [] {
  add_own();
#ifdef HAVE_GLIB
  add_glib();
#endif
#ifdef HAVE_INIH
  add_inih();
#endif
#ifdef HAVE_INIPARSER
  add_iniparser();
#endif
#ifdef HAVE_LIBCONFIG
  add_libconfig();
#endif
  return true;
}();

}  // namespace
