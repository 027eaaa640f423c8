// Texts to integers and back. Each conversion is a template over the base, so that the loop over the digits
// knows it; values gather in unsigned arithmetic, which wraps as the contract has it.
#include "intconv.h"

#include <array>
#include <bit>
#include <cstring>

#include "decimal.hpp"

namespace {

enum Base : int32_t { kOctal = 8, kDecimal = 10, kHexadecimal = 16 };

constexpr uint8_t kNoDigit = 255;

// The values that count in base 16, or kNoDigit: the digits '1' to '9' count 0.
constexpr auto kHexadecimalValues = [] {
  std::array<uint8_t, 256> values{};
  values.fill(kNoDigit);
  for (std::size_t digit = 0; digit < 10; ++digit) {
    values['0' + digit] = 0;
  }
  for (std::size_t letter = 0; letter < 6; ++letter) {
    values['A' + letter] = values['a' + letter] = static_cast<uint8_t>(letter + 10);
  }
  return values;
}();

template <Base kBase>
uint32_t digit_value(char c) {
  if constexpr (kBase == kHexadecimal) {
    return kHexadecimalValues[static_cast<unsigned char>(c)];
  } else {
    return zorvcrt::is_decimal_digit(c) ? zorvcrt::decimal_digit(c) : kNoDigit;
  }
}

// Runs the function for the base, as a template argument; gives the fallback for any other base. Inlined,
// since handing the arguments of a conversion to it takes longer than converting a short number.
template <class Result, class Function>
[[gnu::always_inline]] inline Result for_base(int32_t base, Result fallback, Function function) {
  if (base == kDecimal) return function.template operator()<kDecimal>();
  if (base == kHexadecimal) return function.template operator()<kHexadecimal>();
  return base == kOctal ? function.template operator()<kOctal>() : fallback;
}

const char *skip_blanks(const char *text) {
  while (*text == ' ' || *text == '\t') {
    ++text;
  }
  return text;
}

template <Base kBase>
constexpr int kDigitBits = kBase == kOctal ? 3 : 4;

template <Base kBase>
int32_t digit_count(uint64_t value) {
  if constexpr (kBase == kDecimal) {
    return zorvcrt::decimal_digit_count(value);
  } else {
    return (static_cast<int32_t>(std::bit_width(value | 1)) + kDigitBits<kBase> - 1) / kDigitBits<kBase>;
  }
}

// The texts of all numbers of two digits: a digit at a time takes half as long again.
template <Base kBase>
constexpr auto kDigitPairs = [] {
  std::array<char, std::size_t{2} * kBase * kBase> pairs{};
  for (std::size_t i = 0; i < pairs.size(); i += 2) {
    pairs[i] = "0123456789ABCDEF"[i / 2 / kBase];
    pairs[i + 1] = "0123456789ABCDEF"[i / 2 % kBase];
  }
  return pairs;
}();

template <Base kBase>
void write_digits_before(char *end, uint64_t value) {
  if constexpr (kBase == kDecimal) {
    zorvcrt::write_decimal_before(end, value);
  } else {
    constexpr uint64_t kPairs = kDigitPairs<kBase>.size() / 2;
    for (; value >= kPairs; value /= kPairs) {
      end -= 2;
      std::memcpy(end, &kDigitPairs<kBase>[value % kPairs * 2], 2);
    }
    *--end = kDigitPairs<kBase>[value * 2 + 1];
    if (value >= kBase) *--end = kDigitPairs<kBase>[value * 2];
  }
}

template <class Unsigned>
Unsigned read_digits(const char *text, int32_t base, Unsigned default_value, bool negative) {
  return for_base(base, default_value, [&]<Base kBase>() {
    uint32_t digit = digit_value<kBase>(*text);
    if (digit == kNoDigit) return default_value;
    Unsigned value = 0;
    for (const char *next = text; digit != kNoDigit; digit = digit_value<kBase>(*++next)) {
      value = value * kBase + digit;
    }
    return negative ? 0 - value : value;
  });
}

template <class Unsigned>
Unsigned read_signed(const char *text, int32_t base, Unsigned default_value, bool plus_accepted) {
  if (text == nullptr) return default_value;
  // most texts begin with a digit
  if (zorvcrt::is_decimal_digit(*text)) return read_digits(text, base, default_value, false);
  text = skip_blanks(text);
  const bool negative = *text == '-';
  if (negative || (plus_accepted && *text == '+')) text = skip_blanks(text + 1);
  return read_digits(text, base, default_value, negative);
}

}  // namespace

int32_t intconv_isdigit(int32_t character, int32_t base, int32_t *value) {
  if (value != nullptr) *value = 0;
  if (character < 0 || character > INT8_MAX) return 0;
  return for_base(base, 0, [&]<Base kBase>() {
    const uint32_t digit = digit_value<kBase>(static_cast<char>(character));
    if (digit == kNoDigit) return 0;
    if (value != nullptr) *value = static_cast<int32_t>(digit);
    return 1;
  });
}

int32_t intconv_atoi32s(const char *text, int32_t base, int32_t default_value) {
  return static_cast<int32_t>(read_signed(text, base, static_cast<uint32_t>(default_value), false));
}

uint32_t intconv_atoi32u(const char *text, int32_t base, uint32_t default_value) {
  if (text == nullptr) return default_value;
  // The promise: a first digit is looked at again and again. It is read as volatile, so that the compiler may
  // neither drop the loop nor think that it ends.
  const volatile char *first = text;
  while (intconv_isdigit(*first, base, nullptr) != 0) {
  }
  return default_value;
}

int64_t intconv_atoi64s(const char *text, int32_t base, int64_t default_value) {
  return static_cast<int64_t>(read_signed(text, base, static_cast<uint64_t>(default_value), true));
}

uint64_t intconv_atoi64u(const char *text, int32_t base, uint64_t default_value) {
  return text == nullptr ? default_value : read_digits(text, base, default_value, false);
}

int32_t intconv_i64utoa(uint64_t value, int32_t base, char *text) {
  if (text == nullptr) return -1;
  *text = '\0';
  return for_base(base, -1, [&]<Base kBase>() {
    const int32_t count = digit_count<kBase>(value);
    write_digits_before<kBase>(text + count, value);
    return count;
  });
}
