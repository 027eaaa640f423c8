// zorvcrt log: writes lines to a log file.
#include <zorvcrt.h>

#include <array>
#include <string>

#include "arguments.hpp"
#include "levels.hpp"
#include "log_line.hpp"
#include "owner.hpp"
#include "streams.hpp"

namespace tools {

namespace {

constexpr uint32_t kEverything = 5;

std::string joined(Words::const_iterator word, Words::const_iterator end) {
  std::string text = *word;
  while (++word != end) {
    text += " " + *word;
  }
  return text;
}

constexpr std::array kOptions = {
    Option{"--error", "", "N", "the error number of a fatal, error or warning line"},
    Option{"--location", "", "TEXT", "the place in front of the message"}};

int run(const Arguments &arguments) {
  arguments.require_operands(3, SIZE_MAX);
  const Words &operands = arguments.operands();
  const uint32_t level = log_level(operands[1]);
  const int32_t error = number_of(arguments.value("--error").value_or("0"), "error number");
  const std::string location = arguments.value("--location").value_or("");

  const bool to_standard_error = operands[0] == "-";
  const Owner<Logger> logger(Logger_New(kEverything, operands[0].c_str(), to_standard_error ? 1 : 0));
  if (Logger_GetLogFileno(logger.get()) < 0) throw Failure("cannot append to " + operands[0]);
  const auto log = [&](const std::string &message) {
    log_line(logger.get(), level, location.c_str(), error, message.c_str());
  };
  if (operands.size() > 3 || operands[2] != "-") {
    log(joined(operands.begin() + 2, operands.end()));
    return kSuccess;
  }
  Input input("-", to_standard_error ? Input::Meanwhile::kStandardError : Input::Meanwhile::kNothing);
  while (const auto line = input.read_line()) {
    log(*line);
  }
  return kSuccess;
}

}  // namespace

void log_line(Logger *logger, uint32_t level, const char *location, int32_t error, const char *message) {
  const int room = Logger_GetMaxPrecision(static_cast<int32_t>(level), message);
  switch (level) {
    case 1:
      return Logger_LogFatalError(logger, location, error, "%.*s", room, message);
    case 2:
      return Logger_LogError(logger, location, error, "%.*s", room, message);
    case 3:
      return Logger_LogWarning(logger, location, error, "%.*s", room, message);
    case 4:
      return Logger_LogInfo(logger, location, "%.*s", room, message);
    default:
      return Logger_LogDebug(logger, location, "%.*s", room, message);
  }
}

const Command kLogCommand = {
    "log",
    "FILE LEVEL MESSAGE...",
    "append lines to a log file",
    kOptions,
    "FILE is created when it is missing; '-' is standard error. LEVEL is fatal, error, warning,\n"
    "info, debug or 1 to 5. The message is one line; - alone takes each line of standard input for one.\n"
    "Put '--' in front of a message with words that begin with '-'. Only opening the file is checked: as in "
    "a host, a line that a full disk refuses is lost in silence.\n",
    run};

}  // namespace tools
