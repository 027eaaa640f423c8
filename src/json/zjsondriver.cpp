// The ways into the parser: a text, a stream, a file.
#include "zjsondriver.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "grammar.h"
#include "handles.hpp"
#include "parser.hpp"
#include "quick_parser.hpp"
#include "quick_scan.hpp"

namespace {

using zorvcrt::QuickOutcome;

// What ZJsonExpression_ParseFile() returns when there is no memory for a document.
constexpr int32_t kNoDocument = 63;

struct ScannerDestroyer {
  void operator()(zjson_scanner *scanner) const { zjson_lex_destroy(scanner); }
};
using UniqueScanner = std::unique_ptr<zjson_scanner, ScannerDestroyer>;

// The bytes are scanned where they are. Nothing is written to them, because the text of a token is never
// exposed, and a copy would be work that the return throws away.
zjson_buffer buffer_over(std::string_view text) {
  zjson_buffer buffer = {};
  buffer.area = buffer.cursor = const_cast<char *>(text.data());
  buffer.limit = buffer.area + text.size();
  buffer.line = 1;
  buffer.has_ended = true;
  return buffer;
}

void parse_by_tokens(std::string_view text, ZJsonExpression *&document) {
  zjson_buffer buffer = buffer_over(text);
  zjson_scanner scanner = {};
  zorvcrt::Token token = {};
  zorvcrt::parse_input(document, scanner, buffer, token);
}

// The place is that behind the token for which there was no memory.
void report_exhaustion(std::string_view text, const char *at, ZJsonExpression *&document) {
  zjson_buffer buffer = buffer_over(text);
  zjson_scanner scanner = {};
  zorvcrt::Token token = {};
  ZJsonLocation place = {1, 1, 1, 1};
  while (buffer.cursor < at && zorvcrt::next_token(scanner, buffer, token)) {
    zorvcrt::advance(place, token);
  }
  zjson_error(&place, &document, nullptr, "memory exhausted");
}

ZJsonExpression *parse_text(std::string_view text) {
  const char *limit = text.data() + text.size();
  while (limit != text.data() && zorvcrt::is_json_space(limit[-1])) {
    --limit;
  }
  ZJsonExpression *document = nullptr;
  const char *at = nullptr;
  // A trace shows steps that the quick parser does not take.
  const bool is_traced = __atomic_load_n(&zjson_debug, __ATOMIC_RELAXED) != 0;
  switch (is_traced ? QuickOutcome::kLeft : zorvcrt::parse_quickly(text.data(), limit, document, at)) {
    case QuickOutcome::kParsed:
      break;
    case QuickOutcome::kExhausted:
      report_exhaustion(text, at, document);
      break;
    case QuickOutcome::kLeft:
      parse_by_tokens(text, document);
      break;
  }
  return document;
}

bool is_trimmed(char c) {
  return zorvcrt::is_json_space(c) || c == '\0';
}

// What a file holds, read before it is parsed: that takes a half to two thirds of the time of parsing it
// block by block.
class WholeFile {
 public:
  // Nothing of what is no regular file or a very large one, and of one that grows; it then stands at its
  // beginning.
  explicit WholeFile(FILE *file) {
    constexpr off_t kLargest = off_t{64} << 20;
    struct stat status;
    const bool is_regular = ::fstat(::fileno(file), &status) == 0 && S_ISREG(status.st_mode);
    if (!is_regular || status.st_size > kLargest) return;
    const auto room = static_cast<std::size_t>(status.st_size) + 1;
    bytes_.reset(static_cast<char *>(std::malloc(room)));
    if (!bytes_) return;
    while (const std::size_t count = zorvcrt::read_block(file, bytes_.get() + size_, room - size_)) {
      size_ += count;
    }
    if (size_ < room) return;
    bytes_.reset();
    std::rewind(file);
  }

  [[nodiscard]] bool is_there() const { return bytes_ != nullptr; }
  [[nodiscard]] std::string_view text() const { return {bytes_.get(), size_}; }

 private:
  zorvcrt::UniqueMalloc<char> bytes_;
  std::size_t size_ = 0;
};

}  // namespace

ZJsonExpression *ZJsonExpression_Parse(const char *text, int32_t length) {
  if (text == nullptr || length < 0) length = 0;
  while (length > 0 && is_trimmed(text[length - 1])) {
    --length;
  }
  return parse_text({text, static_cast<std::size_t>(length)});
}

ZJsonExpression *ZJsonExpression_ParseStream(FILE *stream) {
  zjson_scanner *handle = nullptr;
  if (zjson_lex_init(&handle) != 0) return nullptr;
  const UniqueScanner scanner(handle);
  zjson_set_in(stream, handle);
  ZJsonExpression *document = nullptr;
  zjson_parse(&document, handle);
  return document;
}

int32_t ZJsonExpression_ParseFile(ZJsonExpression **out, const char *path) {
  if (out == nullptr || path == nullptr) return EINVAL;
  const zorvcrt::UniqueFile file(std::fopen(path, "rbe"));
  if (!file) return errno;
  const WholeFile whole(file.get());
  *out = whole.is_there() ? parse_text(whole.text()) : ZJsonExpression_ParseStream(file.get());
  return *out == nullptr ? kNoDocument : 0;
}
