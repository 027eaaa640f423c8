// Configuration files said again over strings: sections and entries in lists, looked up from the front.
#pragma once

#include <strings.h>

#include <cctype>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "check.hpp"
#include "conf.h"
#include "support/plain_text.hpp"

namespace plain {

inline bool is_same(const std::string &a, const std::string &b) {
  return ::strcasecmp(a.c_str(), b.c_str()) == 0;
}

struct Section {
  std::string name;
  std::vector<std::pair<std::string, std::string>> entries;

  std::string *find(const std::string &key) {
    for (auto &[known, value] : entries) {
      if (is_same(known, key)) return &value;
    }
    return nullptr;
  }
  void set(const std::string &key, const std::string &value) {
    if (std::string *known = find(key)) {
      *known = value;
    } else {
      entries.insert(entries.begin(), {key, value});
    }
  }
};

struct Configuration {
  std::vector<Section> sections{{"", {}}};

  explicit Configuration(const std::string &file) {
    constexpr std::size_t kPiece = 1023;
    for (std::size_t start = 0; start < file.size();) {
      const std::size_t end = std::min(file.find('\n', start), file.size() - 1);
      const std::size_t size = std::min(end - start + 1, kPiece);
      add_line(trimmed(file.substr(start, size).c_str()));
      start += size;
    }
  }

  void add_line(std::string line) {
    if (line.empty() || line[0] == '#' || line[0] == ';' || line[0] == '\'' || line.substr(0, 2) == "//")
      return;
    const std::size_t equals = line.find('=');
    if (line[0] == '[') {
      line = line.substr(1, line.rfind(']') == std::string::npos ? std::string::npos : line.rfind(']') - 1);
      sections.push_back({line, {}});
    } else if (equals == std::string::npos) {
      sections.back().entries.emplace_back(line, "");
    } else {
      sections.back().entries.emplace_back(trimmed(line.substr(0, equals)), trimmed(line.substr(equals + 1)));
    }
  }

  Section *find(const std::string &name) {
    if (name.empty()) return &sections[0];
    for (std::size_t i = 1; i < sections.size(); ++i) {
      if (is_same(sections[i].name, name)) return &sections[i];
    }
    return nullptr;
  }

  void merge(const Configuration &file) {
    for (const Section &section : file.sections) {
      Section *own = find(section.name);
      if (own == nullptr) {
        sections.push_back(section);
        continue;
      }
      for (const auto &[key, value] : section.entries) {
        if (std::string *known = own->find(key)) *known = value;
      }
    }
  }
};

/// One line per section and entry.
inline std::vector<std::string> lines(const Configuration &configuration) {
  std::vector<std::string> all;
  for (const Section &section : configuration.sections) {
    all.push_back('[' + section.name);
    for (const auto &[key, value] : section.entries) {
      all.push_back(key + '=' + value);
    }
  }
  return all;
}

inline std::vector<std::string> lines(const Config &config) {
  std::vector<std::string> all;
  for (const ConfigSection *section = config.sections; section != nullptr; section = section->next) {
    all.push_back(std::string("[") + section->name);
    for (const ConfigEntry *entry = section->entries; entry != nullptr; entry = entry->next) {
      all.push_back(std::string(entry->key) + '=' + entry->value);
    }
  }
  return all;
}

inline std::string lowered(std::string text) {
  for (char &c : text) {
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return text;
}

/// Compares the lists, and that every name is found where the first of its kind stands.
inline void compare(const Config &config, const Configuration &model) {
  fuzz::check_equal(lines(config), lines(model), "sections and entries");
  std::map<std::string, ConfigSection *> sections;
  for (ConfigSection *section = config.sections; section != nullptr; section = section->next) {
    ConfigSection *first = sections.emplace(lowered(section->name), section).first->second;
    fuzz::check(Config_GetSection(&config, section->name) == first, "the first section of a name is found");
    std::map<std::string, ConfigEntry *> entries;
    for (ConfigEntry *entry = section->entries; entry != nullptr; entry = entry->next) {
      ConfigEntry *first_entry = entries.emplace(lowered(entry->key), entry).first->second;
      fuzz::check(Config_GetEntry(section, entry->key) == first_entry, "the first entry of a key is found");
    }
  }
}

}  // namespace plain
