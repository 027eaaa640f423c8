// A configuration file, then changes to it and values cut into parts, against lists of strings. The file lies
// in memory and has a name below /proc.
#include <sys/mman.h>
#include <unistd.h>

#include "conf.h"
#include "input.hpp"
#include "plain_configuration.hpp"

namespace {

class MemoryFile {
 public:
  MemoryFile() : descriptor_(::memfd_create("conf", MFD_CLOEXEC)) {}
  ~MemoryFile() { ::close(descriptor_); }
  MemoryFile(const MemoryFile &) = delete;
  MemoryFile &operator=(const MemoryFile &) = delete;

  void write(const std::string &text) const {
    const bool written = ::ftruncate(descriptor_, 0) == 0 && ::pwrite(descriptor_, text.data(), text.size(),
                                                                      0) == static_cast<ssize_t>(text.size());
    fuzz::check(written, "the file is written");
  }
  [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

using Parts = std::vector<std::string>;

Parts plain_parts(const std::string &value, char separator) {
  Parts parts;
  std::string part;
  for (std::size_t i = 0; i <= value.size(); ++i) {
    if (i < value.size() && value[i] != separator) {
      part += value[i];
      continue;
    }
    part = plain::trimmed(plain::trimmed(part).substr(0, 2047));
    if (!part.empty()) parts.push_back(part);
    part.clear();
  }
  return parts;
}

int32_t take_part(void *parts, const char *part) {
  static_cast<Parts *>(parts)->emplace_back(part);
  return 0;
}

// "section|key|value" sets an entry, "section|key" looks it up.
void change(Config *config, plain::Configuration &model, const std::string &line) {
  fuzz::Input fields(reinterpret_cast<const uint8_t *>(line.data()), line.size());
  const std::string name = fields.until('|');
  const std::string key = fields.until('|');
  ConfigSection *section = Config_GetSection(config, name.c_str());
  plain::Section *expected = model.find(name);
  fuzz::check_equal(section == nullptr, expected == nullptr, "section missing");
  if (section == nullptr) return;
  if (!fields.is_empty()) {
    const std::string value = fields.rest();
    fuzz::check_equal(Config_SetEntry(section, key.c_str(), value.c_str()), 0, "setting an entry");
    expected->set(key, value);
  }
  const ConfigEntry *entry = Config_GetEntry(section, key.c_str());
  const std::string *expected_value = expected->find(key);
  fuzz::check_equal(entry == nullptr, expected_value == nullptr, "entry missing");
  if (entry != nullptr) fuzz::check_equal(std::string(entry->value), *expected_value, "value");
}

void check_parts(const Config &config, char separator) {
  for (const ConfigSection *section = config.sections; section != nullptr; section = section->next) {
    for (const ConfigEntry *entry = section->entries; entry != nullptr; entry = entry->next) {
      Parts parts;
      fuzz::check_equal(Config_TokenizeValue(entry, separator, take_part, &parts), 0, "cutting a value");
      fuzz::check_equal(parts, plain_parts(entry->value, separator), "parts of a value");
    }
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  static const MemoryFile file;
  fuzz::Input input(data, size);
  const auto separator = static_cast<char>(input.byte());
  const std::string text = input.part();
  file.write(text);
  Config *config = Config_Open(file.path().c_str());
  plain::Configuration model(text);
  plain::compare(*config, model);
  while (!input.is_empty()) {
    change(config, model, fuzz::c_text(input.line()));
  }
  plain::compare(*config, model);
  check_parts(*config, separator);
  Config_Close(config);
  return 0;
}
