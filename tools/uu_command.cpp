// zorvcrt uu: the data lines of uuencode of an input, or with -d back again, a block or line at a time.
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

int encode(Input &input) {
  std::vector<char> block(kLineBytes * kLinesOfBlock);
  std::vector<char> text(kLineText * kLinesOfBlock + 1);
  std::size_t count = 0;
  do {
    count = input.read(block.data(), block.size());
    const auto room = static_cast<int32_t>(text.size() - 1);
    if (zfx_uuencode(block.data(), static_cast<int32_t>(count), text.data(), room) != 0) {
      throw Failure("the block does not fit");
    }
    write_output(text.data(), text_length(count));
  } while (count == block.size());
  return kSuccess;
}

// The next line, cut to what counts of it; false at the end.
bool read_line(FILE *stream, std::string &line) {
  line.clear();
  int c = EOF;
  while ((c = std::getc(stream)) != EOF && c != '\n') {
    if (line.size() < kLineLimit) line += static_cast<char>(c);
  }
  if (c == '\n') line += '\n';
  return !line.empty();
}

int decode(Input &input) {
  std::string line;
  std::array<char, 63> bytes;
  while (read_line(input.stream(), line)) {
    const auto count = static_cast<std::size_t>((static_cast<unsigned char>(line[0]) - ' ') & 63);
    if (line[0] == '\n' || line[0] == '\0' || count == 0) return kSuccess;
    if (zfx_uudecode(line.c_str(), 0, bytes.data(), bytes.size()) != 0) throw Failure("a line does not fit");
    write_output(bytes.data(), count);
  }
  input.throw_unless_readable();
  return kSuccess;
}

constexpr std::array kOptions = {Option{"--decode", "-d", "", "decode"}};

int run(const Arguments &arguments) {
  arguments.require_operands(0, 1);
  Input input(arguments.operands().empty() ? "-" : arguments.operands()[0],
              Input::Meanwhile::kStandardOutput);
  return arguments.has("--decode") ? decode(input) : encode(input);
}

}  // namespace

const Command kUuCommand = {
    "uu",
    "[FILE]",
    "encode a file or standard input as lines of uuencode, or decode it",
    kOptions,
    "Without FILE, and for -, reads standard input. These are the data lines alone, without a \"begin\"\n"
    "and an \"end\" line. When decoding, an empty line, or one that begins with '`' or a blank, is the "
    "end.\n",
    run};

}  // namespace tools
