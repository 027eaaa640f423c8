// Parsing of options, operands and numbers.
#include "arguments.hpp"

#include <algorithm>
#include <charconv>
#include <cstddef>

namespace tools {

namespace {

bool contains(std::initializer_list<const char *> names, const std::string &name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

Arguments::Arguments(const Words &words, std::initializer_list<const char *> flags,
                     std::initializer_list<const char *> valued) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string &word = words[i];
    if (word == "--") {
      operands_.insert(operands_.end(), words.begin() + static_cast<std::ptrdiff_t>(i) + 1, words.end());
      return;
    }
    if (word.size() < 2 || word[0] != '-') {
      operands_.push_back(word);
      continue;
    }
    const std::size_t equals = word.starts_with("--") ? word.find('=') : std::string::npos;
    const std::string name = word.substr(0, equals);
    if (contains(flags, name)) {
      if (equals != std::string::npos) throw Misuse("option " + name + " takes no value");
      options_[name] = "";
    } else if (!contains(valued, name)) {
      throw Misuse("unknown option " + name);
    } else if (equals != std::string::npos) {
      options_[name] = word.substr(equals + 1);
    } else if (++i < words.size()) {
      options_[name] = words[i];
    } else {
      throw Misuse("option " + name + " needs a value");
    }
  }
}

std::optional<std::string> Arguments::value(const std::string &option) const {
  const auto found = options_.find(option);
  return found == options_.end() ? std::nullopt : std::optional(found->second);
}

void Arguments::require_operands(std::size_t least, std::size_t most) const {
  if (operands_.size() < least) throw Misuse("too few arguments");
  if (operands_.size() > most) throw Misuse("unexpected argument '" + operands_[most] + "'");
}

int32_t number_of(const std::string &word, const char *kind, int32_t least, int32_t most) {
  int32_t number = 0;
  const char *const end = word.data() + word.size();
  const auto [stop, error] = std::from_chars(word.data(), end, number);
  if (error != std::errc() || stop != end || number < least || number > most) {
    throw Misuse("'" + word + "' is no " + kind);
  }
  return number;
}

}  // namespace tools
