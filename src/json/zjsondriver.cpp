// The ways into the parser: a text, a stream, a file.
#include "zjsondriver.h"

#include <cerrno>
#include <memory>

#include "grammar.h"
#include "handles.hpp"
#include "parser.hpp"

namespace {

// What ZJsonExpression_ParseFile() returns when there is no memory for a document.
constexpr int32_t kNoDocument = 63;

struct ScannerDestroyer {
  void operator()(zjson_scanner *scanner) const { zjson_lex_destroy(scanner); }
};
using UniqueScanner = std::unique_ptr<zjson_scanner, ScannerDestroyer>;

bool is_trimmed(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\0';
}

}  // namespace

ZJsonExpression *ZJsonExpression_Parse(const char *text, int32_t length) {
  if (text == nullptr || length < 0) length = 0;
  while (length > 0 && is_trimmed(text[length - 1])) {
    --length;
  }
  // The bytes are scanned where they are. Nothing is written to them, because the text of a token is never
  // exposed, and a copy would be work that the return throws away.
  zjson_buffer buffer = {};
  buffer.area = buffer.cursor = const_cast<char *>(text);
  buffer.limit = buffer.area + length;
  buffer.line = 1;
  buffer.has_ended = true;
  zjson_scanner scanner = {};
  zorvcrt::Token token = {};
  ZJsonExpression *document = nullptr;
  zorvcrt::parse_input(document, scanner, buffer, token);
  return document;
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
  *out = ZJsonExpression_ParseStream(file.get());
  return *out == nullptr ? kNoDocument : 0;
}
