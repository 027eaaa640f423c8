#include "intconv.h"

#include <gtest/gtest.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <random>
#include <string>

#include "random_text.hpp"

namespace {

constexpr int32_t kBases[] = {8, 10, 16};

TEST(intconv_isdigit, AcceptsTheDecimalDigitsInBases8And10WithTheirValues) {
  for (const int32_t base : {8, 10}) {
    for (int32_t c = -300; c < 600; ++c) {
      int32_t value = 77;
      const bool digit = c >= '0' && c <= '9';
      ASSERT_EQ(intconv_isdigit(c, base, &value), digit ? 1 : 0) << c;
      ASSERT_EQ(value, digit ? c - '0' : 0) << c;
    }
  }
}

TEST(intconv_isdigit, CountsOnlyTheLettersInBase16) {
  for (int32_t c = -300; c < 600; ++c) {
    int32_t value = 77;
    const bool decimal = c >= '0' && c <= '9';
    const bool upper = c >= 'A' && c <= 'F';
    const bool lower = c >= 'a' && c <= 'f';
    ASSERT_EQ(intconv_isdigit(c, 16, &value), decimal || upper || lower ? 1 : 0) << c;
    ASSERT_EQ(value, upper ? c - 'A' + 10 : lower ? c - 'a' + 10 : 0) << c;
  }
}

TEST(intconv_isdigit, KnowsNoDigitInAnyOtherBase) {
  for (const int32_t base : {INT_MIN, -10, 0, 1, 2, 7, 9, 11, 15, 17, 36, INT_MAX}) {
    int32_t value = 77;
    EXPECT_EQ(intconv_isdigit('1', base, &value), 0) << base;
    EXPECT_EQ(value, 0) << base;
  }
}

TEST(intconv_isdigit, NeedsNoPlaceForTheValue) {
  EXPECT_EQ(intconv_isdigit('1', 10, nullptr), 1);
  EXPECT_EQ(intconv_isdigit('x', 10, nullptr), 0);
}

TEST(intconv_atoi32s, ReadsBlanksASignBlanksAndDigitsAndIgnoresTheRest) {
  EXPECT_EQ(intconv_atoi32s("  -  42abc", 10, 7), -42);
  EXPECT_EQ(intconv_atoi32s(" \t 42", 10, 7), 42);
  EXPECT_EQ(intconv_atoi32s("-\t42 1", 10, 7), -42);
}

TEST(intconv_atoi32s, GivesTheDefaultForWhatIsNoNumber) {
  for (const char *text : {"", "   ", "abc", "-", "- -1", "--1", "+5", "\n5", "\r5", "\v5", ".5"}) {
    EXPECT_EQ(intconv_atoi32s(text, 10, 7), 7) << text;
  }
  EXPECT_EQ(intconv_atoi32s(nullptr, 10, -7), -7);
  EXPECT_EQ(intconv_atoi32s("5", 2, 7), 7);
}

TEST(intconv_atoi32s, WrapsAtThirtyTwoBits) {
  EXPECT_EQ(intconv_atoi32s("2147483647", 10, 0), INT32_MAX);
  EXPECT_EQ(intconv_atoi32s("2147483648", 10, 0), INT32_MIN);
  EXPECT_EQ(intconv_atoi32s("-2147483648", 10, 0), INT32_MIN);
  EXPECT_EQ(intconv_atoi32s("-2147483649", 10, 0), INT32_MAX);
  EXPECT_EQ(intconv_atoi32s("4294967296", 10, 7), 0);
  EXPECT_EQ(intconv_atoi32s("4294967297", 10, 7), 1);
}

TEST(intconv_atoi64s, AcceptsBothSignsWithBlanksAroundThem) {
  EXPECT_EQ(intconv_atoi64s("+ 9", 10, 0), 9);
  EXPECT_EQ(intconv_atoi64s(" \t+\t9", 10, 0), 9);
  EXPECT_EQ(intconv_atoi64s("- 9", 10, 0), -9);
  EXPECT_EQ(intconv_atoi64s("+-9", 10, 5), 5);
}

TEST(intconv_atoi64s, GivesTheDefaultForWhatIsNoNumber) {
  for (const char *text : {"", " ", "+", "-", "x", "\n5"}) {
    EXPECT_EQ(intconv_atoi64s(text, 10, INT64_MIN), INT64_MIN) << text;
  }
  EXPECT_EQ(intconv_atoi64s(nullptr, 10, 3), 3);
}

TEST(intconv_atoi64s, CountsOctalDigits8And9) {
  EXPECT_EQ(intconv_atoi64s("19", 8, 0), 17);
  EXPECT_EQ(intconv_atoi64s("80", 8, 0), 64);
}

TEST(intconv_atoi64s, CountsOnlyLettersInBase16) {
  EXPECT_EQ(intconv_atoi64s("ff", 16, 0), 255);
  EXPECT_EQ(intconv_atoi64s("FF", 16, 0), 255);
  EXPECT_EQ(intconv_atoi64s("1F", 16, 0), 15);
  EXPECT_EQ(intconv_atoi64s("F1", 16, 0), 240);
}

TEST(intconv_atoi64s, WrapsAtSixtyFourBits) {
  EXPECT_EQ(intconv_atoi64s("9223372036854775807", 10, 0), INT64_MAX);
  EXPECT_EQ(intconv_atoi64s("9223372036854775808", 10, 0), INT64_MIN);
  EXPECT_EQ(intconv_atoi64s("-9223372036854775808", 10, 0), INT64_MIN);
  EXPECT_EQ(intconv_atoi64s("18446744073709551617", 10, 0), 1);
}

TEST(intconv_atoi64u, AcceptsDigitsFromTheFirstCharacterOnly) {
  EXPECT_EQ(intconv_atoi64u("5x", 10, 3), 5U);
  for (const char *text : {"", " 5", "\t5", "-5", "+5", "x"}) {
    EXPECT_EQ(intconv_atoi64u(text, 10, 3), 3U) << text;
  }
  EXPECT_EQ(intconv_atoi64u(nullptr, 10, 3), 3U);
  EXPECT_EQ(intconv_atoi64u("5", 3, UINT64_MAX), UINT64_MAX);
}

TEST(intconv_atoi64u, WrapsAtSixtyFourBits) {
  EXPECT_EQ(intconv_atoi64u("18446744073709551615", 10, 0), UINT64_MAX);
  EXPECT_EQ(intconv_atoi64u("18446744073709551616", 10, 7), 0U);
}

TEST(intconv_atoi32u, GivesTheDefaultForATextThatDoesNotBeginWithADigit) {
  for (const char *text : {"", " 5", "-5", "x5"}) {
    EXPECT_EQ(intconv_atoi32u(text, 10, 9), 9U) << text;
  }
  EXPECT_EQ(intconv_atoi32u(nullptr, 10, 9), 9U);
  EXPECT_EQ(intconv_atoi32u("5", 7, 9), 9U);
}

// Calls the function with a limit of 50 ms on this process's own processor time.
void call_with_limit(int32_t base) {
  ::signal(SIGVTALRM, SIG_DFL);
  const itimerval processor_time = {{0, 0}, {0, 50000}};
  ::setitimer(ITIMER_VIRTUAL, &processor_time, nullptr);
  intconv_atoi32u("5", base, 9);
  ::_exit(0);
}

TEST(intconv_atoi32uDeathTest, DoesNotReturnForATextThatBeginsWithADigit) {
  for (const int32_t base : kBases) {
    EXPECT_EXIT(call_with_limit(base), ::testing::KilledBySignal(SIGVTALRM), "");
  }
}

TEST(intconv_i64utoa, WritesTheDigitsWithoutATerminatorBehindThem) {
  char text[32];
  std::memset(text, '?', sizeof text);
  EXPECT_EQ(intconv_i64utoa(255, 16, text), 2);
  EXPECT_EQ(std::string(text, 4), "FF??");
  std::memset(text, '?', sizeof text);
  EXPECT_EQ(intconv_i64utoa(0, 10, text), 1);
  EXPECT_EQ(std::string(text, 3), "0??");
}

TEST(intconv_i64utoa, WritesTheLargestValueInEveryBase) {
  for (const auto &[base, digits] : {std::pair<int32_t, std::string>{8, "1777777777777777777777"},
                                     {10, "18446744073709551615"},
                                     {16, "FFFFFFFFFFFFFFFF"}}) {
    char text[32] = "";
    EXPECT_EQ(intconv_i64utoa(UINT64_MAX, base, text), static_cast<int32_t>(digits.size()));
    EXPECT_EQ(text, digits);
  }
}

TEST(intconv_i64utoa, RefusesOtherBasesAndStoresAnEmptyText) {
  for (const int32_t base : {INT_MIN, -8, 0, 2, 9, 36}) {
    char text[4] = "xyz";
    EXPECT_EQ(intconv_i64utoa(255, base, text), -1);
    EXPECT_EQ(std::string(text, 3), std::string("\0yz", 3));
  }
  EXPECT_EQ(intconv_i64utoa(255, 10, nullptr), -1);
}

TEST(intconv, LeavesErrnoAlone) {
  errno = 42;
  intconv_atoi64s("99999999999999999999999", 10, 0);
  intconv_atoi32s("x", 10, 0);
  char text[32];
  intconv_i64utoa(1, 2, text);
  EXPECT_EQ(errno, 42);
}

// The rules written down one by one: what a conversion gives for a text.
template <class Unsigned>
Unsigned plain_reading(const std::string &text, int32_t base, Unsigned fallback, const std::string &signs,
                       bool blanks) {
  std::size_t at = 0;
  const auto skip = [&] {
    while (blanks && at < text.size() && (text[at] == ' ' || text[at] == '\t'))
      ++at;
  };
  skip();
  Unsigned sign = 1;
  if (at < text.size() && signs.find(text[at]) != std::string::npos) {
    if (text[at] == '-') sign = static_cast<Unsigned>(-1);
    ++at;
    skip();
  }
  int32_t digit = 0;
  if (at == text.size() || intconv_isdigit(text[at], base, &digit) == 0) return fallback;
  Unsigned value = 0;
  for (; at < text.size() && intconv_isdigit(text[at], base, &digit) != 0; ++at)
    value = static_cast<Unsigned>(value * static_cast<Unsigned>(base) + static_cast<Unsigned>(digit));
  return value * sign;
}

TEST(intconv, AgreesWithThePlainRulesOnRandomTexts) {
  std::mt19937 random(7);
  const std::string alphabet = "0123456789012345678901234567890123456789aFg+-- \t\n.";
  for (int round = 0; round < 200000; ++round) {
    const std::string text = support::random_text(random, random() % 25, alphabet);
    const int32_t base = kBases[random() % 3];
    const char *s = text.c_str();
    ASSERT_EQ(static_cast<uint32_t>(intconv_atoi32s(s, base, 7)),
              plain_reading<uint32_t>(text, base, 7, "-", true))
        << '"' << text << '"' << base;
    ASSERT_EQ(static_cast<uint64_t>(intconv_atoi64s(s, base, 7)),
              plain_reading<uint64_t>(text, base, 7, "+-", true))
        << '"' << text << '"' << base;
    ASSERT_EQ(intconv_atoi64u(s, base, 7), plain_reading<uint64_t>(text, base, 7, "", false))
        << '"' << text << '"' << base;
  }
}

TEST(intconv_i64utoa, AgreesWithPrintfOnRandomValuesOfEveryLength) {
  std::mt19937_64 random(8);
  for (int round = 0; round < 100000; ++round) {
    const uint64_t value = random() >> (random() % 64);
    for (const int32_t base : kBases) {
      char expected[32];
      std::snprintf(expected, sizeof expected, base == 8 ? "%lo" : base == 10 ? "%lu" : "%lX", value);
      char text[32] = "";
      ASSERT_EQ(intconv_i64utoa(value, base, text), static_cast<int32_t>(std::strlen(expected)));
      ASSERT_STREQ(text, expected);
    }
  }
}

}  // namespace
