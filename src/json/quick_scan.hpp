// The scan of the tokens that well-formed documents are made of. It stands on one promise: the text ends in a
// closing bracket, so that no run of white space, digits or letters reaches its end. Null means that what
// stands there is for TokenScan to say.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "byte_block.hpp"
#include "decimal.hpp"

namespace zorvcrt {

inline bool is_json_space(char c) {
  return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}

#ifndef ZORVCRT_PORTABLE
inline constexpr std::ptrdiff_t kBlockSize = sizeof(ByteBlock);

inline unsigned find_spaces(ByteBlock block) {
  return bits_of(either(either(marks_of(block, ' '), marks_of(block, '\n')),
                        either(marks_of(block, '\t'), marks_of(block, '\r'))));
}

inline unsigned find_quotes_and_controls(ByteBlock block) {
  return bits_of(either(marks_of(block, '"'), marks_of_controls(block)));
}
#endif

/// Goes on to the next byte that is no white space.
[[gnu::always_inline]] inline const char *skip_spaces(const char *at, [[maybe_unused]] const char *limit) {
  if (static_cast<unsigned char>(*at) > ' ') return at;
  // Most often there is one, behind a colon or a comma.
  if (static_cast<unsigned char>(at[1]) > ' ' && is_json_space(*at)) return at + 1;
#ifndef ZORVCRT_PORTABLE
  // Indented text has long runs: a block at a time.
  for (; limit - at >= kBlockSize; at += kBlockSize) {
    const unsigned others = ~find_spaces(load_block(at)) & kAllBytes;
    if (others != 0) return at + static_cast<unsigned>(std::countr_zero(others));
  }
#endif
  while (is_json_space(*at)) {
    ++at;
  }
  return at;
}

/// Looks at the marked bytes behind the place in turn. True when it is said where a string ends: at a quote,
/// or nowhere (null) because of a control character.
[[gnu::always_inline]] inline bool tell_string_end(const char *at, unsigned marked, const char *&end) {
  for (; marked != 0; marked &= marked - 1) {
    end = at + static_cast<unsigned>(std::countr_zero(marked));
    if (*end != '"') end = nullptr;
    if (end == nullptr || end[-1] != '\\') return true;
  }
  return false;
}

/// Finds the quote that ends a string whose first byte behind the quote this is; null for a string that holds
/// control characters or is not closed.
[[gnu::always_inline]] inline const char *find_string_end(const char *at, const char *limit) {
#ifndef ZORVCRT_PORTABLE
  const char *end = nullptr;
  // Two blocks together: in which of them a string ends is hard to predict. One by one they take a document
  // of longer names two in a hundred more.
  for (; limit - at >= 2 * kBlockSize; at += 2 * kBlockSize) {
    const unsigned second = find_quotes_and_controls(load_block(at + kBlockSize));
    const unsigned marked = find_quotes_and_controls(load_block(at)) | second << kBlockSize;
    if (tell_string_end(at, marked, end)) return end;
  }
  for (; limit - at >= kBlockSize; at += kBlockSize) {
    if (tell_string_end(at, find_quotes_and_controls(load_block(at)), end)) return end;
  }
#endif
  for (; at != limit; ++at) {
    if (static_cast<unsigned char>(*at) < ' ') return nullptr;
    if (*at == '"' && at[-1] != '\\') return at;
  }
  return nullptr;
}

/// The number that eight bytes are, the first digit in the lowest.
inline uint64_t number_of(uint64_t digits) {
  constexpr uint64_t kPairs = 0x000000FF000000FF;
  digits = digits * 10 + (digits >> 8);  // each pair in the lower byte of two
  return ((digits & kPairs) * (100 + (uint64_t{1000000} << 32)) +
          (digits >> 16 & kPairs) * (1 + (uint64_t{10000} << 32))) >>
         32;
}

/// Gathers a run of digits, wrapping: up to eight at a time, because digit by digit each waits for the one
/// before it.
[[gnu::always_inline]] inline const char *read_digits(const char *at, const char *limit, uint64_t &value) {
  uint64_t sum = 0;
  if constexpr (std::endian::native == std::endian::little) {
    while (limit - at >= 8) {
      uint64_t digits = 0;
      std::memcpy(&digits, at, sizeof digits);
      digits ^= 0x3030303030303030;
      // The highest bit of the first byte above 9, and maybe of others behind it.
      const uint64_t others = ((digits + 0x7676767676767676) | digits) & 0x8080808080808080;
      if (others == 0) {
        sum = sum * kPowersOfTen[8] + number_of(digits);
        at += 8;
        continue;
      }
      const int bits = std::countr_zero(others) & ~7;  // of the digits before it
      const auto count = static_cast<std::size_t>(bits / 8);
      value = count == 0 ? sum : sum * kPowersOfTen[count] + number_of(digits << (64 - bits));
      return at + count;
    }
  }
  for (; is_decimal_digit(*at); ++at) {
    sum = sum * 10 + decimal_digit(*at);
  }
  value = sum;
  return at;
}

struct Number {
  bool is_real;
  union {
    int64_t integer;
    double real;
  };
};

/// Reads a number without an exponent.
[[gnu::always_inline]] inline const char *read_number(const char *at, const char *limit, Number &number) {
  const bool is_negative = *at == '-';
  if (is_negative) ++at;
  const char *const first = at;
  uint64_t integer = 0;
  if (*at == '0') {
    ++at;
  } else {
    at = read_digits(at, limit, integer);
    if (at == first) return nullptr;
  }
  number.is_real = *at == '.';
  if (number.is_real) {
    uint64_t fraction = 0;
    const char *const point = at;
    at = read_digits(point + 1, limit, fraction);
    const auto digits = static_cast<std::size_t>(at - point - 1);
    if (digits == 0) return nullptr;
    const double real = real_of_parts(integer, fraction, digits);
    number.real = is_negative ? -real : real;
  } else {
    number.integer = as_signed(is_negative ? 0 - integer : integer);
  }
  return *at == 'e' || *at == 'E' ? nullptr : at;
}

}  // namespace zorvcrt
