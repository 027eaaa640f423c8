// The data lines of uuencode, with the room rules that callers size their areas by.
#include "uu.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "uu_kernels.hpp"

namespace {

using zorvcrt::kUuLineBytes;
using zorvcrt::kUuLineCharacters;

constexpr std::size_t kLineLimit = 80;      // characters of a line that count
constexpr std::size_t kLastLineLimit = 79;  // of a last line without a newline
constexpr std::size_t kLongestLine = 84;    // characters of data that a length character can stand for
constexpr int64_t kFullLine = kUuLineCharacters + 1;  // with the length character
constexpr int64_t kFullLineBytes = kUuLineBytes;

// The caller's area, written from the front.
struct Output {
  char *area;
  int64_t size;
  int64_t position;
};

// Writes one line; false when its groups do not all fit.
bool encode_line(const uint8_t *data, int64_t count, Output &out) {
  std::array<uint8_t, kUuLineBytes> padded{};
  std::memcpy(padded.data(), data, static_cast<std::size_t>(count));
  if (out.position < out.size) out.area[out.position] = zorvcrt::uu_character(static_cast<uint32_t>(count));
  if (out.size <= out.position + 4) return false;
  const int64_t groups = (count + 2) / 3;
  const int64_t fitting = (out.size - 5 - out.position) / 4 + 1;
  char *to = out.area + out.position + 1;
  for (int64_t i = 0; i < std::min(groups, fitting); ++i) {
    zorvcrt::uu_encode_group(padded.data() + i * 3, to + i * 4);
  }
  if (groups > fitting) return false;
  to[groups * 4] = '\n';
  out.position += groups * 4 + 2;
  return true;
}

void encode_full_line(const uint8_t *data, Output &out) {
  char *to = out.area + out.position;
  *to++ = zorvcrt::uu_character(kUuLineBytes);
  zorvcrt::uu_encode_line(data, to);
  to[kUuLineCharacters] = '\n';
  out.position += kFullLine + 1;
}

// Cuts the next line off the text; what of it counts is in line.
std::string_view next_line(std::string_view text, std::string_view &line) {
  const std::size_t newline = text.find('\n');
  const bool is_last = newline == std::string_view::npos;
  const std::size_t length = is_last ? text.size() : newline;
  line = {text.data(), std::min(length, is_last ? kLastLineLimit : kLineLimit)};
  text.remove_prefix(is_last ? length : length + 1);
  return text;
}

// Decodes the groups behind the length character; false when they do not all fit.
bool decode_line(std::string_view line, int64_t count, Output &out) {
  std::array<char, kLongestLine> characters;
  characters.fill(' ');
  std::memcpy(characters.data(), line.data() + 1, std::min(line.size() - 1, characters.size()));
  for (const char *group = characters.data(); count > 0; count -= 3, group += 4) {
    const int64_t bytes = std::min<int64_t>(count, 3);
    if (out.size - out.position < bytes) return false;
    const uint32_t value = zorvcrt::uu_decode_group(group);
    for (int64_t i = 0; i < bytes; ++i) {
      out.area[out.position++] = static_cast<char>(value >> (16 - 8 * i) & 0xFF);
    }
  }
  return true;
}

// Decodes the full line that the text begins with; false when it begins with anything else. Looking for the
// end of each line first takes a quarter longer.
bool decode_full_line(std::string_view text, Output &out) {
  constexpr std::size_t kNewline = kUuLineCharacters + 1;
  const bool ends_there = text.size() > kNewline && text[kNewline] == '\n';
  if (!ends_there || zorvcrt::uu_sextet(text[0]) != kUuLineBytes) return false;
  if (out.size - out.position < kFullLineBytes) return false;
  auto *to = static_cast<uint8_t *>(static_cast<void *>(out.area + out.position));
  if (!zorvcrt::uu_decode_line(text.data() + 1, to)) return false;
  out.position += kFullLineBytes;
  return true;
}

}  // namespace

int32_t zfx_uuencode(const void *data, int32_t n, char *out, int32_t size) {
  const auto *bytes = static_cast<const uint8_t *>(data);
  if (bytes == nullptr) return 0;
  Output output{out, out == nullptr ? 0 : size, 0};
  for (int64_t left = n; left > 0;) {
    const int64_t count = std::min(left, kFullLineBytes);
    if (count == kFullLineBytes && output.size - output.position >= kFullLine) {
      encode_full_line(bytes, output);
    } else if (!encode_line(bytes, count, output)) {
      return 1;
    }
    bytes += count;
    left -= count;
  }
  return 0;
}

int32_t zfx_uudecode(const char *text, int32_t /*unused*/, void *out, int32_t size) {
  if (text == nullptr) return 0;
  Output output{static_cast<char *>(out), out == nullptr ? 0 : size, 0};
  std::string_view line;
  for (std::string_view rest = text; !rest.empty();) {
    if (decode_full_line(rest, output)) {
      rest.remove_prefix(kUuLineCharacters + 2);
      continue;
    }
    rest = next_line(rest, line);
    const int64_t count = line.empty() ? 0 : zorvcrt::uu_sextet(line[0]);
    if (count == 0) return 0;
    if (!decode_line(line, count, output)) return 1;
  }
  return 0;
}
