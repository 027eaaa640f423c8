// Looking up names of three letters, as of months and weekdays, by one multiplication and one comparison.
// Comparing with each name in turn doubles the time of a mail date.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace zorvcrt {

static_assert(std::endian::native == std::endian::little, "the first character is the lowest byte");

/// N names, at most half as many as there are places, each at a place of its own.
template <std::size_t N>
class NameTable {
 public:
  static constexpr std::size_t kNameLength = 3;

  /// Searches a multiplier that sends every name to another place; a set of names without one does not
  /// compile.
  consteval explicit NameTable(const std::array<std::string_view, N> &names) {
    while (!place_all(names)) {
      multiplier_ += kStep;
    }
  }

  /// The number of the name that the text begins with, from 1 in the order of the names; 0 for none.
  [[nodiscard]] constexpr int32_t find(std::string_view text) const {
    if (text.size() < kNameLength) return 0;
    const uint32_t key = key_of(text);
    const Place &place = places_[place_of(key)];
    return place.key == key ? place.number : 0;
  }

 private:
  struct Place {
    uint32_t key = 0;
    int32_t number = 0;
  };

  static constexpr unsigned kPlaceBits = 5;
  static constexpr uint32_t kStep =
      0x9E3779B2;  // even, so that all multipliers are odd; spreads over all bits

  static constexpr uint32_t byte_of(char c) { return static_cast<unsigned char>(c); }
  static constexpr uint32_t key_of(std::string_view text) {
    if (std::is_constant_evaluated()) {
      return byte_of(text[0]) | byte_of(text[1]) << 8 | byte_of(text[2]) << 16;
    }
    uint16_t first_two = 0;  // at once: byte by byte a mail date takes a tenth longer
    std::memcpy(&first_two, text.data(), sizeof first_two);
    return first_two | byte_of(text[2]) << 16;
  }
  [[nodiscard]] constexpr std::size_t place_of(uint32_t key) const {
    return key * multiplier_ >> (32 - kPlaceBits);
  }

  consteval bool place_all(const std::array<std::string_view, N> &names) {
    places_ = {};
    for (std::size_t i = 0; i < N; ++i) {
      Place &place = places_[place_of(key_of(names[i]))];
      if (place.number != 0) return false;
      place = {key_of(names[i]), static_cast<int32_t>(i) + 1};
    }
    return true;
  }

  uint32_t multiplier_ = 1;
  std::array<Place, std::size_t{1} << kPlaceBits> places_{};
};

template <std::size_t N>
NameTable(const std::array<std::string_view, N> &) -> NameTable<N>;

}  // namespace zorvcrt
