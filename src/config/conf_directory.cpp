// Merging a folder of "*.conf" files into a configuration.
#include <strings.h>

#include <climits>
#include <cstdio>
#include <cstring>

#include "conf.h"
#include "conf_tree.hpp"
#include "fixed_text.hpp"
#include "handles.hpp"
#include "regular_file.hpp"

namespace {

using zorvcrt::Configuration;
using zorvcrt::Entry;
using zorvcrt::Section;

constexpr char kDefaultKey[] = "ConfigDir";
constexpr char kSuffix[] = ".conf";
constexpr std::size_t kSectionNameArea = 64;
constexpr std::size_t kFolderArea = 2048;
constexpr std::size_t kPathArea = kFolderArea + 1 + NAME_MAX;

using Folder = zorvcrt::FixedText<kFolderArea>;

Folder folder_of(const Config &config, std::string_view value) {
  if (value.starts_with('/')) return Folder(value);
  const std::string_view file_name = config.file_name;
  const std::size_t slash = file_name.rfind('/');
  Folder folder({file_name.data(), slash == std::string_view::npos ? file_name.size() : slash + 1});
  return folder.append('/').append(value);
}

bool is_configuration_name(const char *name) {
  const char *suffix = std::strrchr(name, '.');
  return suffix != nullptr && ::strcasecmp(suffix, kSuffix) == 0;
}

// Replaces what the target has, and adds nothing to it.
void override_entries(Section &target, const Section &source) {
  for (Entry *entry = source.first(); entry != nullptr; entry = entry->next_node()) {
    Entry *own = zorvcrt::find_entry(target, entry->key);
    if (own != nullptr) zorvcrt::set_value(target, *own, entry->value);
  }
}

// Merges the sections of a file one after the other; those that are new to the configuration move over to it.
void __merge_sections(Configuration &configuration, Configuration &file) {
  ConfigSection **link = &file.sections;
  bool moved = false;
  while (*link != nullptr) {
    auto *section = static_cast<Section *>(*link);
    Section *target = zorvcrt::find_section(configuration, section->name);
    if (target != nullptr) {
      override_entries(*target, *section);
      link = &section->next;
    } else {
      *link = section->next;
      zorvcrt::append_foreign_section(configuration, *section);
      moved = true;
    }
  }
  if (moved) configuration.arena.adopt(file.arena);
}

void merge_file(Configuration &configuration, const char *path) {
  const zorvcrt::UniqueFile opened = zorvcrt::open_regular_file(path);
  Configuration *file = zorvcrt::read_configuration(path, opened.get());
  if (file == nullptr) return;
  // A part of a file is not merged: what a later merge would have to add it could not add any more.
  if (std::ferror(opened.get()) == 0) __merge_sections(configuration, *file);
  zorvcrt::delete_configuration(file);
}

bool merge_folder(Configuration &configuration, const Folder &folder) {
  const zorvcrt::UniqueDirectory directory(::opendir(folder.c_str()));
  if (!directory) return false;
  while (const dirent *listed = ::readdir(directory.get())) {
    if (!is_configuration_name(listed->d_name)) continue;
    zorvcrt::FixedText<kPathArea> path(folder.view());
    path.append('/').append(listed->d_name);
    merge_file(configuration, path.c_str());
  }
  return true;
}

bool is_missing(const char *name) {
  return name == nullptr || *name == '\0';
}

}  // namespace

int32_t Config_DirOpen(Config *config, const char *section_name, const char *key_name) {
  const zorvcrt::FixedText<kSectionNameArea> name(zorvcrt::view_of(section_name));
  const ConfigSection *section = Config_GetSection(config, name.c_str());
  const ConfigEntry *entry = Config_GetEntry(section, is_missing(key_name) ? kDefaultKey : key_name);
  if (entry == nullptr) return -1;
  return merge_folder(*static_cast<Configuration *>(config), folder_of(*config, entry->value)) ? 0 : -1;
}
