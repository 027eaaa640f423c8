#include "TrimString.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

std::string trimmed(std::string text) {
  TrimString(text.data());
  return text.c_str();
}

TEST(TrimString, RemovesWhiteSpaceFromBothEndsAndKeepsWhatIsBetween) {
  EXPECT_EQ(trimmed("  x y  "), "x y");
  EXPECT_EQ(trimmed("x y"), "x y");
  EXPECT_EQ(trimmed("\t\n\v\f\r x\t\n\v\f\r "), "x");
}

TEST(TrimString, EmptiesATextOfWhiteSpaceOnly) {
  EXPECT_EQ(trimmed("   "), "");
  EXPECT_EQ(trimmed(""), "");
}

TEST(TrimString, TreatsBytesAbove127AsText) {
  EXPECT_EQ(trimmed(" \xA0\xFF "), "\xA0\xFF");
}

TEST(TrimString, WritesNothingBehindTheText) {
  char area[8] = {' ', 'a', ' ', '\0', '1', '2', '3', '4'};
  TrimString(area);
  EXPECT_STREQ(area, "a");
  EXPECT_EQ(std::memcmp(area + 4, "1234", 4), 0);
}

TEST(TrimString, LeavesNullAlone) {
  TrimString(nullptr);
}

}  // namespace
