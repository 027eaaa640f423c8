// What a scanner handle and an input buffer hold, and the step from token to token.
#pragma once

#include <cstdio>

#include "scan.hpp"
#include "scanner.h"

/// An input buffer: bytes from cursor to limit wait to be scanned.
struct zjson_buffer {
  char *area;    // the first byte; two bytes lie behind the limit at least, unless the bytes are another's
  char *cursor;  // where the next token begins
  char *limit;   // the end of the bytes
  int32_t size;  // bytes of space in the area of a buffer that reads
  int32_t line;
  int32_t column;
  FILE *stream;  // where it reads from, settled when it is first read
  bool owns_area;
  bool reads;      // from a stream; else the bytes are all there is
  bool is_fresh;   // not read yet
  bool has_ended;  // the stream has: the bytes are whole
};

/// A scanner handle. It is plain data that zero-filled memory makes valid.
struct zjson_scanner {
  void *extra;
  FILE *in;
  FILE *out;
  zjson_buffer **buffers;  // the stack; slots may be empty
  int32_t buffer_count;
  int32_t buffer_room;
  bool has_begun;
  int32_t debug;
  ZJsonSymbolValue *lval;
  ZJsonLocation *lloc;
  // The last token's text, and the byte that its terminator has taken the place of.
  const char *text;
  int32_t length;
  char *terminator;
  char replaced;

  [[nodiscard]] zjson_buffer *current() const {
    return buffer_count == 0 ? nullptr : buffers[buffer_count - 1];
  }
};

namespace zorvcrt {

/// Ends the process as a failure that no caller can get over.
[[noreturn]] void end_process(const char *message);

/// Settles the streams at the first token of a handle; gives the buffer to be scanned, a new one if need be.
zjson_buffer &begin_scanning(zjson_scanner &scanner);

/// Puts back the byte that the terminator of the last token's text has replaced.
void restore_text(zjson_scanner &scanner);

/// Lets the text of the last token, which ends at the buffer's cursor, be seen, terminated.
void expose_text(zjson_scanner &scanner, const zjson_buffer &buffer, const Token &token);

/// Reads up to a block of at most the given size. Gives the number of bytes; 0 at the end of the stream and
/// for a null stream. A stream that cannot be read ends the process.
std::size_t read_block(FILE *stream, char *area, std::size_t size);

/// Gets more bytes behind those that wait, at least doubling them; at the end of the stream the buffer says
/// so.
void read_more(zjson_scanner &scanner, zjson_buffer &buffer);

/// The rest of next_token() where the waiting bytes do not hold a whole token. False at the end of the input.
bool next_token_slowly(zjson_scanner &scanner, zjson_buffer &buffer, Token &token);

/// The next token of a handle that has begun. False at the end of the input; the token then is kEnd and
/// empty.
[[gnu::always_inline]] inline bool next_token(zjson_scanner &scanner, zjson_buffer &buffer, Token &token) {
  if (buffer.cursor == buffer.limit ||
      TokenScan(buffer.cursor, buffer.limit, buffer.has_ended, token).run() != Scan::kMatched) [[unlikely]] {
    if (!next_token_slowly(scanner, buffer, token)) return false;
  }
  buffer.cursor += token.end - token.begin;
  if (token.line_feeds != 0) {
    buffer.line =
        static_cast<int32_t>(static_cast<uint32_t>(buffer.line) + static_cast<uint32_t>(token.line_feeds));
    buffer.column = 0;
  }
  return true;
}

/// Moves a place on over a token.
inline void advance(ZJsonLocation &location, const Token &token) {
  location.first_line = location.last_line;
  location.first_column = location.last_column;
  // Unsigned, so that an input of more than 2^31 lines or columns wraps.
  const auto moved = [](int32_t number, std::ptrdiff_t by) {
    return static_cast<int32_t>(static_cast<uint32_t>(number) + static_cast<uint32_t>(by));
  };
  if (token.line_feeds == 0) {
    location.last_column = moved(location.last_column, token.end - token.begin);
  } else {
    location.last_line = moved(location.last_line, token.line_feeds);
    location.last_column = moved(0, token.end - token.new_line);
  }
}

}  // namespace zorvcrt
