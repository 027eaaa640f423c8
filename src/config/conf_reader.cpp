// Reading a configuration file line by line.
#include <array>
#include <cstdio>

#include "conf_tree.hpp"
#include "fixed_text.hpp"
#include "handles.hpp"
#include "whitespace.hpp"

namespace zorvcrt {

namespace {

constexpr int kLineArea = 1024;  // a line is read in pieces of one byte less

bool is_comment(std::string_view line) {
  if (line[0] == '/') return line.size() > 1 && line[1] == '/';
  return line[0] == '#' || line[0] == ';' || line[0] == '\'';
}

// The text behind '[', up to the last ']' if there is one.
std::string_view section_name(std::string_view header) {
  header.remove_prefix(1);
  const std::size_t bracket = header.rfind(']');
  if (bracket != std::string_view::npos) header.remove_suffix(header.size() - bracket);
  return header;
}

bool add_entry(Section &section, std::string_view line) {
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) return append_entry(section, line, "") != nullptr;
  const std::string_view key = trimmed_back({line.data(), equals});
  const std::string_view value = trimmed_front({line.data() + equals + 1, line.size() - equals - 1});
  return append_entry(section, key, value) != nullptr;
}

// Takes one trimmed line; false when memory is short.
bool add_line(Configuration &configuration, std::string_view line) {
  if (line.empty() || is_comment(line)) return true;
  if (line[0] == '[') return append_section(configuration, section_name(line)) != nullptr;
  return add_entry(*configuration.last, line);
}

bool read_lines(Configuration &configuration, FILE *file) {
  std::array<char, kLineArea> area;
  while (::fgets_unlocked(area.data(), kLineArea, file) != nullptr) {
    if (!add_line(configuration, trimmed(area.data()))) return false;
  }
  return true;
}

}  // namespace

Configuration *read_configuration(const char *file_name) {
  const UniqueFile file(std::fopen(file_name, "re"));
  return read_configuration(file_name, file.get());
}

Configuration *read_configuration(const char *file_name, FILE *file) {
  if (file == nullptr) return nullptr;
  Configuration *configuration = new_configuration(file_name);
  if (configuration == nullptr || read_lines(*configuration, file)) return configuration;
  delete_configuration(configuration);
  return nullptr;
}

}  // namespace zorvcrt
