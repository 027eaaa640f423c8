// The words behind a command's name, told apart into options and operands.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>

#include "command.hpp"

namespace tools {

/// Options may stand anywhere; "--" ends them, "-" and what does not begin with '-' are operands.
/// A value is the next word or follows a '='. Throws Misuse for an unknown option, a missing value and one
/// that is not among the option's choices.
class Arguments {
 public:
  Arguments(const Words &words, std::span<const Option> options);

  /// Asked by the option's long name, also when its letter was given.
  [[nodiscard]] bool has(const std::string &option) const { return values_.contains(option); }
  [[nodiscard]] std::optional<std::string> value(const std::string &option) const;
  [[nodiscard]] const Words &operands() const { return operands_; }
  /// Whether kOutputOption asks for JSON.
  [[nodiscard]] bool wants_json() const { return value(kOutputOption.name) == "json"; }

  /// Throws Misuse unless there are between @p least and @p most operands.
  void require_operands(std::size_t least, std::size_t most) const;

 private:
  std::map<std::string, std::string> values_;
  Words operands_;
};

/// The decimal number that a word is. Throws Misuse, "'WORD' is no KIND", for anything else.
int32_t number_of(const std::string &word, const char *kind, int32_t least = INT32_MIN,
                  int32_t most = INT32_MAX);

}  // namespace tools
