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

/// What strbuf_create() makes: the public record and, behind it, what only the library looks at.
struct Text : strbuf {
  int64_t block_size;  // of the block at data
  char *reach;         // appending up to here changes no capacity; the same as end when that is not known

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
  buffer.reach = buffer.end;
  *buffer.end = '\0';
}

/// Replaces the text by n bytes. Gives its address, null when it cannot be had.
char *set_text(Text &buffer, const char *text, int32_t n);

/// Makes room for n more bytes at the end, of which the caller writes the first ones himself.
bool make_room(Text &buffer, int32_t n, int32_t about_to_be_written);

/// Appends n bytes. Gives their address, null when the room cannot be had.
char *append_text(Text &buffer, const char *text, int32_t n);

inline bool lies_in_block(const Text &buffer, const char *text) {
  const auto address = reinterpret_cast<uintptr_t>(text);
  const auto block = reinterpret_cast<uintptr_t>(buffer.data);
  return address >= block && address < block + bytes(buffer.block_size);
}

/// Whether a text begins where the block goes on behind the buffer's own text. It may not be all there.
inline bool lies_behind_text(const Text &buffer, const char *text) {
  const auto address = reinterpret_cast<uintptr_t>(text);
  return address >= reinterpret_cast<uintptr_t>(buffer.end) &&
         address < reinterpret_cast<uintptr_t>(buffer.data) + bytes(buffer.block_size);
}

/// The capacity for length bytes: the next whole number of steps above them.
inline int64_t capacity_above(uint32_t length, int32_t step) {
  const auto width = static_cast<uint32_t>(step);
  // Most steps are powers of two, and a division takes as long as all the rest of a short append.
  if ((width & (width - 1)) == 0) return int64_t{length & ~(width - 1)} + step;
  return (int64_t{length / width} + 1) * step;
}

/// Finds out how far appending to a text that is not empty reaches without growing. Behind a trimmed text the
/// block can end before the capacity does.
inline void find_reach(Text &buffer) {
  const int64_t free_bytes =
      std::min<int64_t>(buffer.capacity - buffer.length, buffer.block_size - (buffer.end - buffer.data));
  buffer.reach = buffer.end + free_bytes - 1;
}

/// Whether n is positive and that many bytes are known to fit behind the end of the text without growing. One
/// comparison of what find_reach() has kept: with those that it stands for, single bytes take a tenth longer.
inline bool is_within_reach(const Text &buffer, int32_t n) {
  return static_cast<uint64_t>(int64_t{n} - 1) < static_cast<uint64_t>(buffer.reach - buffer.end);
}

/// Grows for n bytes that are about to be written, where the block reaches that far already: a third of the
/// time of make_room(), which is felt where steps are short. Otherwise nothing changes.
inline bool grow_in_block(Text &buffer, int32_t n) {
  constexpr int64_t kCleared = 32;  // at once, rather than by a call of memset()
  constexpr int64_t kLongestFree = kCleared - 4;
  const int64_t kept = int64_t{buffer.length} + n;
  const int64_t capacity = capacity_above(static_cast<uint32_t>(kept + 1), buffer.step);
  if (kept < buffer.capacity || capacity > INT32_MAX) return false;
  if (capacity - kept > kLongestFree || kept + kCleared > buffer.block_size) return false;
  buffer.end = buffer.data + buffer.length;
  buffer.capacity = static_cast<int32_t>(capacity);
  buffer.reach = buffer.data + capacity - 1;
  std::memset(buffer.data + kept, 0, kCleared);
  return true;
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

/// The few bytes of a short piece without a call, and single ones first: with a call they would take twice as
/// long.
inline char *copy_piece(char *to, const char *from, std::size_t n) {
  if (n == 1) [[likely]] {
    *to = *from;
    return to;
  }
  if (n > 2 * sizeof(uint64_t)) return static_cast<char *>(std::memmove(to, from, n));
  if (n >= sizeof(uint64_t)) return copy_ends<uint64_t>(to, from, n);
  if (n >= sizeof(uint32_t)) return copy_ends<uint32_t>(to, from, n);
  return n == 0 ? to : copy_ends<uint16_t>(to, from, n);
}

inline char *write_at_end(Text &buffer, const char *text, int32_t n) {
  char *const position = buffer.end;
  buffer.length += n;
  buffer.end = position + n;
  *buffer.end = '\0';
  return text == nullptr ? position : copy_piece(position, text, bytes(n));
}

}  // namespace zorvcrt
