// Lines of a text file without comments and blank lines, in areas of any size, against cutting a string.
#include <cstdio>

#include "GetFileLine.h"
#include "check.hpp"
#include "input.hpp"
#include "support/plain_text.hpp"

namespace {

// The next piece that says something, from the place on; empty when there is none.
std::string next_line(const std::string &text, std::size_t &at, std::size_t room) {
  while (at < text.size()) {
    const std::size_t line_end = std::min(text.find('\n', at), text.size() - 1) + 1;
    const std::size_t end = std::min(line_end, at + room);
    const std::string line = plain::trimmed(fuzz::c_text(text.substr(at, end - at)));
    at = end;
    if (!line.empty() && line[0] != '#') return line;
  }
  return "";
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  const int32_t room = input.within(2, 300);
  std::string text = input.rest();
  if (text.empty()) return 0;
  FILE *file = ::fmemopen(text.data(), text.size(), "r");
  const auto area = std::make_unique<char[]>(static_cast<std::size_t>(room));
  std::size_t at = 0;
  for (bool more = true; more;) {
    const std::string expected = next_line(text, at, static_cast<std::size_t>(room) - 1);
    const char *line = GetFileLine(area.get(), room, file);
    more = line != nullptr;
    fuzz::check_equal(more ? std::string(line) : std::string(), expected, "line");
  }
  fuzz::check_equal(at, text.size(), "place at the end");
  std::fclose(file);
  return 0;
}
