// Formatted log lines of every level, and bounded formatting, against printf into a string of any length.
#include <cstdarg>

#include "check.hpp"
#include "format.h"
#include "input.hpp"
#include "logger.h"

namespace {

constexpr char kMark[] = "\x01";

struct Line {
  uint32_t level = 1;
  std::string location;
  int32_t number = 0;
};

void take_line(void *lines, const char *line) {
  *static_cast<std::string *>(lines) += std::string(line) + kMark;
}

ZFX_PRINTF(1, 2) std::string formatted(const char *format, ...) {
  static char area[200000];
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(area, sizeof area, format, arguments);
  va_end(arguments);
  // What is refused ends the text where it would stand.
  return length < 0 ? std::string(area) : std::string(area, static_cast<std::size_t>(length));
}

std::string plain_line(const Line &line, std::string message) {
  static const char *const kNames[] = {"", "  FATAL", "  ERROR", "WARNING", "   INFO", "  DEBUG"};
  static const std::size_t kLongest[] = {0, 8191, 8191, 8191, 8190, 65534};
  message = fuzz::c_text(message.substr(0, kLongest[line.level]));
  std::string text = std::string(kNames[line.level]) + "] ";
  if (!line.location.empty()) text += (line.location + ": ").substr(0, 511);
  if (line.number != 0 && line.level < 4) text += '#' + std::to_string(line.number) + ' ';
  text += message;
  return message.find('\n') == std::string::npos ? text + '\n' : text;
}

// "[Sat Nov 21 16:11:59 " by its form.
std::string without_time(const std::string &line) {
  constexpr std::size_t kTime = 21;
  fuzz::check(line.size() > kTime && line[0] == '[' && line[14] == ':' && line[17] == ':' && line[20] == ' ',
              "a line begins with the time");
  return line.substr(kTime);
}

template <class... Arguments>
void log(const Logger *logger, const Line &line, const char *format, Arguments... arguments) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
  const char *location = line.location.c_str();
  switch (line.level) {
    case 1:
      return Logger_LogFatalError(logger, location, line.number, format, arguments...);
    case 2:
      return Logger_LogError(logger, location, line.number, format, arguments...);
    case 3:
      return Logger_LogWarning(logger, location, line.number, format, arguments...);
    case 4:
      return Logger_LogInfo(logger, location, format, arguments...);
    default:
      return Logger_LogDebug(logger, location, format, arguments...);
  }
}

template <class... Arguments>
void check_line(const Line &line, uint32_t level_of_logger, int32_t room, const char *format,
                Arguments... arguments) {
  std::string lines;
  Logger *logger = Logger_New(1, nullptr, 0);
  Logger_SetCallback(logger, take_line, &lines);
  Logger_SetLogLevel(logger, level_of_logger);
  log(logger, line, format, arguments...);
  Logger_Delete(logger);
  const std::string message = formatted(format, arguments...);
  if (level_of_logger < line.level) {
    fuzz::check_equal(lines, std::string(), "line of a level that is not written");
  } else {
    fuzz::check_equal(without_time(lines), plain_line(line, message) + kMark, "line");
  }

  const auto area = std::make_unique<char[]>(static_cast<std::size_t>(room));
  string_format(area.get(), room, format, arguments...);
  fuzz::check_equal(std::string(area.get()),
                    fuzz::c_text(message.substr(0, static_cast<std::size_t>(room - 1))), "bounded text");
#pragma GCC diagnostic pop
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  Line line;
  line.level = static_cast<uint32_t>(input.within(1, 5));
  const uint32_t level_of_logger = input.byte() % 8U;
  line.number = input.integer<int16_t>();
  const int32_t width = input.within(0, 65535);
  const int32_t room = input.within(1, 9000);
  const int kind = input.within(0, 6);
  line.location = fuzz::c_text(input.line());
  const std::string text = fuzz::c_text(input.rest());
  switch (kind) {
    case 0:
      check_line(line, level_of_logger, room, "%s", text.c_str());
      break;
    case 1:
      check_line(line, level_of_logger, room, "%*s|%d", width, text.c_str(), line.number);
      break;
    case 2:
      check_line(line, level_of_logger, room, "%.*s and %-8x%%", width, text.c_str(), 255U);
      break;
    case 3:
      check_line(line, level_of_logger, room, "%c%s%c", line.number % 128, text.c_str(), 'z');
      break;
    case 4:
      check_line(line, level_of_logger, room, "%s%lc behind it", text.c_str(), static_cast<wint_t>(0xD800));
      break;
    case 5:
      check_line(line, level_of_logger, room, "%g %s %lld", width / 7.0, text.c_str(),
                 1LL * line.number * width);
      break;
    default:
      check_line(line, level_of_logger, room, "%s\n%s", text.c_str(), text.c_str());
      break;
  }
  return 0;
}
