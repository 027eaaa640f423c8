#include "format.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

namespace {

TEST(string_format, ReturnsTheBufferSoThatItCanStandInAnExpression) {
  char buffer[32];
  EXPECT_EQ(string_format(buffer, sizeof buffer, "%s-%d", "a", 7), buffer);
  EXPECT_STREQ(string_format(buffer, sizeof buffer, "%s-%d", "a", 7), "a-7");
}

TEST(string_format, CutsWhatDoesNotFitAndAlwaysTerminates) {
  const std::string text = "12345";
  for (int32_t size = 1; size <= 8; ++size) {
    char buffer[16];
    std::memset(buffer, '?', sizeof buffer);
    string_format(buffer, size, "%s", text.c_str());
    EXPECT_EQ(buffer, text.substr(0, static_cast<std::size_t>(size - 1)));
    EXPECT_EQ(buffer[size], '?');
  }
}

TEST(string_format, WritesNothingWithoutAnArea) {
  char buffer[4] = "old";
  for (const int32_t size : {0, -1, INT_MIN}) {
    EXPECT_EQ(string_format(buffer, size, "new"), buffer);
    EXPECT_STREQ(buffer, "old");
  }
  EXPECT_EQ(string_format(nullptr, 8, "new"), nullptr);
}

TEST(string_format, TakesANullFormatAsEmpty) {
  char buffer[4] = "old";
  auto *unchecked = reinterpret_cast<char *(*)(char *, int32_t, const char *, ...)>(&string_format);
  EXPECT_STREQ(unchecked(buffer, sizeof buffer, nullptr), "");
}

TEST(string_format, EndsTheTextAtAValueThatCannotBeFormatted) {
  char buffer[16] = "old";
  const wchar_t lone_surrogate[] = {0xD800, 0};
  EXPECT_STREQ(string_format(buffer, sizeof buffer, "a%lsb", lone_surrogate), "a");
}

}  // namespace
