// The inner loops of the Base64 codec in three forms with the same results: plain, and for AVX2 and
// AVX-512 registers.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "wide_registers.hpp"

namespace zorvcrt {

inline constexpr std::string_view kBase64Alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/-";
inline constexpr std::size_t kSextets =
    64;  // the first ones of the alphabet; the '-' behind them has no role
inline constexpr char kBase64Padding = '=';
inline constexpr uint8_t kNoSextet = 0xFF;

/// The sextet of every byte value, or kNoSextet.
constexpr std::array<uint8_t, 256> make_sextet_table() {
  std::array<uint8_t, 256> table{};
  table.fill(kNoSextet);
  for (std::size_t sextet = 0; sextet < kSextets; ++sextet) {
    table[static_cast<uint8_t>(kBase64Alphabet[sextet])] = static_cast<uint8_t>(sextet);
  }
  return table;
}

/// Packs sextets into bytes, one at a time.
class SextetPacker {
 public:
  explicit SextetPacker(uint8_t *out) : out_(out) {}
  void put(uint8_t sextet) {
    bits_ = bits_ << 6 | sextet;
    if (++count_ == 4) put_group(bits_);
  }
  /// Packs a whole group; nothing may be pending.
  void put_group(uint32_t bits) {
    *out_++ = static_cast<uint8_t>(bits >> 16);
    *out_++ = static_cast<uint8_t>(bits >> 8);
    *out_++ = static_cast<uint8_t>(bits);
    bits_ = 0;
    count_ = 0;
  }
  [[nodiscard]] bool is_between_groups() const { return count_ == 0; }
  /// Packs what is pending: two sextets give a byte, three give two, a single one gives nothing.
  uint8_t *finish() {
    if (count_ == 2) *out_++ = static_cast<uint8_t>(bits_ >> 4);
    if (count_ == 3) {
      *out_++ = static_cast<uint8_t>(bits_ >> 10);
      *out_++ = static_cast<uint8_t>(bits_ >> 2);
    }
    count_ = 0;
    return out_;
  }

 private:
  uint8_t *out_;
  uint32_t bits_ = 0;
  unsigned count_ = 0;
};

/// Feed the sextets of the characters to a packer.
void base64_pack(SextetPacker &packer, const char *text, std::size_t n);

/// Encode n bytes with padding. Give the number of characters.
std::size_t base64_encode_plain(const uint8_t *data, std::size_t n, char *out);
std::size_t base64_encode_wide(const uint8_t *data, std::size_t n, char *out);
std::size_t base64_encode_widest(const uint8_t *data, std::size_t n, char *out);
inline std::size_t base64_encode(const uint8_t *data, std::size_t n, char *out) {
  if constexpr (!kPortable) {
    if (has_widest_registers()) return base64_encode_widest(data, n, out);
    if (has_wide_registers()) return base64_encode_wide(data, n, out);
  }
  return base64_encode_plain(data, n, out);
}

/// The characters in front of the first zero byte or padding character, at most limit of them.
std::size_t base64_length_plain(const char *text, std::size_t limit);
std::size_t base64_length_wide(const char *text, std::size_t limit);
std::size_t base64_length_widest(const char *text, std::size_t limit);
inline std::size_t base64_length(const char *text, std::size_t limit) {
  if constexpr (!kPortable) {
    if (has_widest_registers()) return base64_length_widest(text, limit);
    if (has_wide_registers()) return base64_length_wide(text, limit);
  }
  return base64_length_plain(text, limit);
}

/// How far a text goes: so many characters are known to be in front of its end, and so many more may be.
struct Base64Extent {
  std::size_t known;
  std::size_t unknown;
};

/// What is left of a text, whose end is looked for chunk by chunk.
struct Base64Rest {
  static constexpr std::size_t kChunk = 8192;

  const char *text;
  Base64Extent extent;

  /// Whether there are so many characters, at most a chunk.
  template <auto length>
  bool has(std::size_t count) {
    if (extent.known >= count) [[likely]] {
      return true;
    }
    if (extent.unknown == 0) return false;
    const std::size_t chunk = std::min(extent.unknown, kChunk);
    const std::size_t found = length(text + extent.known, chunk);
    extent.known += found;
    extent.unknown = found < chunk ? 0 : extent.unknown - chunk;
    return extent.known >= count;
  }
  void take(std::size_t count) {
    text += count;
    extent.known -= count;
  }

  /// How far ahead of decoding characters are to be fetched: where the end is looked for next. Without that,
  /// a text from beyond the second cache takes up to a fifth longer. 0 when the text does not go as far.
  [[nodiscard]] std::size_t ahead() const { return extent.unknown >= kChunk ? kChunk : 0; }
};

/// What is known before decoding: all of a short text; of a long one so much that a block for the limit is at
/// most eight times too large. The rest is searched chunk by chunk just in front of decoding: a text beyond
/// the second cache that is read twice takes a seventh longer, one without foreign characters a third.
inline Base64Extent base64_extent(const char *text, std::size_t limit) {
  constexpr std::size_t kShare = 8;
  if (limit <= Base64Rest::kChunk) return {base64_length(text, limit), 0};
  const std::size_t start = std::max(Base64Rest::kChunk, limit / kShare);
  const std::size_t found = base64_length(text, start);
  return {found, found < start ? 0 : limit - start};
}

/// Decode a text up to its end; characters that are not in the alphabet are skipped. Give the number of
/// bytes, at most n / 4 * 3 + 2 for n characters, known or not.
std::size_t base64_decode_plain(const char *text, Base64Extent extent, uint8_t *out);
std::size_t base64_decode_wide(const char *text, Base64Extent extent, uint8_t *out);
std::size_t base64_decode_widest(const char *text, Base64Extent extent, uint8_t *out);
inline std::size_t base64_decode(const char *text, Base64Extent extent, uint8_t *out) {
  if constexpr (!kPortable) {
    if (has_widest_registers()) return base64_decode_widest(text, extent, out);
    if (has_wide_registers()) return base64_decode_wide(text, extent, out);
  }
  return base64_decode_plain(text, extent, out);
}

}  // namespace zorvcrt
