// zorvcrt conf: what a configuration file holds, as a host gets to see it.
#include <zorvcrt.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "arguments.hpp"
#include "owner.hpp"

namespace tools {

namespace {

void print_entries(const ConfigSection &section) {
  for (const ConfigEntry *entry = section.entries; entry != nullptr; entry = entry->next) {
    std::printf("%s = %s\n", entry->key, entry->value);
  }
}

int print_all(const Config &config) {
  for (const ConfigSection *section = config.sections; section != nullptr; section = section->next) {
    if (section != config.sections) std::printf("[%s]\n", section->name);
    print_entries(*section);
  }
  return kSuccess;
}

int print_section(const Config &config, const std::string &name, const std::string *key) {
  const ConfigSection *section = Config_GetSection(&config, name.c_str());
  if (section == nullptr) throw Failure("no section '" + name + "'");
  if (key == nullptr) {
    print_entries(*section);
    return kSuccess;
  }
  const ConfigEntry *entry = Config_GetEntry(section, key->c_str());
  if (entry == nullptr) throw Failure("no entry '" + *key + "' in section '" + name + "'");
  std::printf("%s\n", entry->value);
  return kSuccess;
}

// A folder would read as an empty file.
void require_file(const std::string &path) {
  ZfxFileStatus status;
  const bool exists = ZfxStatFile(&status, path.c_str()) == 0;
  if (exists && (status.flags & ZFX_FILE_DIRECTORY) != 0) throw Failure(path + ": " + std::strerror(EISDIR));
}

int run(const Words &words) {
  const Arguments arguments(words, {"--dir"}, {});
  arguments.require_operands(1, 3);
  const Words &operands = arguments.operands();
  require_file(operands[0]);
  // A folder in ConfigDir counts from the folder in the name of the file, so the name gets one.
  const bool has_folder = operands[0].find('/') != std::string::npos;
  const std::string path = has_folder ? operands[0] : "./" + operands[0];
  const Owner<Config> config(Config_Open(path.c_str()));
  if (!config) throw Failure(operands[0] + ": " + std::strerror(errno));
  if (arguments.has("--dir") && Config_DirOpen(config.get(), nullptr, nullptr) != 0) {
    throw Failure(operands[0] + ": no folder that ConfigDir names can be opened");
  }
  if (operands.size() == 1) return print_all(*config);
  return print_section(*config, operands[1], operands.size() == 3 ? &operands[2] : nullptr);
}

}  // namespace

const Command kConfCommand = {
    "conf", "FILE [SECTION [KEY]] [--dir]", "print a configuration file, one section or one value",
    "SECTION        a name in any case; \"\" is the unnamed section in front of the first header\n"
    "KEY            prints the value of the first entry of that key\n"
    "--dir          merges the \"*.conf\" files of the folder that the entry ConfigDir names first\n",
    run};

}  // namespace tools
