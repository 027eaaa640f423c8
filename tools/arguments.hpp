// The words behind a command's name, told apart into options and operands.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>

#include "command.hpp"

namespace tools {

/// Options may stand anywhere; "--" ends them, "-" and what does not begin with '-' are operands.
/// A value is the next word or follows a '='. Throws Misuse for an unknown option or a missing value.
class Arguments {
 public:
  /// @param words   the words behind the command's name
  /// @param flags   names of options without a value ("--decode", "-d")
  /// @param valued  names of options with a value ("--level")
  Arguments(const Words &words, std::initializer_list<const char *> flags,
            std::initializer_list<const char *> valued);

  [[nodiscard]] bool has(const std::string &option) const { return options_.contains(option); }
  [[nodiscard]] std::optional<std::string> value(const std::string &option) const;
  [[nodiscard]] const Words &operands() const { return operands_; }

  /// Throws Misuse unless there are between @p least and @p most operands.
  void require_operands(std::size_t least, std::size_t most) const;

 private:
  std::map<std::string, std::string> options_;
  Words operands_;
};

/// The decimal number that a word is. Throws Misuse, "'WORD' is no KIND", for anything else.
int32_t number_of(const std::string &word, const char *kind, int32_t least = INT32_MIN,
                  int32_t most = INT32_MAX);

}  // namespace tools
