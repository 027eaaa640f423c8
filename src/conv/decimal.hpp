// Decimal digits to numbers and back: the parts that the conversions and the JSON scanner and serializer
// share.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace zorvcrt {

/// The value of a decimal digit; 10 or more for every other character.
constexpr unsigned decimal_digit(char c) {
  return static_cast<unsigned char>(c) - unsigned{'0'};
}

constexpr bool is_decimal_digit(char c) {
  return decimal_digit(c) < 10;
}

/// The signed number whose bits these are: how unsigned arithmetic, which may wrap, is read back.
constexpr int64_t as_signed(uint64_t bits) {
  return static_cast<int64_t>(bits);
}

/// The most digits of a fraction for which ten to their number, modulo 2^64, is not 0.
inline constexpr std::size_t kMostFractionDigits = 63;

/// Ten to the power of the index as a wrapping signed 64-bit integer has it.
inline constexpr auto kFractionDivisors = [] {
  std::array<double, kMostFractionDigits + 1> divisors{};
  uint64_t power = 1;
  for (double &divisor : divisors) {
    divisor = static_cast<double>(as_signed(power));
    power *= 10;
  }
  return divisors;
}();

/// The real made of an integer part and the digits of a fraction, both gathered in wrapping arithmetic.
inline double real_of_parts(uint64_t integer, uint64_t fraction, std::size_t fraction_digits) {
  const auto whole = static_cast<double>(as_signed(integer));
  if (fraction == 0) return whole;
  const auto numerator = static_cast<double>(as_signed(fraction));
  if (fraction_digits > kMostFractionDigits) {  // what a division by the 0 that the divisor has become gives
    return numerator < 0 ? -std::numeric_limits<double>::infinity() : std::numeric_limits<double>::infinity();
  }
  return whole + numerator / kFractionDivisors[fraction_digits];
}

/// The texts of 0 to 99, two digits each.
inline constexpr auto kDigitPairs = [] {
  std::array<char, 200> pairs{};
  for (std::size_t i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

/// Ten to the power of the index.
inline constexpr auto kPowersOfTen = [] {
  std::array<uint64_t, 20> powers{};
  uint64_t power = 1;
  for (uint64_t &entry : powers) {
    entry = power;
    power *= 10;
  }
  return powers;
}();

/// The number of decimal digits of a number.
inline int decimal_digit_count(uint64_t value) {
  // The digits of the largest number with as many bits, or one less: 1233 / 4096 is the logarithm of 2.
  const int below = static_cast<int>(std::bit_width(value | 1)) * 1233 >> 12;
  return below + ((value | 1) >= kPowersOfTen[static_cast<std::size_t>(below)] ? 1 : 0);
}

/// Writes a number in decimal so that it ends before @p end, which has 20 bytes before it; returns where it
/// begins.
inline char *write_decimal_before(char *end, uint64_t value) {
  while (value >= 100) {
    end -= 2;
    std::memcpy(end, &kDigitPairs[2 * (value % 100)], 2);
    value /= 100;
  }
  if (value >= 10) {
    end -= 2;
    std::memcpy(end, &kDigitPairs[2 * value], 2);
    return end;
  }
  *--end = static_cast<char>('0' + value);
  return end;
}

/// Writes a signed number in decimal, up to 20 bytes; returns the end.
inline char *write_decimal(char *text, int64_t value) {
  auto bits = static_cast<uint64_t>(value);
  if (value < 0) {
    bits = 0 - bits;
    *text++ = '-';
  }
  char *const end = text + decimal_digit_count(bits);
  write_decimal_before(end, bits);
  return end;
}

/// A signed number in decimal, as "%lld" prints it, in an area of its own.
class DecimalText {
 public:
  explicit DecimalText(int64_t value) {
    const auto bits = static_cast<uint64_t>(value);
    begin_ = write_decimal_before(area_.data() + area_.size(), value < 0 ? 0 - bits : bits);
    if (value < 0) *--begin_ = '-';
  }
  DecimalText(const DecimalText &) = delete;
  DecimalText &operator=(const DecimalText &) = delete;

  [[nodiscard]] const char *data() const { return begin_; }
  [[nodiscard]] std::size_t size() const {
    return static_cast<std::size_t>(area_.data() + area_.size() - begin_);
  }

 private:
  std::array<char, 20> area_;  // the digits of 2^63 and a sign
  char *begin_;
};

}  // namespace zorvcrt
