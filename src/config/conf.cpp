// The exported configuration family: opening, looking up, setting and splitting values.
#include "conf.h"

#include <array>
#include <cstdlib>
#include <cstring>

#include "NextToken.h"
#include "conf_tree.hpp"
#include "handles.hpp"
#include "whitespace.hpp"

namespace {

using zorvcrt::Configuration;
using zorvcrt::Entry;
using zorvcrt::Section;

constexpr int32_t kTokenArea = 2048;

// The next field that is not empty. The tokenizer would hand it out joined with what stands in front of it,
// and where that alone is longer than a token, without the field.
const char *without_empty_fields(const char *text, char separator) {
  while (*text != '\0' && (*text == separator || zorvcrt::is_space(*text))) {
    ++text;
  }
  return text;
}

}  // namespace

Config *Config_Open(const char *file_name) {
  return file_name == nullptr ? nullptr : zorvcrt::read_configuration(file_name);
}

void Config_Close(Config *config) {
  if (config != nullptr) zorvcrt::delete_configuration(static_cast<Configuration *>(config));
}

ConfigSection *Config_GetSection(const Config *config, const char *name) {
  if (config == nullptr) return nullptr;
  return zorvcrt::find_section(*static_cast<const Configuration *>(config), name == nullptr ? "" : name);
}

ConfigEntry *Config_GetEntry(const ConfigSection *section, const char *key) {
  if (section == nullptr || key == nullptr) return nullptr;
  return zorvcrt::find_entry(*static_cast<const Section *>(section), key);
}

int32_t Config_SetEntry(ConfigSection *section, const char *key, const char *value) {
  if (section == nullptr || key == nullptr) return -1;
  auto &own = *static_cast<Section *>(section);
  if (value == nullptr) value = "";
  Entry *entry = zorvcrt::find_entry(own, key);
  const bool done = entry != nullptr ? zorvcrt::set_value(own, *entry, value)
                                     : zorvcrt::prepend_entry(own, key, value) != nullptr;
  return done ? 0 : -1;
}

int32_t Config_TokenizeValue(const ConfigEntry *entry, char separator, ConfigTokenCallback callback,
                             void *user_data) {
  if (entry == nullptr || callback == nullptr) return -1;
  const zorvcrt::UniqueMalloc<char> value(::strdup(entry->value));
  if (!value) return -1;
  std::array<char, kTokenArea> area;
  // Each call begins at what is left, so that a long value is not walked again for every token of it.
  const char *rest = without_empty_fields(value.get(), separator);
  while (*rest != '\0') {
    int32_t taken = 0;
    ZfxNextToken(rest, separator, area.data(), kTokenArea, &taken);
    callback(user_data, area.data());
    rest = without_empty_fields(rest + taken, separator);
  }
  return 0;
}
