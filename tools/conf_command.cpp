// zorvcrt conf: what a configuration file holds, as a host gets to see it.
#include <sys/mman.h>
#include <unistd.h>
#include <zorvcrt.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "arguments.hpp"
#include "owner.hpp"
#include "records.hpp"
#include "streams.hpp"

namespace tools {

namespace {

void print_entries(const ConfigSection &section) {
  for (const ConfigEntry *entry = section.entries; entry != nullptr; entry = entry->next) {
    std::printf("%s = %s\n", entry->key, entry->value);
  }
}

void print_all(const Config &config) {
  for (const ConfigSection *section = config.sections; section != nullptr; section = section->next) {
    if (section != config.sections) std::printf("[%s]\n", section->name);
    print_entries(*section);
  }
}

JsonValue as_json(const ConfigEntry &entry) {
  return JsonRecord().add("key", entry.key).add("value", entry.value).take();
}

JsonValue as_json(const ConfigSection &section) {
  JsonList entries;
  for (const ConfigEntry *entry = section.entries; entry != nullptr; entry = entry->next) {
    entries.add(as_json(*entry));
  }
  return JsonRecord().add("section", section.name).add("entries", entries.take()).take();
}

JsonValue as_json(const Config &config) {
  JsonList sections;
  for (const ConfigSection *section = config.sections; section != nullptr; section = section->next) {
    sections.add(as_json(*section));
  }
  return sections.take();
}

const ConfigSection &section_named(const Config &config, const std::string &name) {
  const ConfigSection *section = Config_GetSection(&config, name.c_str());
  if (section == nullptr) throw Failure("no section '" + name + "'");
  return *section;
}

const ConfigEntry &entry_named(const ConfigSection &section, const std::string &key) {
  const ConfigEntry *entry = Config_GetEntry(&section, key.c_str());
  if (entry == nullptr) throw Failure("no entry '" + key + "' in section '" + section.name + "'");
  return *entry;
}

void print(const Config &config, const Words &wanted, bool wants_json) {
  if (wanted.empty()) {
    wants_json ? print_json(as_json(config)) : print_all(config);
    return;
  }
  const ConfigSection &section = section_named(config, wanted[0]);
  if (wanted.size() == 1) {
    wants_json ? print_json(as_json(section)) : print_entries(section);
    return;
  }
  const ConfigEntry &entry = entry_named(section, wanted[1]);
  wants_json ? print_json(as_json(entry)) : static_cast<void>(std::printf("%s\n", entry.value));
}

// The library opens files by name: what comes on standard input is put into one that has only a number.
struct Copy {
  explicit Copy(Input &input) : descriptor(::memfd_create("conf", MFD_CLOEXEC)) {
    std::array<char, 65536> block;
    for (std::size_t count = 0; (count = input.read(block.data(), block.size())) > 0;) {
      if (::write(descriptor, block.data(), count) != static_cast<ssize_t>(count)) {
        throw Failure(input.name() + ": " + std::strerror(errno));
      }
    }
  }
  ~Copy() { ::close(descriptor); }
  Copy(const Copy &) = delete;
  Copy &operator=(const Copy &) = delete;
  [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor); }

  int descriptor;
};

Owner<Config> config_from_standard_input() {
  Input input("-", Input::Meanwhile::kNothing);
  const Copy copy(input);
  return Owner<Config>(Config_Open(copy.path().c_str()));
}

// A folder would read as an empty file.
void require_file(const std::string &path) {
  ZfxFileStatus status;
  const bool exists = ZfxStatFile(&status, path.c_str()) == 0;
  if (exists && (status.flags & ZFX_FILE_DIRECTORY) != 0) throw Failure(path + ": " + std::strerror(EISDIR));
}

Owner<Config> config_from_file(const std::string &file) {
  require_file(file);
  // A folder in ConfigDir counts from the folder in the name of the file, so the name gets one.
  const bool has_folder = file.find('/') != std::string::npos;
  return Owner<Config>(Config_Open((has_folder ? file : "./" + file).c_str()));
}

constexpr std::array kOptions = {
    Option{"--dir", "", "", "first merge the \"*.conf\" files of the folder that the entry ConfigDir names"},
    kOutputOption};

int run(const Arguments &arguments) {
  arguments.require_operands(1, 3);
  const std::string &file = arguments.operands()[0];
  const bool is_standard_input = file == "-";
  if (is_standard_input && arguments.has("--dir")) throw Misuse("--dir needs a file with a name");
  const Owner<Config> config(is_standard_input ? config_from_standard_input() : config_from_file(file));
  if (!config) throw Failure(file + ": " + std::strerror(errno));
  if (arguments.has("--dir") && Config_DirOpen(config.get(), nullptr, nullptr) != 0) {
    throw Failure(file + ": no folder that ConfigDir names can be opened");
  }
  print(*config, Words(arguments.operands().begin() + 1, arguments.operands().end()), arguments.wants_json());
  return kSuccess;
}

}  // namespace

const Command kConfCommand = {
    "conf",
    "FILE [SECTION [KEY]]",
    "print a configuration file, one section or one value",
    kOptions,
    "FILE - stands for standard input. SECTION is a name in any case; \"\" is the unnamed section in front\n"
    "of the first header. KEY prints the value of the first entry of that key.\n",
    run};

}  // namespace tools
