// Texts to reals and back against the rules said again with the C library's printf.
#include <bit>
#include <cmath>
#include <cstdlib>

#include "check.hpp"
#include "input.hpp"
#include "realconv.h"

namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;

bool is_digit(const std::string &text, std::size_t at) {
  return at < text.size() && text[at] >= '0' && text[at] <= '9';
}

double plain_read(const std::string &text, double default_value) {
  std::size_t at = 0;
  const auto skip_space = [&] {
    while (at < text.size() && std::string(" \t\n\v\f\r").find(text[at]) != std::string::npos) {
      ++at;
    }
  };
  const auto gather = [&](uint64_t &power) {
    uint64_t value = 0;
    for (power = 1; is_digit(text, at); ++at, power *= 10) {
      value = value * 10 + static_cast<uint64_t>(text[at] - '0');
    }
    return static_cast<double>(static_cast<int64_t>(value));
  };
  skip_space();
  const bool is_negative = at < text.size() && text[at] == '-';
  if (!is_negative && !is_digit(text, at)) return default_value;
  if (is_negative) ++at;
  if (is_negative) skip_space();
  uint64_t power = 1;
  double value = gather(power);
  if (at < text.size() && text[at] == '.' && is_digit(text, at + 1)) {
    ++at;
    const double fraction = gather(power);
    const auto divisor = static_cast<double>(static_cast<int64_t>(power));
    if (fraction != 0 && divisor == 0) {
      value = std::signbit(fraction) ? -HUGE_VAL : HUGE_VAL;
    } else if (fraction != 0) {
      value += fraction / divisor;
    }
  }
  return is_negative ? -value : value;
}

// A text within the digits that count is what strtod() reads, but for the rounding of the sum.
void compare_with_library(const std::string &text, double got) {
  const std::size_t point = text.find('.');
  if (text.find_first_not_of("0123456789.") != std::string::npos || text.size() > 16 || point == 0 ||
      point == std::string::npos) {
    return;
  }
  const double expected = std::strtod(text.c_str(), nullptr);
  if (text.find('.', point + 1) != std::string::npos) return;
  fuzz::check(std::fabs(got - expected) <= std::fabs(expected) * 4e-16, "as near as strtod()");
}

std::string plain_written(double value, std::size_t size) {
  std::string text;
  if (std::isnan(value)) {
    text = "0.0";
  } else if (std::fabs(value) >= kTwoTo63) {
    text = value < 0 ? "-9223372036854775807.0" : "9223372036854775807.0";
  } else {
    const double magnitude = std::fabs(value);
    const auto whole = static_cast<int64_t>(magnitude);
    const auto fraction = static_cast<int64_t>((magnitude - static_cast<double>(whole)) * 1e16);
    text = (value < 0 ? "-" : "") + std::to_string(whole) + "." + std::to_string(fraction);
  }
  text = text.substr(0, size - 2);
  while (!text.empty() && text.back() == '0') {
    text.pop_back();
  }
  if (!text.empty() && text.back() == '.') text += '0';
  return text;
}

void write(double value, std::size_t size) {
  const auto area = std::make_unique<char[]>(size);
  realconv_ftoa(area.get(), size, value);
  fuzz::check_equal(std::string(area.get()), plain_written(value, size), "written real");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  const auto value = std::bit_cast<double>(input.integer<uint64_t>());
  const auto room = static_cast<std::size_t>(input.within(2, 64));
  write(value, room);
  write(value, 64);

  const std::string text = fuzz::c_text(input.rest());
  const auto copy = fuzz::exact_copy(text.c_str(), text.size() + 1);
  const double got = realconv_atof(copy.get(), 12.5);
  const double expected = plain_read(text, 12.5);
  fuzz::check_equal(std::bit_cast<uint64_t>(got), std::bit_cast<uint64_t>(expected), "bits of the real");
  compare_with_library(text, got);
  write(got, 64);
  return 0;
}
