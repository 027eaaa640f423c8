// From token to token: reading streams, and the exported scan.
#include "scanner.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "scanner_state.hpp"
#include "small_block.hpp"

namespace zorvcrt {

namespace {

constexpr int32_t kFailureStatus = 2;
constexpr std::size_t kReadBlock = 8192;

// The token codes of the table follow each other as the terminals do.
constexpr int32_t kFirstTokenCode = ZJSON_TOKEN_INTEGER - static_cast<int32_t>(Symbol::kInteger);

std::size_t waiting(const zjson_buffer &buffer) {
  return static_cast<std::size_t>(buffer.limit - buffer.cursor);
}

void double_space(zjson_buffer &buffer) {
  if (buffer.size > INT32_MAX / 2) end_process("fatal error - scanner input buffer overflow");
  auto *area = static_cast<char *>(std::realloc(buffer.area, 2 * static_cast<std::size_t>(buffer.size) + 2));
  if (area == nullptr) end_process("fatal error - scanner input buffer overflow");
  buffer.cursor = area + (buffer.cursor - buffer.area);
  buffer.limit = area + (buffer.limit - buffer.area);
  buffer.area = area;
  buffer.size *= 2;
}

// Reads one block behind the waiting bytes, which move to the front of the area.
void read_one_more(zjson_scanner &scanner, zjson_buffer &buffer) {
  if (buffer.is_fresh) buffer.stream = scanner.in;
  buffer.is_fresh = false;
  std::memmove(buffer.area, buffer.cursor, waiting(buffer));
  buffer.limit = buffer.area + waiting(buffer);
  buffer.cursor = buffer.area;
  while (waiting(buffer) + 1 >= static_cast<std::size_t>(buffer.size)) {
    double_space(buffer);
  }
  const std::size_t room = static_cast<std::size_t>(buffer.size) - waiting(buffer) - 1;
  const std::size_t count = read_block(scanner.in, buffer.limit, room);
  buffer.limit += count;
  buffer.has_ended = count == 0;
}

int32_t code_of(const Token &token) {
  if (token.symbol < Symbol::kInteger) return static_cast<signed char>(*token.begin);
  return static_cast<int32_t>(token.symbol) + kFirstTokenCode;
}

void store_value(const Token &token, ZJsonSymbolValue &value) {
  if (token.symbol == Symbol::kInteger) value.integer = token.integer;
  if (token.symbol == Symbol::kNumber) value.number = token.number;
  if (token.symbol == Symbol::kString) {
    value.string = new_text({token.begin + 1, static_cast<std::size_t>(token.end - token.begin) - 2});
  }
}

}  // namespace

void end_process(const char *message) {
  std::fprintf(stderr, "%s\n", message);
  std::exit(kFailureStatus);
}

std::size_t read_block(FILE *stream, char *area, std::size_t size) {
  if (stream == nullptr) return 0;
  errno = 0;
  for (;;) {
    const std::size_t count = std::fread(area, 1, std::min(size, kReadBlock), stream);
    if (std::ferror(stream) == 0) return count;
    // An interruption behind some bytes must not be taken for a failure at the next read.
    const bool is_interrupted = errno == EINTR;
    if (is_interrupted) std::clearerr(stream);
    if (count != 0) return count;
    if (!is_interrupted) end_process("input in flex scanner failed");
    errno = 0;
  }
}

void restore_text(zjson_scanner &scanner) {
  if (scanner.terminator != nullptr) *scanner.terminator = scanner.replaced;
  scanner.terminator = nullptr;
  scanner.text = nullptr;
  scanner.length = 0;
}

void expose_text(zjson_scanner &scanner, const zjson_buffer &buffer, const Token &token) {
  const std::ptrdiff_t length = token.end - token.begin;
  char *const end = buffer.cursor;
  scanner.text = end - length;
  scanner.length = static_cast<int32_t>(length);
  scanner.terminator = end;
  scanner.replaced = *end;
  *end = '\0';
}

// What waits is scanned again from its beginning each time, so there must be twice as much of it: then the
// time stays linear in the length of a token that is longer than a block.
void read_more(zjson_scanner &scanner, zjson_buffer &buffer) {
  const std::size_t wanted = 2 * waiting(buffer);
  do {
    read_one_more(scanner, buffer);
  } while (!buffer.has_ended && waiting(buffer) < wanted);
}

bool next_token_slowly(zjson_scanner &scanner, zjson_buffer &buffer, Token &token) {
  for (;;) {
    if (buffer.cursor != buffer.limit) {
      const Scan scan = TokenScan(buffer.cursor, buffer.limit, buffer.has_ended, token).run();
      if (scan == Scan::kMatched) return true;
      if (scan == Scan::kJammed) end_process("flex scanner jammed");
    } else if (buffer.has_ended) {
      // A stream may have more the next time it is asked.
      if (buffer.reads) buffer.has_ended = false;
      token.symbol = Symbol::kEnd;
      token.begin = token.end = buffer.cursor;
      token.line_feeds = 0;
      return false;
    }
    read_more(scanner, buffer);
  }
}

}  // namespace zorvcrt

int32_t zjson_lex(ZJsonSymbolValue *lval, ZJsonLocation *lloc, zjson_scanner *scanner) {
  if (scanner == nullptr) return ZJSON_TOKEN_END;
  scanner->lval = lval;
  scanner->lloc = lloc;
  zorvcrt::restore_text(*scanner);
  zjson_buffer &buffer = zorvcrt::begin_scanning(*scanner);
  zorvcrt::Token token;
  if (!zorvcrt::next_token(*scanner, buffer, token)) return ZJSON_TOKEN_END;
  if (lloc != nullptr) zorvcrt::advance(*lloc, token);
  if (lval != nullptr) zorvcrt::store_value(token, *lval);
  const int32_t code = zorvcrt::code_of(token);
  zorvcrt::expose_text(*scanner, buffer, token);
  return code;
}
