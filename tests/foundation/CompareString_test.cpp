#include "CompareString.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <random>
#include <string>

#include "locale.hpp"
#include "random_text.hpp"

namespace {

// The order of two texts, written down plainly: bytes as signed numbers, upper-cased when case is ignored.
int plain_order(std::string a, std::string b, bool nocase) {
  const auto ordered = [nocase](char c) {
    return static_cast<signed char>(nocase ? std::toupper(static_cast<unsigned char>(c)) : c);
  };
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    if (ordered(a[i]) != ordered(b[i])) return ordered(a[i]) < ordered(b[i]) ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

int plain_order_of_beginnings(const std::string &a, const std::string &b, int32_t n, bool nocase) {
  const std::size_t common = n < 0 ? 0 : std::min({static_cast<std::size_t>(n), a.size(), b.size()});
  return plain_order(a.substr(0, common), b.substr(0, common), nocase);
}

bool plain_equality(const std::string &a, const std::string &b, int32_t n, bool nocase) {
  const std::size_t limit = n > 0 ? static_cast<std::size_t>(n) : std::string::npos;
  return plain_order(a.substr(0, limit), b.substr(0, limit), nocase) == 0;
}

TEST(CompareString, AgreesWithThePlainRulesOnRandomTexts) {
  std::mt19937 random(4711);
  const std::string alphabet = "aAbBzZ09_@[`{\x7f\x80\xC9\xE9\xFF";
  const auto text = [&] {
    const std::string result = support::random_text(random, random() % 9, alphabet);
    return result;
  };
  for (int round = 0; round < 200000; ++round) {
    const std::string a = text();
    const std::string b = random() % 3 == 0 ? a + text() : text();
    const auto n = static_cast<int32_t>(random() % 14) - 2;
    SCOPED_TRACE(a + " / " + b + " / " + std::to_string(n));
    ASSERT_EQ(ZfxCompareNoCase(a.c_str(), b.c_str()), plain_order(a, b, true));
    ASSERT_EQ(ZfxCompareLen(a.c_str(), b.c_str(), n), plain_order_of_beginnings(a, b, n, false));
    ASSERT_EQ(ZfxCompareLenNoCase(a.c_str(), b.c_str(), n), plain_order_of_beginnings(a, b, n, true));
    ASSERT_EQ(ZfxStrEquals(a.c_str(), b.c_str()), a == b);
    ASSERT_EQ(ZfxStrNoCaseEquals(a.c_str(), b.c_str()), plain_equality(a, b, 0, true));
    ASSERT_EQ(ZfxStrLenEquals(a.c_str(), b.c_str(), n), plain_equality(a, b, n, false));
    ASSERT_EQ(ZfxStrLenNoCaseEquals(a.c_str(), b.c_str(), n), plain_equality(a, b, n, true));
  }
}

TEST(CompareString, FindsEveryPositionOfADifferenceInLongTexts) {
  for (std::size_t length : {15U, 16U, 17U, 63U, 64U, 65U, 256U}) {
    const std::string a(length, 'q');
    for (std::size_t at = 0; at < length; ++at) {
      std::string b = a;
      b[at] = 'Q';
      ASSERT_EQ(ZfxCompareNoCase(a.c_str(), b.c_str()), 0) << length << " at " << at;
      ASSERT_EQ(ZfxCompareLen(a.c_str(), b.c_str(), INT_MAX), 1) << length << " at " << at;
      b[at] = 'R';
      ASSERT_EQ(ZfxCompareNoCase(a.c_str(), b.c_str()), -1) << length << " at " << at;
    }
  }
}

TEST(CompareString, OrdersBytesAbove127BelowAllOfAscii) {
  EXPECT_EQ(ZfxCompareNoCase("\xE9", "a"), -1);
  EXPECT_EQ(ZfxCompareLen("\xE9", "a", 1), -1);
  EXPECT_EQ(ZfxCompareLenNoCase("\xE9", "a", 1), -1);
  EXPECT_EQ(ZfxCompareLen("\x80", "\x01", 1), -1);
  EXPECT_EQ(ZfxCompareLen("\xFF", "\x80", 1), 1);
}

TEST(ZfxCompareNoCase, OrdersAPrefixBelowTheLongerText) {
  EXPECT_EQ(ZfxCompareNoCase("abc", "ABD"), -1);
  EXPECT_EQ(ZfxCompareNoCase("ab", "ABC"), -1);
  EXPECT_EQ(ZfxCompareNoCase("ABC", "ab"), 1);
  EXPECT_EQ(ZfxCompareNoCase("ABC", "abc"), 0);
}

TEST(ZfxCompareNoCase, OrdersUpperCasedLettersAndNotLowerCasedOnes) {
  EXPECT_EQ(ZfxCompareNoCase("_", "a"), 1);  // '_' lies between 'Z' and 'a'
}

TEST(ZfxCompareNoCase, CountsNullAsEmpty) {
  EXPECT_EQ(ZfxCompareNoCase(nullptr, ""), 0);
  EXPECT_EQ(ZfxCompareNoCase(nullptr, nullptr), 0);
  EXPECT_EQ(ZfxCompareNoCase(nullptr, "a"), -1);
  EXPECT_EQ(ZfxCompareNoCase("a", nullptr), 1);
}

TEST(ZfxCompareLen, FindsAPrefixEqualWhateverTheLimit) {
  EXPECT_EQ(ZfxCompareLen("abc", "ab", 5), 0);
  EXPECT_EQ(ZfxCompareLen("ab", "abc", 3), 0);
  EXPECT_EQ(ZfxCompareLenNoCase("AB", "abc", 3), 0);
}

TEST(ZfxCompareLen, ComparesNothingForNullOrALimitOfZeroOrLess) {
  for (const int32_t n : {0, -1, INT_MIN}) {
    EXPECT_EQ(ZfxCompareLen("a", "b", n), 0);
    EXPECT_EQ(ZfxCompareLenNoCase("a", "b", n), 0);
  }
  EXPECT_EQ(ZfxCompareLen(nullptr, "b", 1), 0);
  EXPECT_EQ(ZfxCompareLenNoCase("a", nullptr, 1), 0);
}

TEST(ZfxStrEquals, FindsNullEqualOnlyToNull) {
  EXPECT_EQ(ZfxStrEquals(nullptr, nullptr), 1);
  EXPECT_EQ(ZfxStrEquals("", nullptr), 0);
  EXPECT_EQ(ZfxStrEquals(nullptr, ""), 0);
  EXPECT_EQ(ZfxStrLenNoCaseEquals(nullptr, nullptr, 3), 1);
  EXPECT_EQ(ZfxStrLenEquals("", nullptr, 3), 0);
}

TEST(ZfxStrLenEquals, ComparesWithinTheLimitOnly) {
  EXPECT_EQ(ZfxStrLenEquals("abcd", "abxy", 2), 1);
  EXPECT_EQ(ZfxStrLenEquals("abcd", "abxy", 3), 0);
  EXPECT_EQ(ZfxStrLenEquals("ab", "abc", 2), 1);
  EXPECT_EQ(ZfxStrLenEquals("ab", "abc", 3), 0);
  EXPECT_EQ(ZfxStrLenEquals("ab", "abc", 0), 0);
}

TEST(CompareString, MapsLettersThroughTheUpperCaseTableOfTheLocale) {
  EXPECT_EQ(ZfxStrNoCaseEquals("\xE9", "\xC9"), 0);
  {
    const support::Locale western("en_US.ISO-8859-1");
    ASSERT_TRUE(western.in_force());
    EXPECT_EQ(ZfxStrNoCaseEquals("\xE9", "\xC9"), 1);
    EXPECT_EQ(ZfxCompareNoCase("\xE9", "\xC9"), 0);
    EXPECT_EQ(ZfxCompareNoCase("\xE9", "a"), -1);
  }
  EXPECT_EQ(ZfxStrNoCaseEquals("i", "I"), 1);
  {
    const support::Locale turkish("tr_TR.ISO-8859-9");
    ASSERT_TRUE(turkish.in_force());
    EXPECT_EQ(ZfxStrNoCaseEquals("i", "I"), 0);
    EXPECT_EQ(ZfxStrNoCaseEquals("i", "\xDD"), 1);
  }
}

TEST(CompareString, FollowsTheLocaleInEveryPartOfALongText) {
  for (const char *name : {"en_US.ISO-8859-1", "tr_TR.ISO-8859-9"}) {
    const support::Locale locale(name);
    ASSERT_TRUE(locale.in_force()) << name;
    for (std::size_t at = 0; at < 50; ++at) {
      std::string lower(50, 'a');
      std::string upper(50, 'A');
      lower[at] = '\xE9';
      upper[at] = '\xC9';
      EXPECT_EQ(ZfxCompareNoCase(lower.c_str(), upper.c_str()), 0) << name << ' ' << at;
      upper[at] = '\xC8';
      EXPECT_EQ(ZfxCompareNoCase(lower.c_str(), upper.c_str()), 1) << name << ' ' << at;
    }
  }
}

TEST(CompareString, AgreesWithThePlainRulesOnEveryPairOfBytesInEveryLocale) {
  for (const char *name : {"C", "en_US.ISO-8859-1", "tr_TR.ISO-8859-9", "fr_FR.UTF-8"}) {
    const support::Locale locale(name);
    ASSERT_TRUE(locale.in_force()) << name;
    for (int a = 1; a < 256; ++a) {
      for (int b = 1; b < 256; ++b) {
        const std::string x = "12345678" + std::string(1, static_cast<char>(a));
        const std::string y = "12345678" + std::string(1, static_cast<char>(b));
        ASSERT_EQ(ZfxCompareNoCase(x.c_str(), y.c_str()), plain_order(x, y, true))
            << name << ' ' << a << ' ' << b;
      }
    }
  }
}

}  // namespace
