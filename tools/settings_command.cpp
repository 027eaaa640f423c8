// zorvcrt settings: the value of one setting, or the tree as it was loaded.
#include <unistd.h>
#include <zorvcrt.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "arguments.hpp"
#include "levels.hpp"

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
      std::printf("%s%s\n", level == 0 ? "" : "\n", settings_level_name(setting.level));
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

int run(const Words &words) {
  const Arguments arguments(words, {}, {"--level"});
  arguments.require_operands(0, 1);
  const int32_t mask = settings_mask(arguments.value("--level").value_or("all"));
  load_settings();
  if (arguments.operands().empty()) {
    ::isatty(STDOUT_FILENO) != 0 ? print_for_people(settings_in(mask)) : print_for_pipes(settings_in(mask));
    return kSuccess;
  }
  const std::string &name = arguments.operands().front();
  const char *value = QuorConfQuery(name.c_str(), mask);
  if (value == nullptr) throw Failure(name + " is not set");
  std::printf("%s\n", value);
  return kSuccess;
}

}  // namespace

const Command kSettingsCommand = {
    "settings", "[NAME] [--level privileged|group|nonprivileged|all]", "print one setting or all of them",
    "With NAME prints its value as a host gets it: from the environment first when the level is\n"
    "nonprivileged or all, else from the highest level that has it. Exit status 1 when it is not set.\n"
    "Without NAME lists the settings as they were loaded, in columns on a terminal, otherwise one\n"
    "line each of level, name and value with tabs between them.\n",
    run};

}  // namespace tools
