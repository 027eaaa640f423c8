// Handles and their stack of input buffers.
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "fixed_text.hpp"
#include "scanner.h"
#include "scanner_state.hpp"
#include "small_block.hpp"

namespace zorvcrt {

namespace {

constexpr int32_t kDefaultSpace = 16384;
constexpr int32_t kStackStep = 8;

// Space behind the bytes of a buffer for its two end markers.
constexpr std::size_t kEndMarkers = 2;

// Makes the top of the stack the one that is read.
void load_current(zjson_scanner &scanner) {
  if (const zjson_buffer *buffer = scanner.current(); buffer != nullptr) scanner.in = buffer->stream;
}

void add_slot(zjson_scanner &scanner) {
  if (scanner.buffer_count == scanner.buffer_room) {
    const int32_t room = scanner.buffer_room + kStackStep;
    void *grown = std::realloc(scanner.buffers, static_cast<std::size_t>(room) * sizeof(zjson_buffer *));
    if (grown == nullptr) end_process("out of dynamic memory in yyensure_buffer_stack()");
    scanner.buffers = static_cast<zjson_buffer **>(grown);
    scanner.buffer_room = room;
  }
  scanner.buffers[scanner.buffer_count++] = nullptr;
}

void set_current(zjson_scanner &scanner, zjson_buffer *buffer) {
  restore_text(scanner);
  if (scanner.buffer_count == 0) add_slot(scanner);
  scanner.buffers[scanner.buffer_count - 1] = buffer;
  load_current(scanner);
}

zjson_buffer *new_buffer(const char *message) {
  auto *buffer = new_record<zjson_buffer>();
  if (buffer == nullptr) end_process(message);
  buffer->line = 1;
  return buffer;
}

void forget_bytes(zjson_buffer &buffer) {
  buffer.cursor = buffer.limit = buffer.area;
  buffer.is_fresh = true;
  buffer.has_ended = !buffer.reads;
}

// Lets a buffer read a stream from now on; one that had bytes of its own, or a caller's, gets space for it.
void restart_buffer(zjson_buffer &buffer, FILE *stream) {
  if (!buffer.reads) {
    auto *area = static_cast<char *>(std::malloc(static_cast<std::size_t>(kDefaultSpace) + kEndMarkers));
    if (area == nullptr) end_process("out of dynamic memory in yy_create_buffer()");
    if (buffer.owns_area) std::free(buffer.area);
    buffer.area = area;
    buffer.size = kDefaultSpace;
    buffer.owns_area = true;
    buffer.reads = true;
  }
  buffer.stream = stream;
  forget_bytes(buffer);
}

void release_buffer(zjson_buffer *buffer) {
  if (buffer->owns_area) std::free(buffer->area);
  std::free(buffer);
}

// A buffer for all the bytes of an area behind which two zeros stand.
zjson_buffer *new_buffer_for(char *area, std::size_t length, bool owned, zjson_scanner &scanner) {
  zjson_buffer *buffer = new_buffer("out of dynamic memory in yy_scan_buffer()");
  buffer->area = buffer->cursor = area;
  buffer->limit = area + length;
  buffer->owns_area = owned;
  buffer->has_ended = true;
  set_current(scanner, buffer);
  return buffer;
}

}  // namespace

zjson_buffer &begin_scanning(zjson_scanner &scanner) {
  if (!scanner.has_begun) {
    scanner.has_begun = true;
    if (scanner.in == nullptr) scanner.in = stdin;
    if (scanner.out == nullptr) scanner.out = stdout;
  }
  zjson_buffer *buffer = scanner.current();
  if (buffer == nullptr) {
    buffer = zjson__create_buffer(scanner.in, kDefaultSpace, &scanner);
    set_current(scanner, buffer);
  }
  return *buffer;
}

}  // namespace zorvcrt

int32_t zjson_lex_init(zjson_scanner **scanner) {
  return zjson_lex_init_extra(nullptr, scanner);
}

int32_t zjson_lex_init_extra(void *extra, zjson_scanner **scanner) {
  if (scanner == nullptr) {
    errno = EINVAL;
    return 1;
  }
  *scanner = zorvcrt::new_record<zjson_scanner>();
  if (*scanner == nullptr) {
    errno = ENOMEM;
    return 1;
  }
  (*scanner)->extra = extra;
  return 0;
}

int32_t zjson_lex_destroy(zjson_scanner *scanner) {
  if (scanner == nullptr) return 0;
  while (scanner->buffer_count > 0) {
    zjson_pop_buffer_state(scanner);
  }
  std::free(scanner->buffers);
  std::free(scanner);
  return 0;
}

