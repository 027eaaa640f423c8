// The text of a real: integer part, point, and the fraction's first 16 digits as a plain number.
#pragma once

#include <cmath>
#include <string_view>

#include "decimal.hpp"

namespace zorvcrt {

/// The text that realconv_ftoa() gives in a large enough area, in an area of its own.
class RealText {
 public:
  explicit RealText(double value) {
    const Parts parts = split(std::fabs(value));
    char *const end = area_.data() + kTextEnd;
    char *begin = write_decimal_before(end, parts.fraction);
    *--begin = '.';
    begin = write_decimal_before(begin, parts.integer);
    if (value < 0) *--begin = '-';
    untrimmed_ = {begin, static_cast<std::size_t>(end - begin)};
  }
  RealText(const RealText &) = delete;
  RealText &operator=(const RealText &) = delete;

  /// The text before its trailing zeros are removed.
  [[nodiscard]] std::string_view untrimmed() const { return untrimmed_; }

  /// The text without its trailing zeros, except one right behind the point.
  [[nodiscard]] std::string_view view() const {
    std::string_view text = untrimmed_;
    while (text.back() == '0') {
      text.remove_suffix(1);
    }
    // Behind the point stands a digit: the zero that was just left out, when there was no other.
    return text.back() == '.' ? std::string_view(text.data(), text.size() + 1) : text;
  }

 private:
  struct Parts {
    uint64_t integer;
    uint64_t fraction;
  };

  static constexpr double kFractionScale = 1e16;
  static constexpr double kIntegerLimit = 0x1p63;
  static constexpr std::size_t kTextEnd = 40;

  // Magnitudes without an integer part of 63 bits are held at the largest one; no number counts as 0.
  static Parts split(double magnitude) {
    if (!(magnitude < kIntegerLimit)) {
      return {std::isnan(magnitude) ? 0 : uint64_t{std::numeric_limits<int64_t>::max()}, 0};
    }
    const auto integer = static_cast<int64_t>(magnitude);
    const double fraction = (magnitude - static_cast<double>(integer)) * kFractionScale;
    return {static_cast<uint64_t>(integer), static_cast<uint64_t>(static_cast<int64_t>(fraction))};
  }

  std::array<char, kTextEnd> area_;  // a sign, 19 digits, the point, 16 digits
  std::string_view untrimmed_;
};

}  // namespace zorvcrt
