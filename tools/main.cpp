// zorvcrt: the companion command. Finds the command that the first word names and reports how it went.
#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>

#include "command.hpp"

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

void print_usage(FILE *stream, const Command &command) {
  const char *space = *command.arguments == '\0' ? "" : " ";
  std::fprintf(stream, "usage: zorvcrt %s%s%s\n", command.name, space, command.arguments);
}

void print_command_list(FILE *stream) {
  std::fputs("usage: zorvcrt COMMAND [ARGUMENTS]\n\ncommands:\n", stream);
  for (const Command *command : kCommands) {
    std::fprintf(stream, "  %-12s %s\n", command->name, command->summary);
  }
  std::fputs("\n'zorvcrt COMMAND --help' explains one of them.\n", stream);
}

int print_help(const Command &command) {
  print_usage(stdout, command);
  std::printf("\n%s\n%s%s", command.summary, *command.details == '\0' ? "" : "\n", command.details);
  return kSuccess;
}

bool asks_for_help(const Words &words) {
  const auto end_of_options = std::find(words.begin(), words.end(), "--");
  return std::find(words.begin(), end_of_options, "--help") != end_of_options;
}

int run_command(const Command &command, const Words &words) {
  if (asks_for_help(words)) return print_help(command);
  try {
    return command.run(words);
  } catch (const Misuse &misuse) {
    std::fprintf(stderr, "zorvcrt %s: %s\n", command.name, misuse.what());
    print_usage(stderr, command);
    return kMisuse;
  } catch (const std::exception &failure) {
    std::fprintf(stderr, "zorvcrt %s: %s\n", command.name, failure.what());
    return kFailure;
  }
}

int run(const Words &words) {
  if (words.empty()) {
    print_command_list(stderr);
    return kMisuse;
  }
  const std::string &name = words.front();
  if (name == "--help" || name == "-h" || name == "help") {
    print_command_list(stdout);
    return kSuccess;
  }
  const std::string wanted = name == "--version" ? "version" : name;
  const auto *found = std::find_if(kCommands.begin(), kCommands.end(),
                                   [&](const Command *command) { return wanted == command->name; });
  if (found == kCommands.end()) {
    std::fprintf(stderr, "zorvcrt: unknown command '%s'; 'zorvcrt --help' lists them\n", name.c_str());
    return kMisuse;
  }
  return run_command(**found, Words(words.begin() + 1, words.end()));
}

}  // namespace

}  // namespace tools

int main(int count, char **words) {
  const int status = tools::run(tools::Words(words + 1, words + count));
  // What could not be written (a full disk, a closed pipe) is a failure, not a silent loss.
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    std::perror("zorvcrt: standard output");
    return status == tools::kSuccess ? tools::kFailure : status;
  }
  return status;
}
