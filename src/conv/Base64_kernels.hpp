// The inner loops of the Base64 codec in three forms with the same results: plain, and for AVX2 and
// AVX-512 registers.
#pragma once

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

/// Decode n characters, none of them padding; those that are not in the alphabet are skipped. Give the number
/// of bytes, at most n / 4 * 3 + 2.
std::size_t base64_decode_plain(const char *text, std::size_t n, uint8_t *out);
std::size_t base64_decode_wide(const char *text, std::size_t n, uint8_t *out);
std::size_t base64_decode_widest(const char *text, std::size_t n, uint8_t *out);
inline std::size_t base64_decode(const char *text, std::size_t n, uint8_t *out) {
  if constexpr (!kPortable) {
    if (has_widest_registers()) return base64_decode_widest(text, n, out);
    if (has_wide_registers()) return base64_decode_wide(text, n, out);
  }
  return base64_decode_plain(text, n, out);
}

}  // namespace zorvcrt
