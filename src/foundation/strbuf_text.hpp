// A text that grows: what stands behind a strbuf. The capacity that a caller sees follows the two growth
// rules to the byte; the block under it is larger and grows geometrically, because a new block per step costs
// 10 times a std::string.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "strbuf.h"

namespace zorvcrt {

/// What strbuf_create() makes: the public record and, behind it, the size of the block at data.
struct Text : strbuf {
  int64_t block_size;

  [[nodiscard]] std::string_view view() const {
    return {data, static_cast<std::size_t>(data == nullptr ? 0 : length)};
  }
};

inline Text &text_of(strbuf *buffer) {
  return *static_cast<Text *>(buffer);
}

inline std::size_t bytes(int64_t count) {
  return static_cast<std::size_t>(count);
}

/// A text of INT32_MAX bytes or more is never stored, so its exact length does not matter.
inline int32_t length_of(const char *text, int32_t n) {
  if (n >= 0) return n;
  return text == nullptr ? 0 : static_cast<int32_t>(std::min<std::size_t>(std::strlen(text), INT32_MAX));
}

/// Sizes are those of blocks: whole multiples of 4 bytes.
inline int64_t rounded_up(int64_t size) {
  constexpr int64_t kGranularity = 4;
  return (size + kGranularity - 1) / kGranularity * kGranularity;
}

/// Ends the text after length bytes.
inline void end_text(Text &buffer, int64_t length) {
  buffer.length = static_cast<int32_t>(length);
  buffer.end = buffer.data + length;
  *buffer.end = '\0';
}

/// Replaces the text by n bytes. Gives its address, null when it cannot be had.
char *set_text(Text &buffer, const char *text, int32_t n);

/// Makes room for n more bytes at the end, of which the caller writes the first ones himself.
bool make_room(Text &buffer, int32_t n, int32_t about_to_be_written);

/// Appends n bytes. Gives their address, null when the room cannot be had.
char *append_text(Text &buffer, const char *text, int32_t n);

bool lies_in_block(const Text &buffer, const char *text);

inline bool has_room_at_end(const Text &buffer, int32_t n) {
  return buffer.capacity - buffer.length > n && buffer.end - buffer.data + n < buffer.block_size;
}

/// Copies up to two words, which may overlap, by loads that meet in the middle.
template <class Word>
char *copy_ends(char *to, const char *from, std::size_t n) {
  Word first;
  Word last;
  std::memcpy(&first, from, sizeof first);
  std::memcpy(&last, from + n - sizeof last, sizeof last);
  std::memcpy(to, &first, sizeof first);
  std::memcpy(to + n - sizeof last, &last, sizeof last);
  return to;
}

/// The few bytes of a short piece without a call: appending single bytes would take half as long again.
inline char *copy_piece(char *to, const char *from, std::size_t n) {
  if (n > 2 * sizeof(uint64_t)) return static_cast<char *>(std::memmove(to, from, n));
  if (n >= sizeof(uint64_t)) return copy_ends<uint64_t>(to, from, n);
  if (n >= sizeof(uint32_t)) return copy_ends<uint32_t>(to, from, n);
  if (n >= sizeof(uint16_t)) return copy_ends<uint16_t>(to, from, n);
  if (n == 1) *to = *from;
  return to;
}

inline char *write_at_end(Text &buffer, const char *text, int32_t n) {
  char *const position = buffer.end;
  buffer.length += n;
  buffer.end = position + n;
  *buffer.end = '\0';
  return text == nullptr ? position : copy_piece(position, text, bytes(n));
}

}  // namespace zorvcrt