zjson_buffer *zjson__scan_bytes(const char *bytes, int32_t length, zjson_scanner *scanner) {
  if (scanner == nullptr) return nullptr;
  const std::size_t size = bytes == nullptr || length < 0 ? 0 : static_cast<std::size_t>(length);
  auto *area = static_cast<char *>(std::malloc(size + zorvcrt::kEndMarkers));
  if (area == nullptr) zorvcrt::end_process("out of dynamic memory in yy_scan_bytes()");
  if (size != 0) std::memcpy(area, bytes, size);
  std::memset(area + size, 0, zorvcrt::kEndMarkers);
  return zorvcrt::new_buffer_for(area, size, true, *scanner);
}

zjson_buffer *zjson__scan_string(const char *text, zjson_scanner *scanner) {
  // A text that is longer than a length can say is scanned up to there.
  return zjson__scan_bytes(text, static_cast<int32_t>(::strnlen(zorvcrt::view_of(text).data(), INT32_MAX)),
                           scanner);
}

zjson_buffer *zjson__scan_buffer(char *base, uint64_t size, zjson_scanner *scanner) {
  if (base == nullptr || scanner == nullptr || size < zorvcrt::kEndMarkers) return nullptr;
  if (base[size - 2] != '\0' || base[size - 1] != '\0') return nullptr;
  return zorvcrt::new_buffer_for(base, size - zorvcrt::kEndMarkers, false, *scanner);
}

zjson_buffer *zjson__create_buffer(FILE *stream, int32_t size, zjson_scanner *scanner) {
  if (scanner == nullptr) return nullptr;
  constexpr const char *kNoMemory = "out of dynamic memory in yy_create_buffer()";
  zjson_buffer *buffer = zorvcrt::new_buffer(kNoMemory);
  buffer->size = size < 1 ? zorvcrt::kDefaultSpace : size;
  buffer->area =
      static_cast<char *>(std::malloc(static_cast<std::size_t>(buffer->size) + zorvcrt::kEndMarkers));
  if (buffer->area == nullptr) zorvcrt::end_process(kNoMemory);
  buffer->owns_area = true;
  buffer->reads = true;
  buffer->stream = stream;
  zorvcrt::forget_bytes(*buffer);
  return buffer;
}

void zjson__switch_to_buffer(zjson_buffer *buffer, zjson_scanner *scanner) {
  if (buffer == nullptr || scanner == nullptr || buffer == scanner->current()) return;
  zorvcrt::set_current(*scanner, buffer);
}

void zjson__delete_buffer(zjson_buffer *buffer, zjson_scanner *scanner) {
  if (buffer == nullptr || scanner == nullptr) return;
  zorvcrt::restore_text(*scanner);
  for (int32_t i = 0; i < scanner->buffer_count; ++i) {
    if (scanner->buffers[i] == buffer) scanner->buffers[i] = nullptr;
  }
  zorvcrt::release_buffer(buffer);
}

void zjson__flush_buffer(zjson_buffer *buffer, zjson_scanner *scanner) {
  if (buffer == nullptr || scanner == nullptr) return;
  zorvcrt::restore_text(*scanner);
  zorvcrt::forget_bytes(*buffer);
  if (buffer == scanner->current()) zorvcrt::load_current(*scanner);
}

void zjson_push_buffer_state(zjson_buffer *buffer, zjson_scanner *scanner) {
  if (buffer == nullptr || scanner == nullptr) return;
  if (scanner->current() != nullptr) zorvcrt::add_slot(*scanner);
  zorvcrt::set_current(*scanner, buffer);
}

void zjson_pop_buffer_state(zjson_scanner *scanner) {
  if (scanner == nullptr || scanner->buffer_count == 0) return;
  zjson__delete_buffer(scanner->current(), scanner);
  --scanner->buffer_count;
  zorvcrt::load_current(*scanner);
}

void zjson_restart(FILE *stream, zjson_scanner *scanner) {
  if (scanner == nullptr) return;
  zjson_buffer *buffer = scanner->current();
  if (buffer == nullptr) {
    buffer = zjson__create_buffer(stream, zorvcrt::kDefaultSpace, scanner);
    zorvcrt::set_current(*scanner, buffer);
  }
  zorvcrt::restore_text(*scanner);
  zorvcrt::restart_buffer(*buffer, stream);
  zorvcrt::load_current(*scanner);
}
