// Parsing of options, operands and numbers.
#include "arguments.hpp"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <string_view>

namespace tools {

namespace {

const Option &option_named(std::span<const Option> options, const std::string &name) {
  const auto found = std::find_if(options.begin(), options.end(), [&](const Option &option) {
    return name == option.name || name == option.letter;
  });
  if (found == options.end()) throw Misuse("unknown option " + name);
  return *found;
}

// Choices are separated by '|'; a value without one is free.
void require_choice(const Option &option, const std::string &value) {
  const std::string choices = option.value;
  if (choices.find('|') == std::string::npos) return;
  const bool is_one = value.find('|') == std::string::npos &&
                      ("|" + choices + "|").find("|" + value + "|") != std::string::npos;
  if (!is_one) {
    throw Misuse("option " + std::string(option.name) + " takes " + choices + ", not '" + value + "'");
  }
}

}  // namespace

Arguments::Arguments(const Words &words, std::span<const Option> options) {
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
    const Option &option = option_named(options, word.substr(0, equals));
    std::string value;
    if (*option.value == '\0') {
      if (equals != std::string::npos) throw Misuse("option " + word.substr(0, equals) + " takes no value");
    } else if (equals != std::string::npos) {
      value = word.substr(equals + 1);
    } else if (++i < words.size()) {
      value = words[i];
    } else {
      throw Misuse("option " + word + " needs a value");
    }
    require_choice(option, value);
    values_[option.name] = value;
  }
}

std::optional<std::string> Arguments::value(const std::string &option) const {
  const auto found = values_.find(option);
  return found == values_.end() ? std::nullopt : std::optional(found->second);
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
