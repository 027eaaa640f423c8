// The fields of a delimited line, and trimming, against the rules said again over strings.
#include "NextToken.h"
#include "TrimString.h"
#include "check.hpp"
#include "input.hpp"
#include "support/plain_text.hpp"

namespace {

struct PlainTokenizer {
  const std::string &line;
  char delimiter;
  std::size_t room;
  std::size_t position;
  std::string token;

  bool next() {
    const std::size_t start = position;
    token.clear();
    for (;;) {
      while (position < line.size() && line[position] != delimiter) {
        ++position;
      }
      if (position == line.size() && position == start) return false;
      token = plain::trimmed(line.substr(start, std::min(position - start, room)));
      if (position == line.size()) return true;
      ++position;
      if (!token.empty() || position == line.size()) return true;
    }
  }
};

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  const auto delimiter = static_cast<char>(input.byte());
  const auto room = static_cast<std::size_t>(input.byte());
  const std::string line = fuzz::c_text(input.rest());
  const auto copy = fuzz::exact_copy(line.c_str(), line.size() + 1);

  const auto out = std::make_unique<char[]>(room + 1);
  int32_t position = 0;
  PlainTokenizer plain{line, delimiter, room, 0, ""};
  for (bool more = true; more;) {
    more = plain.next();
    const int32_t got =
        ZfxNextToken(copy.get(), delimiter, out.get(), static_cast<int32_t>(room + 1), &position);
    fuzz::check_equal(got, more ? 1 : 0, "whether there is a field");
    fuzz::check_equal(std::string(out.get()), plain.token, "field");
    fuzz::check_equal(static_cast<std::size_t>(position), plain.position, "position");
  }
  TrimString(copy.get());
  fuzz::check_equal(std::string(copy.get()), plain::trimmed(line), "trimmed line");
  return 0;
}
