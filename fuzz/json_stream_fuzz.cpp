// JSON from a stream that gives its bytes in odd portions, through buffers of any size: the same tokens,
// places and outcome as for the bytes in memory and for the plain restatement.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "check.hpp"
#include "grammar.h"
#include "input.hpp"
#include "json/documents.hpp"
#include "json/plain_parser.hpp"
#include "scanner.h"

namespace {

// The bytes and how many of them each read gives at most, in turn.
struct Portions {
  std::string bytes;
  std::string sizes;
  std::size_t at = 0;
  std::size_t reads = 0;
};

ssize_t read_portion(void *cookie, char *out, std::size_t room) {
  auto &portions = *static_cast<Portions *>(cookie);
  const std::size_t turn = portions.sizes.empty() ? 0 : portions.reads++ % portions.sizes.size();
  const std::size_t wanted = portions.sizes.empty() ? room : static_cast<uint8_t>(portions.sizes[turn]) + 1U;
  const std::size_t taken = std::min({room, wanted, portions.bytes.size() - portions.at});
  std::memcpy(out, portions.bytes.data() + portions.at, taken);
  portions.at += taken;
  return static_cast<ssize_t>(taken);
}

struct Closer {
  void operator()(FILE *stream) const { std::fclose(stream); }
  void operator()(zjson_scanner *scanner) const { zjson_lex_destroy(scanner); }
};
using Stream = std::unique_ptr<FILE, Closer>;
using Scanner = std::unique_ptr<zjson_scanner, Closer>;

Stream open_stream(Portions &portions) {
  portions.at = 0;
  portions.reads = 0;
  Stream stream(::fopencookie(&portions, "r", {read_portion, nullptr, nullptr, nullptr}));
  std::setvbuf(stream.get(), nullptr, _IONBF, 0);
  return stream;
}

Scanner scanner_of(FILE *stream, int32_t buffer_size) {
  zjson_scanner *scanner = nullptr;
  zjson_lex_init(&scanner);
  zjson__switch_to_buffer(zjson__create_buffer(stream, buffer_size, scanner), scanner);
  return Scanner(scanner);
}

plain::Seen next_token(zjson_scanner *scanner, ZJsonLocation &place) {
  ZJsonSymbolValue value = {};
  plain::Seen seen{zjson_lex(&value, &place, scanner), "", ""};
  seen.text = std::string(zjson_get_text(scanner), static_cast<std::size_t>(zjson_get_leng(scanner)));
  if (seen.code == ZJSON_TOKEN_INTEGER) seen.value = "i" + std::to_string(value.integer);
  if (seen.code == ZJSON_TOKEN_NUMBER) seen.value = "d" + std::to_string(value.number);
  if (seen.code == ZJSON_TOKEN_STRING) {
    seen.value = "s" + seen.text.substr(1, seen.text.size() - 2);
    fuzz::check_equal(std::string(value.string), fuzz::c_text(seen.value.substr(1)), "value of a string");
    ZfxMemFree(value.string);
  }
  seen.line = place.last_line;
  seen.column = place.last_column;
  return seen;
}

// All tokens up to the end, or up to the line feed at which a scan ends the process.
void check_tokens(zjson_scanner *scanner, const std::string &text) {
  plain::PlainScanner plain{text};
  ZJsonLocation place = {1, 1, 1, 1};
  for (;;) {
    const std::size_t before = plain.at;
    const plain::Seen expected = plain.next();
    if (expected.code == plain::kJam) return;
    const plain::Seen seen = next_token(scanner, place);
    fuzz::check_equal(seen.code, expected.code, "token");
    fuzz::check_equal(seen.text, expected.text, "text of a token");
    fuzz::check_equal(seen.value, expected.value, "value of a token");
    fuzz::check_equal(seen.line, expected.line, "line of a token");
    fuzz::check_equal(seen.column, expected.column, "column of a token");
    if (before == text.size()) return;
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  const int32_t buffer_size = input.byte();
  Portions portions;
  portions.sizes = input.line();
  portions.bytes = input.rest();

  {
    const Stream stream = open_stream(portions);
    check_tokens(scanner_of(stream.get(), buffer_size).get(), portions.bytes);
  }
  zjson_scanner *scanner = nullptr;
  zjson_lex_init(&scanner);
  const Scanner memory(scanner);
  zjson__scan_bytes(portions.bytes.data(), static_cast<int32_t>(portions.bytes.size()), scanner);
  check_tokens(scanner, portions.bytes);

  const std::string expected = plain::PlainParser(portions.bytes).run();
  if (expected == "jam") return 0;
  {
    const Stream stream = open_stream(portions);
    const documents::Document document(ZJsonExpression_ParseStream(stream.get()));
    fuzz::check_equal(documents::outcome_of(document.get()), expected, "outcome of a stream");
  }
  const Stream stream = open_stream(portions);
  ZJsonExpression *result = nullptr;
  zjson_parse(&result, scanner_of(stream.get(), buffer_size).get());
  fuzz::check_equal(documents::outcome_of(documents::Document(result).get()), expected,
                    "outcome of a small buffer");
  return 0;
}
