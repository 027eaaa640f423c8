// zorvcrt uu: the data lines of uuencode of standard input, or with -d back again, a block or line at a time.
#include <zorvcrt.h>

#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "arguments.hpp"
#include "streams.hpp"

namespace tools {

namespace {

constexpr std::size_t kLineBytes = 45;
constexpr std::size_t kLineText = 62;
constexpr std::size_t kLinesOfBlock = 1024;
constexpr std::size_t kLineLimit = 80;  // characters of a line that count

std::size_t text_length(std::size_t bytes) {
  const std::size_t rest = bytes % kLineBytes;
  return bytes / kLineBytes * kLineText + (rest == 0 ? 0 : (rest + 2) / 3 * 4 + 2);
}

int encode() {
  std::vector<char> block(kLineBytes * kLinesOfBlock);
  std::vector<char> text(kLineText * kLinesOfBlock + 1);
  std::size_t count = 0;
  do {
    count = read_input(block.data(), block.size());
    const auto room = static_cast<int32_t>(text.size() - 1);
    if (zfx_uuencode(block.data(), static_cast<int32_t>(count), text.data(), room) != 0) {
      throw Failure("the block does not fit");
    }
    if (!write_output(text.data(), text_length(count))) return kFailure;
  } while (count == block.size());
  return kSuccess;
}

// The next line, cut to what counts of it; false at the end.
bool read_line(std::string &line) {
  line.clear();
  int c = EOF;
  while ((c = std::getc(stdin)) != EOF && c != '\n') {
    if (line.size() < kLineLimit) line += static_cast<char>(c);
  }
  if (std::ferror(stdin) != 0) read_input(nullptr, 0);
  if (c == '\n') line += '\n';
  return !line.empty();
}

int decode() {
  std::string line;
  std::array<char, 63> bytes;
  while (read_line(line)) {
    const auto count = static_cast<std::size_t>((static_cast<unsigned char>(line[0]) - ' ') & 63);
    if (line[0] == '\n' || line[0] == '\0' || count == 0) return kSuccess;
    if (zfx_uudecode(line.c_str(), 0, bytes.data(), bytes.size()) != 0) throw Failure("a line does not fit");
    if (!write_output(bytes.data(), count)) return kFailure;
  }
  return kSuccess;
}

int run(const Words &words) {
  const Arguments arguments(words, {"-d", "--decode"}, {});
  arguments.require_operands(0, 0);
  return arguments.has("-d") || arguments.has("--decode") ? decode() : encode();
}

}  // namespace

const Command kUuCommand = {
    "uu", "[-d]", "encode standard input as lines of uuencode, or decode them",
    "-d, --decode   decode; an empty line, or one that begins with '`' or a blank, is the end\n\n"
    "These are the data lines alone, without a \"begin\" and an \"end\" line.\n",
    run};

}  // namespace tools
