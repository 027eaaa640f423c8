// The exports of the JSON room in two halves: those of the scanner and all others.
#pragma once

#include <set>
#include <string>

#include "exported_names.hpp"

namespace faults {

inline bool is_scanner_name(const std::string &name) {
  static const std::set<std::string> kOthers = {"zjson_debug", "zjson_error", "zjson_parse",
                                                "zjson_str_escape"};
  return name.rfind("zjson_", 0) == 0 && kOthers.count(name) == 0;
}

inline std::set<std::string> json_names(bool of_the_scanner) {
  std::set<std::string> names;
  for (const std::string &name : exported_names("json")) {
    if (is_scanner_name(name) == of_the_scanner) names.insert(name);
  }
  return names;
}

}  // namespace faults
