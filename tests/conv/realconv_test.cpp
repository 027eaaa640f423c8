#include "realconv.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "locale.hpp"
#include "random_text.hpp"

namespace {

std::string text_of(double value, std::size_t size = 64) {
  std::vector<char> buffer(size, '?');
  realconv_ftoa(buffer.data(), size, value);
  EXPECT_NE(std::memchr(buffer.data(), 0, size), nullptr);
  return buffer.data();
}

TEST(realconv_atof, ReadsASignIntegerPartAndFraction) {
  EXPECT_EQ(realconv_atof(" -1.25x", 0), -1.25);
  EXPECT_EQ(realconv_atof("10.5", 0), 10.5);
  EXPECT_EQ(realconv_atof("007", 0), 7.0);
}

TEST(realconv_atof, SkipsAllWhiteSpaceBeforeAndBehindTheSign) {
  EXPECT_EQ(realconv_atof(" \t\n\v\f\r- \t\n\v\f\r2.5", 0), -2.5);
}

TEST(realconv_atof, GivesTheDefaultForWhatBeginsWithNeitherADigitNorAMinus) {
  for (const char *text : {"+1.5", ".5", "abc", "", "  ", "inf", "nan"}) {
    EXPECT_EQ(realconv_atof(text, 9), 9.0) << text;
  }
  EXPECT_EQ(realconv_atof(nullptr, 9), 9.0);
}

TEST(realconv_atof, EndsAtAPointWithoutADigitBehindIt) {
  EXPECT_EQ(realconv_atof("3.", 0), 3.0);
  EXPECT_EQ(realconv_atof("3.x5", 0), 3.0);
  EXPECT_EQ(realconv_atof("3. 5", 0), 3.0);
}

TEST(realconv_atof, ReadsNoExponent) {
  EXPECT_EQ(realconv_atof("1e5", 0), 1.0);
  EXPECT_EQ(realconv_atof("1.5E3", 0), 1.5);
}

TEST(realconv_atof, GivesNegativeZeroForAMinusWithoutDigits) {
  for (const char *text : {"-", "-x", "-0", "-0.0", "- "}) {
    const double value = realconv_atof(text, 9);
    EXPECT_EQ(value, 0.0) << text;
    EXPECT_TRUE(std::signbit(value)) << text;
  }
}

TEST(realconv_atof, ReadsAFractionBehindAMinusWithoutAnIntegerPart) {
  EXPECT_EQ(realconv_atof("-.5", 0), -0.5);
}

TEST(realconv_atof, WrapsAnIntegerPartBeyondSixtyThreeBits) {
  EXPECT_EQ(realconv_atof("9223372036854775807", 0), 9223372036854775807.0);
  EXPECT_EQ(realconv_atof("9223372036854775808", 0), -9223372036854775808.0);
  EXPECT_EQ(realconv_atof("18446744073709551617", 0), 1.0);
}

TEST(realconv_atof, IsExactUpToEighteenFractionDigitsAndWrapsBehindThem) {
  EXPECT_EQ(realconv_atof("0.000000000000000001", 0), 1e-18);
  EXPECT_EQ(realconv_atof("0.123456789012345678", 0), 123456789012345678.0 / 1e18);
  const auto wrapped = static_cast<double>(static_cast<int64_t>(10000000000000000000ULL));
  EXPECT_EQ(realconv_atof("0.1000000000000000000", 0), 1000000000000000000.0 / wrapped);
}

TEST(realconv_atof, BecomesInfiniteWhenTheDivisorHasWrappedToZero) {
  const std::string zeros(63, '0');
  EXPECT_TRUE(std::isfinite(realconv_atof(("0." + zeros.substr(1) + "1").c_str(), 0)));
  EXPECT_EQ(realconv_atof(("0." + zeros + "1").c_str(), 0), std::numeric_limits<double>::infinity());
  EXPECT_EQ(realconv_atof(("0." + zeros + "0").c_str(), 5), 0.0);
}

// The rules written down one by one, with the fraction's power of ten multiplied out.
double plain_reading(const std::string &text, double fallback) {
  std::size_t at = 0;
  const auto skip = [&] { at = std::min(text.find_first_not_of(" \t\n\v\f\r", at), text.size()); };
  const auto digit = [&](std::size_t i) { return i < text.size() && text[i] >= '0' && text[i] <= '9'; };
  skip();
  const bool minus = at < text.size() && text[at] == '-';
  if (!minus && !digit(at)) return fallback;
  if (minus) {
    ++at;
    skip();
  }
  uint64_t integer = 0;
  for (; digit(at); ++at)
    integer = integer * 10 + static_cast<uint64_t>(text[at] - '0');
  double value = static_cast<double>(static_cast<int64_t>(integer));
  if (at < text.size() && text[at] == '.' && digit(at + 1)) {
    uint64_t fraction = 0;
    uint64_t power = 1;
    for (++at; digit(at); ++at) {
      fraction = fraction * 10 + static_cast<uint64_t>(text[at] - '0');
      power *= 10;
    }
    if (fraction != 0)
      value += static_cast<double>(static_cast<int64_t>(fraction)) /
               static_cast<double>(static_cast<int64_t>(power));
  }
  return minus ? -value : value;
}

TEST(realconv_atof, AgreesWithThePlainRulesOnRandomTexts) {
  std::mt19937 random(9);
  const std::string alphabet = "0123456789012345678901234567890123456789-. \te";
  for (int round = 0; round < 300000; ++round) {
    std::string text = support::random_text(random, random() % 40, alphabet);
    if (round % 2 == 0) text = std::to_string(random() % 1000) + "." + text;
    const double expected = plain_reading(text, 7);
    const double value = realconv_atof(text.c_str(), 7);
    ASSERT_EQ(std::memcmp(&value, &expected, sizeof value), 0) << '"' << text << "\" " << value;
  }
}

TEST(realconv_ftoa, WritesTheFractionWithoutItsLeadingZeros) {
  EXPECT_EQ(text_of(1.05), "1.5");
  EXPECT_EQ(text_of(1.0625), "1.625");
}

TEST(realconv_ftoa, WritesThePlainForms) {
  EXPECT_EQ(text_of(0), "0.0");
  EXPECT_EQ(text_of(100), "100.0");
  EXPECT_EQ(text_of(10.5), "10.5");
  EXPECT_EQ(text_of(-2.25), "-2.25");
  EXPECT_EQ(text_of(-0.0), "0.0");
  EXPECT_EQ(text_of(-0.5), "-0.5");
}

TEST(realconv_ftoa, KeepsTheResidueOfAFractionThatIsNotExact) {
  EXPECT_EQ(text_of(3.14159).substr(0, 16), "3.14158999999999");
}

TEST(realconv_ftoa, HoldsValuesBeyondSixtyThreeBitsAtTheLargestInteger) {
  EXPECT_EQ(text_of(std::nextafter(0x1p63, 0)), "9223372036854774784.0");
  for (const double value : {0x1p63, 1e300, std::numeric_limits<double>::infinity()}) {
    EXPECT_EQ(text_of(value), "9223372036854775807.0");
    EXPECT_EQ(text_of(-value), "-9223372036854775807.0");
  }
  EXPECT_EQ(text_of(std::numeric_limits<double>::quiet_NaN()), "0.0");
}

// The steps written down with printf.
std::string plain_text(double value, std::size_t size) {
  const double magnitude = std::fabs(value);
  const auto integer = static_cast<long long>(magnitude);
  const auto fraction = static_cast<long long>((magnitude - static_cast<double>(integer)) * 1e16);
  char area[64];
  std::snprintf(area, sizeof area, "%s%lld.%lld", value < 0 ? "-" : "", integer, fraction);
  std::string text = std::string(area).substr(0, size - 2);  // what a printf bounded by size - 1 leaves
  text.erase(text.find_last_not_of('0') + 1);
  if (!text.empty() && text.back() == '.') text += '0';
  return text;
}

TEST(realconv_ftoa, CutsToTheSizeBeforeItRemovesZeros) {
  EXPECT_EQ(text_of(100, 5), "1");
  EXPECT_EQ(text_of(0, 3), "");
  EXPECT_EQ(text_of(7, 4), "7.0");
  for (const double value : {0.0, 100.0, -2.25, 10.5, 3.14159, -1234567.000125, 0x1p62}) {
    for (std::size_t size = 2; size < 45; ++size) {
      EXPECT_EQ(text_of(value, size), plain_text(value, size)) << value << " in " << size;
    }
  }
}

TEST(realconv_ftoa, WritesNothingBeyondTheSize) {
  for (std::size_t size = 0; size < 45; ++size) {
    char buffer[64];
    std::memset(buffer, '?', sizeof buffer);
    realconv_ftoa(buffer, size, -123456789.123456789);
    EXPECT_EQ(std::string(buffer + size, sizeof buffer - size), std::string(sizeof buffer - size, '?'));
    if (size == 1) {
      EXPECT_EQ(buffer[0], '\0');
    }
  }
  realconv_ftoa(nullptr, 64, 1);
}

TEST(realconv_ftoa, AgreesWithThePlainStepsOnRandomValues) {
  std::mt19937_64 random(10);
  for (int round = 0; round < 200000; ++round) {
    const double scale = std::ldexp(1.0, static_cast<int>(random() % 126) - 63);
    double value = std::ldexp(static_cast<double>(static_cast<int64_t>(random())), -63) * scale;
    if (round % 4 == 0) value = static_cast<double>(random() % 1000000) / 1000.0;
    ASSERT_EQ(text_of(value), plain_text(value, 64)) << value;
  }
}

TEST(realconv, IsTheSameInEveryLocale) {
  const support::Locale locale("fr_FR.UTF-8");
  EXPECT_EQ(text_of(10.5), "10.5");
  EXPECT_EQ(realconv_atof("10.5", 0), 10.5);
}

TEST(realconv, LeavesErrnoAlone) {
  errno = 42;
  realconv_atof("1e999", 0);
  text_of(1e300);
  EXPECT_EQ(errno, 42);
}

}  // namespace
