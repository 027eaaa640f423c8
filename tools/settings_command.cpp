// zorvcrt settings: the value of one setting, or the tree as it was loaded.
#include <unistd.h>
#include <zorvcrt.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "arguments.hpp"
#include "levels.hpp"
#include "records.hpp"
#include "terminal.hpp"

namespace tools {

namespace {

struct Setting {
  int32_t level;
  std::string name;
  std::string value;
};

void load_settings() {
  if (QuorConfExists() == 0) {
    throw Failure(std::string("the settings cannot be loaded: ") + std::strerror(errno));
  }
}

std::vector<Setting> settings_in(int32_t mask) {
  std::vector<Setting> settings;
  int32_t level = 0;
  const char *value = nullptr;
  QuorConfStart();
  while (const char *name = QuorConfNext(&level, &value)) {
    if ((level & mask) != 0) settings.push_back({level, name, value});
  }
  return settings;
}

void print_for_people(const std::vector<Setting> &settings) {
  std::size_t width = 0;
  for (const Setting &setting : settings) {
    width = std::max(width, setting.name.size());
  }
  int32_t level = 0;
  for (const Setting &setting : settings) {
    if (setting.level != level) {
      std::printf("%s%s\n", level == 0 ? "" : "\n", bold(stdout, settings_level_name(setting.level)).c_str());
    }
    level = setting.level;
    std::printf("  %-*s  %s\n", static_cast<int>(width), setting.name.c_str(), setting.value.c_str());
  }
}

void print_for_pipes(const std::vector<Setting> &settings) {
  for (const Setting &setting : settings) {
    std::printf("%s\t%s\t%s\n", settings_level_name(setting.level), setting.name.c_str(),
                setting.value.c_str());
  }
}

void print_as_json(const std::vector<Setting> &settings) {
  JsonList list;
  for (const Setting &setting : settings) {
    list.add(JsonRecord()
                 .add("level", settings_level_name(setting.level))
                 .add("name", setting.name)
                 .add("value", setting.value)
                 .take());
  }
  print_json(list.take());
}

void print_all(int32_t mask, bool as_json) {
  const std::vector<Setting> settings = settings_in(mask);
  if (as_json) return print_as_json(settings);
  ::isatty(STDOUT_FILENO) != 0 ? print_for_people(settings) : print_for_pipes(settings);
}

void print_one(const std::string &name, int32_t mask, bool as_json) {
  const char *value = QuorConfQuery(name.c_str(), mask);
  if (value == nullptr) throw Failure(name + " is not set");
  if (as_json) {
    print_json(JsonRecord().add("name", name).add("value", value).take());
  } else {
    std::printf("%s\n", value);
  }
}

constexpr std::array kOptions = {
    Option{"--level", "", "privileged|group|nonprivileged|all", "the level that is asked, all by default"},
    kOutputOption};

int run(const Arguments &arguments) {
  arguments.require_operands(0, 1);
  const int32_t mask = settings_mask(arguments.value("--level").value_or("all"));
  load_settings();
  if (arguments.operands().empty()) {
    print_all(mask, arguments.wants_json());
  } else {
    print_one(arguments.operands().front(), mask, arguments.wants_json());
  }
  return kSuccess;
}

}  // namespace

const Command kSettingsCommand = {
    "settings",
    "[NAME]",
    "print one setting or all of them",
    kOptions,
    "With NAME prints its value as a host gets it: from the environment first when the level is\n"
    "nonprivileged or all, else from the highest level that has it. Exit status 1 when it is not set.\n"
    "Without NAME lists the settings as they were loaded, in columns on a terminal, otherwise one\n"
    "line each of level, name and value with tabs between them.\n",
    run};

}  // namespace tools
