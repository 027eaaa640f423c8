// The exported string buffer over the growing text of strbuf_text.
#include "strbuf.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

#include "handles.hpp"
#include "small_block.hpp"
#include "strbuf_text.hpp"
#include "whitespace.hpp"

namespace {

using zorvcrt::append_text;
using zorvcrt::bytes;
using zorvcrt::end_text;
using zorvcrt::length_of;
using zorvcrt::set_text;
using zorvcrt::Text;
using zorvcrt::text_of;

constexpr std::size_t kFormatArea = STRBUF_FORMAT_MAX + 1;

// The bytes to be taken of a text; of one that lies in the buffer's own block, no more than that holds.
int32_t length_within(const Text &buffer, const char *text, int32_t n) {
  const int32_t length = length_of(text, n);
  if (length <= 0 || !zorvcrt::lies_in_block(buffer, text)) return length;
  return static_cast<int32_t>(std::min<int64_t>(length, buffer.data + buffer.block_size - text));
}

// Kept out of append_in_block() so that it saves few registers.
[[gnu::noinline]] char *append_any(Text &buffer, const char *text, int32_t n) {
  return append_text(buffer, text, length_within(buffer, text, n));
}

// The step that a short append often takes. Kept out of line so that strbuf_append() needs no stack frame for
// its usual case.
[[gnu::noinline]] char *append_in_block(Text &buffer, const char *text, int32_t n) {
  if (n > 0 && buffer.length > 0 && text != nullptr && !zorvcrt::lies_in_block(buffer, text) &&
      zorvcrt::grow_in_block(buffer, n)) {
    return zorvcrt::write_at_end(buffer, text, n);
  }
  return append_any(buffer, text, n);
}

zorvcrt::UniqueMalloc<char> copy_of(std::string_view text) {
  return zorvcrt::UniqueMalloc<char>(zorvcrt::new_text(text));
}

// Puts text between the first position bytes and the rest; false when memory is short.
bool insert_text(Text &buffer, const char *text, int32_t n, int32_t position) {
  const std::string_view tail(buffer.data + position, bytes(buffer.length - position));
  const auto saved = copy_of(tail);
  if (!saved) return false;
  end_text(buffer, position);
  const auto tail_length = static_cast<int32_t>(tail.size());
  const bool inserted = append_text(buffer, text, n) != nullptr;
  if (inserted && (tail_length == 0 || append_text(buffer, saved.get(), tail_length) != nullptr)) return true;
  end_text(buffer, position);
  append_text(buffer, saved.get(), tail_length);
  return false;
}

// Where a text ends, to come back to when a change fails half-way.
struct Ending {
  explicit Ending(const Text &buffer)
      : length(buffer.length), end(buffer.data == nullptr ? 0 : buffer.end - buffer.data) {}
  // The bytes in front of the end are there still, or again.
  void restore(Text &buffer) const {
    buffer.length = length;
    buffer.end = buffer.data + end;
    buffer.reach = buffer.end;
    std::memset(buffer.data + length, 0, bytes(end - length + 1));
  }

  int32_t length;
  int64_t end;  // behind the length after a trim
};

// Formats into the area; gives vsnprintf's count, with the area left empty when it refuses.
ZFX_PRINTF(2, 0)
int32_t format_into(std::array<char, kFormatArea> &area, const char *format, va_list arguments) {
  area[0] = '\0';
  if (format == nullptr) return 0;
  const int count = std::vsnprintf(area.data(), area.size(), format, arguments);
  if (count < 0) area[0] = '\0';
  return count;
}

int32_t bytes_in_area(int32_t count) {
  return std::clamp(count, 0, STRBUF_FORMAT_MAX);
}

bool ends_in(const char *ending, const char *text, int32_t n) {
  // Not memcmp, which may read on after the first difference, where a text shorter than n has ended.
  for (int32_t i = 0; i < n; ++i) {
    if (ending[i] != text[i]) return false;
  }
  return true;
}

}  // namespace

strbuf *strbuf_create(int32_t step, const char *text) {
  auto buffer = zorvcrt::allocate_record<Text>();
  if (!buffer) return nullptr;
  buffer->step = std::max(step, 1);
  set_text(*buffer, text, length_of(text, -1));
  return buffer.release();
}

void strbuf_destroy(strbuf *buffer) {
  if (buffer == nullptr) return;
  ZfxMemFree(buffer->data);
  ZfxMemFree(buffer->scratch);
  ZfxMemFree(buffer);
}

char *strbuf_set_str(strbuf *buffer, const char *text, int32_t n) {
  if (buffer == nullptr) return nullptr;
  Text &self = text_of(buffer);
  return set_text(self, text, length_within(self, text, n));
}

void strbuf_clear(strbuf *buffer) {
  if (buffer == nullptr) return;
  if (buffer->capacity < 1) {
    set_text(text_of(buffer), "", 0);
  } else if (buffer->length > 0) {
    end_text(text_of(buffer), 0);
  }
}

void strbuf_copy(strbuf *destination, const strbuf *source) {
  if (destination == nullptr || destination == source) return;
  set_text(text_of(destination), strbuf_get(source), static_cast<int32_t>(strbuf_length(source)));
}

// At the beginning of a cache line: elsewhere single bytes take up to a third longer, depending on the place.
[[gnu::aligned(64)]] char *strbuf_append(strbuf *buffer, const char *text, int32_t n) {
  if (buffer == nullptr) return nullptr;
  Text &self = text_of(buffer);
  // The usual case at once; the rest of the family goes through append_text().
  if (zorvcrt::is_within_reach(self, n) && (n == 1 || !zorvcrt::lies_behind_text(self, text))) {
    return zorvcrt::write_at_end(self, text, n);
  }
  return append_in_block(self, text, n);
}

