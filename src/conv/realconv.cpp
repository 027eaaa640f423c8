// Texts to reals and back: integer arithmetic on both sides of the point, no exponent.
#include "realconv.h"

#include <algorithm>

#include "real_text.hpp"

namespace {

// isspace() of the C locale, whatever the process has set.
bool is_space(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

const char *skip_space(const char *text) {
  while (is_space(*text)) {
    ++text;
  }
  return text;
}

}  // namespace

double realconv_atof(const char *text, double default_value) {
  if (text == nullptr) return default_value;
  text = skip_space(text);
  const bool negative = *text == '-';
  if (!negative && !zorvcrt::is_decimal_digit(*text)) return default_value;
  if (negative) text = skip_space(text + 1);

  uint64_t integer = 0;
  for (; zorvcrt::is_decimal_digit(*text); ++text) {
    integer = integer * 10 + zorvcrt::decimal_digit(*text);
  }
  uint64_t fraction = 0;
  std::size_t fraction_digits = 0;
  if (*text == '.') {
    for (++text; zorvcrt::is_decimal_digit(*text); ++text, ++fraction_digits) {
      fraction = fraction * 10 + zorvcrt::decimal_digit(*text);
    }
  }
  const double value = zorvcrt::real_of_parts(integer, fraction, fraction_digits);
  return negative ? -value : value;
}

void realconv_ftoa(char *buffer, uint64_t size, double value) {
  if (buffer == nullptr || size == 0) return;
  const zorvcrt::RealText text(value);
  // A text that would end in a point needs room for the zero behind it, hence one byte less than there is.
  std::size_t length = std::min<uint64_t>(text.untrimmed().size(), size < 2 ? 0 : size - 2);
  std::memcpy(buffer, text.untrimmed().data(), length);
  while (length > 0 && buffer[length - 1] == '0') {
    --length;
  }
  if (length > 0 && buffer[length - 1] == '.') buffer[length++] = '0';
  buffer[length] = '\0';
}
