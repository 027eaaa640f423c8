// Texts to integers and back against the rules said again, the C library's own functions where they agree.
#include <cctype>
#include <cerrno>
#include <cstdlib>

#include "check.hpp"
#include "input.hpp"
#include "intconv.h"

namespace {

// The value of a digit in the base, or -1.
int plain_digit(int c, int base) {
  if (base != 8 && base != 10 && base != 16) return -1;
  if (c >= '0' && c <= '9') return base == 16 ? 0 : c - '0';
  if (base == 16 && c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (base == 16 && c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

struct Parsed {
  bool has_digits = false;
  uint64_t magnitude = 0;  // wrapped
  bool is_negative = false;
};

Parsed plain_parsed(const std::string &text, int base, const std::string &signs) {
  Parsed parsed;
  std::size_t at = 0;
  const auto skip_blanks = [&] {
    while (!signs.empty() && at < text.size() && (text[at] == ' ' || text[at] == '\t')) {
      ++at;
    }
  };
  skip_blanks();
  if (at < text.size() && signs.find(text[at]) != std::string::npos) {
    parsed.is_negative = text[at++] == '-';
    skip_blanks();
  }
  for (; at < text.size() && plain_digit(text[at], base) >= 0; ++at) {
    parsed.has_digits = true;
    parsed.magnitude =
        parsed.magnitude * static_cast<unsigned>(base) + static_cast<unsigned>(plain_digit(text[at], base));
  }
  return parsed;
}

template <class Integer>
Integer value_of(const Parsed &parsed, Integer default_value) {
  if (!parsed.has_digits) return default_value;
  return static_cast<Integer>(parsed.is_negative ? 0 - parsed.magnitude : parsed.magnitude);
}

// Where the text is one that strtoll() reads in the same way, its value is the same.
void compare_with_library(const std::string &text, int64_t default_value) {
  const std::size_t first = text.find_first_not_of("-+");
  if (first > 1 || first == std::string::npos || std::isdigit(static_cast<unsigned char>(text[first])) == 0)
    return;
  errno = 0;
  const long long expected = std::strtoll(text.c_str(), nullptr, 10);
  if (errno == 0)
    fuzz::check_equal(intconv_atoi64s(text.c_str(), 10, default_value), int64_t{expected}, "strtoll");
}

void write(uint64_t value, int32_t base) {
  char text[24] = {};
  const int32_t count = intconv_i64utoa(value, base, text);
  char expected[24] = {};
  int length = -1;
  if (base == 8) length = std::snprintf(expected, sizeof expected, "%lo", value);
  if (base == 10) length = std::snprintf(expected, sizeof expected, "%lu", value);
  if (base == 16) length = std::snprintf(expected, sizeof expected, "%lX", value);
  fuzz::check_equal(count, length, "number of digits");
  fuzz::check_equal(std::string(text), std::string(expected), "digits");
  if (base == 10) fuzz::check_equal(intconv_atoi64u(text, base, 1), value, "digits read again");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  constexpr int32_t kBases[] = {10, 8, 16, 2};
  const int32_t base = kBases[input.byte() % 4];
  const auto fallback = input.integer<int64_t>();
  const std::string text = fuzz::c_text(input.rest());
  const auto copy = fuzz::exact_copy(text.c_str(), text.size() + 1);

  fuzz::check_equal(intconv_atoi32s(copy.get(), base, static_cast<int32_t>(fallback)),
                    value_of(plain_parsed(text, base, "-"), static_cast<int32_t>(fallback)), "32 bits");
  fuzz::check_equal(intconv_atoi64s(copy.get(), base, fallback),
                    value_of(plain_parsed(text, base, "-+"), fallback), "64 bits");
  fuzz::check_equal(intconv_atoi64u(copy.get(), base, static_cast<uint64_t>(fallback)),
                    value_of(plain_parsed(text, base, ""), static_cast<uint64_t>(fallback)),
                    "64 bits unsigned");
  if (text.empty() || plain_digit(text[0], base) < 0) {  // else it does not return
    fuzz::check_equal(intconv_atoi32u(copy.get(), base, static_cast<uint32_t>(fallback)),
                      static_cast<uint32_t>(fallback), "32 bits unsigned");
  }
  compare_with_library(text, fallback);
  for (const int32_t output_base : kBases) {
    write(static_cast<uint64_t>(fallback), output_base);
  }
  for (const char c : text) {
    int32_t value = -1;
    const int expected = plain_digit(c, base);
    fuzz::check_equal(intconv_isdigit(c, base, &value) != 0, expected >= 0, "digit");
    fuzz::check_equal(value, expected < 0 ? 0 : expected, "value of a digit");
  }
  return 0;
}
