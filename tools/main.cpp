// zorvcrt: the companion command. Finds the command that the first word names and reports how it went.
#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "arguments.hpp"
#include "command.hpp"
#include "streams.hpp"
#include "terminal.hpp"

namespace tools {

namespace {

// In the order in which they are listed.
// clang-format off
constexpr std::array kCommands = {
    &kStartupCommand,
    &kSettingsCommand,
    &kConfCommand,
    &kDataareaCommand,
    &kLogCommand,
    &kJsonCommand,
    &kDateCommand,
    &kBase64Command,
    &kUuCommand,
    &kUtf8Command,
    &kExecCommand,
    &kListenCommand,
    &kConnectCommand,
    &kWhoamiCommand,
    &kVersionCommand,
};
// clang-format on

constexpr Option kHelpOption = {"--help", "-h", "", "explain the command"};

void print_usage(FILE *stream, const Command &command) {
  std::string line = std::string("usage: zorvcrt ") + command.name;
  for (const Option &option : command.options) {
    line += std::string(" [") + option.name + (*option.value == '\0' ? "" : " ") + option.value + "]";
  }
  if (*command.operands != '\0') line += std::string(" ") + command.operands;
  std::fprintf(stream, "%s\n", line.c_str());
}

void print_command_list(FILE *stream) {
  std::fprintf(stream, "usage: zorvcrt COMMAND [ARGUMENTS]\n\n%s\n", bold(stream, "commands:").c_str());
  for (const Command *command : kCommands) {
    std::fprintf(stream, "  %-12s %s\n", command->name, command->summary);
  }
  std::fputs("\n'zorvcrt COMMAND --help' explains one of them, 'zorvcrt --version' tells the version.\n",
             stream);
}

// "-d, --decode" or "    --timeout MS".
std::string heading_of(const Option &option) {
  const std::string letter = *option.letter == '\0' ? "    " : std::string(option.letter) + ", ";
  return letter + option.name + (*option.value == '\0' ? "" : " ") + option.value;
}

int print_help(const Command &command) {
  std::vector<Option> options(command.options.begin(), command.options.end());
  options.push_back(kHelpOption);
  std::size_t width = 0;
  for (const Option &option : options) {
    width = std::max(width, heading_of(option).size());
  }
  print_usage(stdout, command);
  std::printf("\n%s\n\n%s\n", command.summary, bold(stdout, "options:").c_str());
  for (const Option &option : options) {
    std::printf("  %-*s  %s\n", static_cast<int>(width), heading_of(option).c_str(), option.meaning);
  }
  std::printf("%s%s", *command.details == '\0' ? "" : "\n", command.details);
  return kSuccess;
}

bool asks_for_help(const Words &words) {
  const auto end_of_options = std::find(words.begin(), words.end(), "--");
  return std::any_of(words.begin(), end_of_options, [](const std::string &word) {
    return word == kHelpOption.name || word == kHelpOption.letter;
  });
}

const Command *command_named(const std::string &name) {
  const auto *found = std::find_if(kCommands.begin(), kCommands.end(),
                                   [&](const Command *command) { return name == command->name; });
  return found == kCommands.end() ? nullptr : *found;
}

int refuse_command(const std::string &name) {
  std::fprintf(stderr, "zorvcrt: unknown command '%s'; 'zorvcrt --help' lists them\n", name.c_str());
  return kMisuse;
}

int run_command(const Command &command, const Words &words) {
  if (asks_for_help(words)) return print_help(command);
  try {
    return command.run(Arguments(words, command.options));
  } catch (const Misuse &misuse) {
    complain(command.name, misuse.what());
    print_usage(stderr, command);
    return kMisuse;
  } catch (const std::exception &failure) {
    complain(command.name, failure.what());
    return kFailure;
  }
}

int run(const Words &words) {
  if (words.empty()) {
    print_command_list(stderr);
    return kMisuse;
  }
  const std::string &name = words.front();
  if (name == kHelpOption.name || name == kHelpOption.letter || name == "help") {
    if (words.size() == 1) {
      print_command_list(stdout);
      return kSuccess;
    }
    const Command *wanted = command_named(words[1]);
    return wanted == nullptr ? refuse_command(words[1]) : print_help(*wanted);
  }
  const Command *command = command_named(name == "--version" ? "version" : name);
  return command == nullptr ? refuse_command(name)
                            : run_command(*command, Words(words.begin() + 1, words.end()));
}

}  // namespace

}  // namespace tools

int main(int count, char **words) {
  tools::occupy_closed_standard_streams();
  const int status = tools::run(tools::Words(words + 1, words + count));
  if (status != tools::kSuccess) return status;
  // What could not be written (a full disk, a closed pipe) is a failure, not a silent loss.
  try {
    tools::flush_output();
  } catch (const tools::Failure &failure) {
    std::fprintf(stderr, "zorvcrt: %s\n", failure.what());
    return tools::kFailure;
  }
  return tools::kSuccess;
}
