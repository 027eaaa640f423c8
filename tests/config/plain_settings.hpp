// A plain restatement of the format of settings files, against which the reader is compared.
#pragma once

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace plain {

inline constexpr std::size_t kLine = 2047;
inline constexpr std::size_t kValue = 1023;
inline constexpr char kBlanks[] = " \t\n\v\f\r";

inline std::string trim_front(const std::string &text) {
  const std::size_t start = text.find_first_not_of(kBlanks);
  return start == std::string::npos ? "" : text.substr(start);
}

inline std::string trim_back(const std::string &text) {
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

class Settings {
 public:
  /// Tells whether the caller is a member of one of the groups in a list.
  using Membership = bool (*)(const std::string &names);
  explicit Settings(Membership is_member = [](const std::string &) { return false; })
      : is_member_(is_member) {}

  /// Reads one more file; its first lines are non-privileged again.
  void read(const std::string &file) {
    level_ = 4;
    for (std::size_t start = 0; start < file.size();) {
      const std::size_t end = std::min(file.find('\n', start), file.size() - 1);
      const std::size_t size = std::min(end - start + 1, kLine);
      read_line(file.substr(start, size).c_str());
      start += size;
    }
  }

  struct Entry {
    int32_t level;
    std::string name;
    std::string value;
  };
  [[nodiscard]] std::vector<Entry> entries() const {
    std::vector<Entry> all;
    for (const auto &[level, items] : levels_) {
      for (const auto &[name, value] : items) {
        all.push_back({level, name, value});
      }
    }
    return all;
  }

 private:
  void read_line(std::string line) {
    if (!line.empty() && line.back() == '\n') line.pop_back();
    if (!line.empty() && line.back() == '\r') line.pop_back();
    line = trim_front(line);
    if (line.empty() || line[0] == '#') return;
    if (line[0] == '[') return read_header(line);
    if (line.find('=') == std::string::npos || level_ == 0) return;
    if (line.find('#') != std::string::npos) line = trim_back(line.substr(0, line.find('#')));
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos) return;
    store(trim_back(line.substr(0, equals)), expand(trim_front(line.substr(equals + 1))));
  }

  void read_header(std::string line) {
    std::size_t stop = 0;
    while (stop < line.size() && line[stop] != ']' && line[stop] != ':') {
      line[stop] = static_cast<char>(std::toupper(static_cast<unsigned char>(line[stop])));
      ++stop;
    }
    if (stop == line.size()) return;
    if (line.compare(0, 12, "[PRIVILEGED]") == 0) {
      level_ = 1;
    } else if (line.compare(0, 15, "[NONPRIVILEGED]") == 0) {
      level_ = 4;
    } else if (line.compare(0, 6, "[GROUP") == 0 && line[stop] == ':') {
      const std::size_t end = line.find(']', stop);
      if (end != std::string::npos) level_ = is_member_(line.substr(stop + 1, end - stop - 1)) ? 2 : 0;
    }
  }

  void store(const std::string &name, const std::string &value) {
    auto &items = levels_[level_];
    const auto item =
        std::find_if(items.begin(), items.end(), [&](const auto &i) { return i.first == name; });
    if (item == items.end()) {
      if (!value.empty()) items.emplace_back(name, value);
    } else if (value.empty()) {
      items.erase(item);
    } else {
      item->second = value;
    }
  }

  [[nodiscard]] std::string look_up(const std::string &name) const {
    for (auto level = levels_.rbegin(); level != levels_.rend(); ++level) {
      for (const auto &[known, value] : level->second) {
        if (known == name) return value;
      }
    }
    const char *value = std::getenv(name.c_str());
    return value == nullptr ? "" : value;
  }

  // In one area of the size, in place.
  [[nodiscard]] std::string expand(std::string text) const {
    text.resize(std::min(text.size(), kValue));
    std::size_t position = 0;
    while ((position = text.find('$', position)) != std::string::npos) {
      const bool braced = text.compare(position + 1, 1, "{") == 0;
      const std::size_t start = position + (braced ? 2 : 1);
      std::size_t end = start;
      while (end < text.size() &&
             (std::isalnum(static_cast<unsigned char>(text[end])) != 0 || text[end] == '_')) {
        ++end;
      }
      if (end == start || (braced && text.compare(end, 1, "}") != 0)) {
        position = end;
        continue;
      }
      const std::string value = look_up(text.substr(start, end - start));
      text.replace(position, end + (braced ? 1 : 0) - position, value);
      position += value.size();
      text.resize(std::min(text.size(), kValue));
    }
    return text;
  }

  Membership is_member_;
  int32_t level_ = 4;
  std::map<int32_t, std::vector<std::pair<std::string, std::string>>> levels_;
};

}  // namespace plain