int32_t strbuf_reserve(strbuf *buffer, int32_t n) {
  return buffer != nullptr && zorvcrt::make_room(text_of(buffer), n, 0) ? 0 : -1;
}

void strbuf_insert(strbuf *buffer, const char *text, int32_t n, int32_t position) {
  if (buffer == nullptr) return;
  Text &self = text_of(buffer);
  const int32_t count = length_within(self, text, n);
  position = std::max(position, 0);
  // The text may be part of what is about to move.
  zorvcrt::UniqueMalloc<char> copy;
  if (count > 0 && zorvcrt::lies_in_block(self, text)) {
    copy = copy_of({text, bytes(count)});
    if (!copy) return;
    text = copy.get();
  }
  const Ending before(self);
  if (position >= self.length && append_text(self, text, count) == nullptr) return;
  if (!insert_text(self, text, count, std::min(position, self.length))) before.restore(self);
}

uint32_t strbuf_length(const strbuf *buffer) {
  return buffer == nullptr ? 0 : static_cast<uint32_t>(buffer->length);
}

char *strbuf_get(const strbuf *buffer) {
  return buffer == nullptr ? nullptr : buffer->data;
}

uint8_t strbuf_getat(const strbuf *buffer, int32_t index) {
  if (buffer == nullptr || buffer->data == nullptr || index < 0 || index >= buffer->length) return 0;
  return static_cast<uint8_t>(buffer->data[index]);
}

char *strbuf_detach(strbuf *buffer) {
  if (buffer == nullptr) return nullptr;
  Text &self = text_of(buffer);
  char *text = self.data;
  if (text != nullptr) {
    const int64_t size =
        std::max<int64_t>(zorvcrt::rounded_up(int64_t{self.capacity} + 1), self.end - text + 1);
    void *fitted = size < self.block_size ? ZfxMemRealloc(text, bytes(size)) : nullptr;
    if (fitted != nullptr) text = static_cast<char *>(fitted);
  }
  const int32_t step = self.step;
  self = Text{};
  self.step = step;
  set_text(self, "", 0);
  return text;
}

int32_t strbuf_format(strbuf *buffer, const char *format, ...) {
  if (buffer == nullptr) return -1;
  strbuf_clear(buffer);
  std::array<char, kFormatArea> area;
  va_list arguments;
  va_start(arguments, format);
  const int32_t count = format_into(area, format, arguments);
  va_end(arguments);
  set_text(text_of(buffer), area.data(), bytes_in_area(count));
  return count;
}

int32_t strbuf_append_format(strbuf *buffer, const char *format, ...) {
  if (buffer == nullptr) return -1;
  std::array<char, kFormatArea> area;
  va_list arguments;
  va_start(arguments, format);
  const int32_t count = format_into(area, format, arguments);
  va_end(arguments);
  append_text(text_of(buffer), area.data(), bytes_in_area(count));
  return count;
}

char *strbuf_getBufferSetLength(strbuf *buffer, int32_t n) {
  if (buffer == nullptr) return nullptr;
  const int32_t size = n >= 1 ? n : buffer->step;
  ZfxMemFree(buffer->scratch);
  buffer->scratch = static_cast<char *>(ZfxMemAlloc(bytes(size)));
  buffer->scratch_size = buffer->scratch == nullptr ? 0 : size;
  if (buffer->scratch != nullptr) {
    ZfxMemCopy(buffer->scratch, buffer->data, bytes(std::min(buffer->length, size - 1)));
  }
  return buffer->scratch;
}

void strbuf_releaseBuffer(strbuf *buffer, int32_t keep, int32_t n) {
  if (buffer == nullptr || buffer->scratch == nullptr) return;
  const zorvcrt::UniqueBlock<char> scratch(std::exchange(buffer->scratch, nullptr));
  const int32_t size = std::exchange(buffer->scratch_size, 0);
  if (keep == 0) return;
  const auto filled = static_cast<int32_t>(::strnlen(scratch.get(), bytes(size)));
  set_text(text_of(buffer), scratch.get(), n < 0 ? filled : std::min(n, size));
}

int32_t strbuf_compareNoCase(const strbuf *buffer, const char *text) {
  const char *own = strbuf_get(buffer);
  return ::strcasecmp(own == nullptr ? "" : own, text == nullptr ? "" : text);
}

int32_t strbuf_endswith(const strbuf *buffer, const char *text, int32_t n, int32_t nocase) {
  const int32_t count = length_of(text, n);
  if (buffer == nullptr || buffer->length < count) return 0;
  if (count == 0) return 1;
  if (text == nullptr) return 0;
  const char *ending = buffer->data + buffer->length - count;
  const bool same =
      nocase != 0 ? ::strncasecmp(ending, text, bytes(count)) == 0 : ends_in(ending, text, count);
  return same ? 1 : 0;
}

uint32_t strbuf_ltrunc(strbuf *buffer, int32_t n) {
  if (buffer == nullptr) return 0;
  if (n < 1) return strbuf_length(buffer);
  if (n >= buffer->length) {
    strbuf_clear(buffer);
    return 0;
  }
  const int32_t kept = buffer->length - n;
  std::memmove(buffer->data, buffer->data + n, bytes(kept));
  end_text(text_of(buffer), kept);
  return static_cast<uint32_t>(kept);
}

void strbuf_trim(strbuf *buffer) {
  if (buffer == nullptr || buffer->data == nullptr) return;
  const std::string_view text = text_of(buffer).view();
  const std::string_view kept = zorvcrt::trimmed(text);
  std::memmove(buffer->data, kept.data(), kept.size());
  std::memset(buffer->data + kept.size(), 0, text.size() - kept.size());
  buffer->length = static_cast<int32_t>(kept.size());
  text_of(buffer).reach = buffer->end;
}
