// The names that the library exports, as src/exports.map lists them.
#pragma once

#include <fstream>
#include <map>
#include <set>
#include <string>

namespace faults {

/// The names by room.
inline std::map<std::string, std::set<std::string>> exported_names() {
  std::ifstream file(ZORVCRT_SOURCE_DIR "/src/exports.map");
  std::map<std::string, std::set<std::string>> names;
  std::string room;
  for (std::string line; std::getline(file, line);) {
    const std::size_t start = line.find_first_not_of(' ');
    if (start != 4) continue;
    if (line[start] == '#') {
      room = line.substr(start + 2);
    } else if (line.back() == ';' && line[start] != '*') {
      names[room].insert(line.substr(start, line.size() - start - 1));
    }
  }
  return names;
}

inline std::set<std::string> exported_names(const std::string &room) {
  return exported_names()[room];
}

}  // namespace faults
