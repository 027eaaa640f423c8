#include "NextToken.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "plain_tokenizer.hpp"
#include "random_text.hpp"

namespace {

using Fields = std::vector<std::string>;

Fields fields_of(const std::string &line, char delimiter, int32_t size = 256) {
  Fields fields;
  std::vector<char> out(static_cast<std::size_t>(size));
  int32_t position = 0;
  while (ZfxNextToken(line.c_str(), delimiter, out.data(), size, &position) == 1) {
    fields.emplace_back(out.data());
  }
  return fields;
}

TEST(ZfxNextToken, CutsAndTrimsOneFieldPerCall) {
  EXPECT_EQ(fields_of(" k = v ", '='), (Fields{"k", "v"}));
  EXPECT_EQ(fields_of("a", ','), (Fields{"a"}));
}

TEST(ZfxNextToken, JoinsAnEmptyFieldWithTheFieldBehindIt) {
  EXPECT_EQ(fields_of("a,,b", ','), (Fields{"a", ",b"}));
  EXPECT_EQ(fields_of("a, ,b", ','), (Fields{"a", ",b"}));
  EXPECT_EQ(fields_of(",,b", ','), (Fields{",", "b"}));
}

TEST(ZfxNextToken, AddsNoFieldForADelimiterAtTheVeryEnd) {
  EXPECT_EQ(fields_of("a,", ','), (Fields{"a"}));
}

TEST(ZfxNextToken, AddsAnEmptyFieldForBlanksBehindTheLastDelimiter) {
  EXPECT_EQ(fields_of("a, ", ','), (Fields{"a", ""}));
}

TEST(ZfxNextToken, FindsNothingInAnEmptyOrNullLine) {
  EXPECT_EQ(fields_of("", ','), Fields{});
  char out[8] = "before";
  int32_t position = 0;
  EXPECT_EQ(ZfxNextToken(nullptr, ',', out, sizeof out, &position), 0);
  EXPECT_STREQ(out, "");
}

TEST(ZfxNextToken, CutsALongFieldAndStillPassesOverAllOfIt) {
  EXPECT_EQ(fields_of("abcdef,gh", ',', 4), (Fields{"abc", "gh"}));
  EXPECT_EQ(fields_of("abc,gh", ',', 4), (Fields{"abc", "gh"}));
  EXPECT_EQ(fields_of("ab,gh", ',', 4), (Fields{"ab", "gh"}));
}

TEST(ZfxNextToken, WritesNothingBeyondTheGivenSize) {
  for (int32_t size = 1; size < 6; ++size) {
    char out[8];
    std::memset(out, '?', sizeof out);
    int32_t position = 0;
    ZfxNextToken("abcdefgh,x", ',', out, size, &position);
    EXPECT_EQ(std::strlen(out), static_cast<std::size_t>(size - 1));
    EXPECT_EQ(out[size], '?');
  }
}

TEST(ZfxNextToken, ToleratesMissingAreasAndOffsetsOutsideTheLine) {
  char out[8] = "";
  int32_t position = 100;
  EXPECT_EQ(ZfxNextToken("ab", ',', out, sizeof out, &position), 0);
  EXPECT_EQ(position, 2);
  position = INT_MIN;
  EXPECT_EQ(ZfxNextToken("ab", ',', out, sizeof out, &position), 1);
  EXPECT_STREQ(out, "ab");
  EXPECT_EQ(ZfxNextToken("ab,c", ',', out, sizeof out, nullptr), 1);
  position = 0;
  EXPECT_EQ(ZfxNextToken("ab", ',', nullptr, 8, &position), 1);
  for (const int32_t size : {0, -1, INT_MIN}) {
    std::strcpy(out, "same");
    position = 0;
    EXPECT_EQ(ZfxNextToken("ab", ',', out, size, &position), 1);
    EXPECT_STREQ(out, "same");
  }
}

TEST(ZfxNextToken, AgreesWithThePlainRuleOnRandomLines) {
  std::mt19937 random(20261121);
  const std::string alphabet = "ab, \t=";
  for (int round = 0; round < 200000; ++round) {
    const std::string line = support::random_text(random, random() % 12, alphabet);
    const auto size = static_cast<int32_t>(1 + random() % 6);
    plain::Tokenizer model{line, ',', static_cast<std::size_t>(size - 1)};
    int32_t position = 0;
    for (;;) {
      char out[8];
      const bool more = model.next();
      ASSERT_EQ(ZfxNextToken(line.c_str(), ',', out, size, &position), more ? 1 : 0) << '"' << line << '"';
      ASSERT_EQ(out, model.token) << '"' << line << "\" size " << size;
      ASSERT_EQ(static_cast<std::size_t>(position), model.position) << '"' << line << '"';
      if (!more) break;
    }
  }
}

}  // namespace
