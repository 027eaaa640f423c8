// Eight characters of a fixed form, such as "00:00:00", checked and turned into digits in one step.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zorvcrt {

static_assert(std::endian::native == std::endian::little, "the first character is the lowest byte");

/// The values of the digits of a block, each at its place; 0 elsewhere.
class DigitBlock {
 public:
  constexpr explicit DigitBlock(uint64_t bytes) : bytes_(bytes), pairs_(bytes * 10 + (bytes >> 8)) {}

  /// The digit at a place from 0, and the number of the two digits from there on.
  [[nodiscard]] constexpr int32_t digit(unsigned place) const { return byte_of(bytes_, place); }
  [[nodiscard]] constexpr int32_t pair(unsigned place) const { return byte_of(pairs_, place); }

 private:
  // A product and sum of digits stays below 100, so that no byte spills into the next.
  static constexpr int32_t byte_of(uint64_t bytes, unsigned place) {
    return static_cast<int32_t>(bytes >> (8 * place) & 0xFF);
  }

  uint64_t bytes_;
  uint64_t pairs_;
};

/// A form of eight characters: '0' stands for a digit, '?' for any character, all others for themselves.
class BlockPattern {
 public:
  consteval explicit BlockPattern(const char (&form)[9]) {
    for (unsigned place = 0; place < 8; ++place) {
      const char c = form[place];
      const bool is_any = c == '?';
      set_byte(compared_, place, is_any ? 0 : 0xFF);
      set_byte(expected_, place, is_any ? 0 : static_cast<unsigned char>(c));
      // What is left of a matching character, 0 to 9 for a digit and 0 for others, does not reach 0x80 with
      // this.
      set_byte(headroom_, place, is_any ? 0 : c == '0' ? 0x80 - 10 : 0x80 - 1);
    }
  }

  /// The bytes of eight characters that are left when the form is taken away.
  [[nodiscard]] uint64_t difference(const char *text) const {
    uint64_t bytes = 0;
    std::memcpy(&bytes, text, sizeof bytes);
    return (bytes ^ expected_) & compared_;
  }

  /// Tells whether a difference is that of characters which have the form.
  [[nodiscard]] bool matches(uint64_t difference) const {
    return (((difference + headroom_) | difference) & kHighBits) == 0;
  }

 private:
  static constexpr uint64_t kHighBits = 0x8080808080808080;

  static consteval void set_byte(uint64_t &bytes, unsigned place, unsigned value) {
    bytes |= static_cast<uint64_t>(value) << (8 * place);
  }

  uint64_t compared_ = 0;
  uint64_t expected_ = 0;
  uint64_t headroom_ = 0;
};

}  // namespace zorvcrt
