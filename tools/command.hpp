// What a command of zorvcrt is: a name, its options and a function, and how it reports misuse and failure.
#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace tools {

using Words = std::vector<std::string>;

/// Exit statuses of the command.
inline constexpr int kSuccess = 0;
inline constexpr int kFailure = 1;
inline constexpr int kMisuse = 2;

/// The words on the command line make no sense: reported with the usage line, exit status 2.
struct Misuse : std::runtime_error {
  using runtime_error::runtime_error;
};

/// The command was understood and could not be carried out: reported in one line, exit status 1.
struct Failure : std::runtime_error {
  using runtime_error::runtime_error;
};

/// An option as the command line takes it, --help explains it and the shell completes it.
struct Option {
  const char *name;     // "--decode"
  const char *letter;   // "-d", or "" for none
  const char *value;    // "MS", or the choices as "text|json", or "" for an option without a value
  const char *meaning;  // one line for --help
};

/// Of every command whose result is a record.
inline constexpr Option kOutputOption = {"--output", "", "text|json",
                                         "the form of the result, text by default"};

class Arguments;

struct Command {
  const char *name;
  const char *operands;             // as shown in the usage line
  const char *summary;              // one line for the list of commands
  std::span<const Option> options;  // beside --help
  const char *details;              // further lines for --help, or ""
  int (*run)(const Arguments &arguments);
};

// The commands, each in the file of its name (tools/<name>_command.cpp).
extern const Command kBase64Command;
extern const Command kConfCommand;
extern const Command kConnectCommand;
extern const Command kDataareaCommand;
extern const Command kDateCommand;
extern const Command kExecCommand;
extern const Command kJsonCommand;
extern const Command kListenCommand;
extern const Command kLogCommand;
extern const Command kSettingsCommand;
extern const Command kStartupCommand;
extern const Command kUtf8Command;
extern const Command kUuCommand;
extern const Command kVersionCommand;
extern const Command kWhoamiCommand;

}  // namespace tools
