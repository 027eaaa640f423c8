#include "../../src/foundation/fixed_text.hpp"

#include <gtest/gtest.h>

#include <string>

namespace {

using zorvcrt::copy_text;
using zorvcrt::FixedText;

TEST(FixedText, CutsWhatDoesNotFitAndStaysTerminated) {
  for (std::size_t length = 0; length < 12; ++length) {
    const std::string text(length, 'x');
    FixedText<8> fixed("a");
    fixed.append(text);
    EXPECT_EQ(fixed.view(), ("a" + text).substr(0, 7));
    EXPECT_EQ(fixed.c_str()[fixed.size()], '\0');
  }
}

TEST(FixedText, KeepsABelievedSizeWithinItsArea) {
  FixedText<8> fixed;
  fixed.set_size(100);
  EXPECT_EQ(fixed.size(), 7U);
  fixed.assign("abc").truncate(100);
  EXPECT_EQ(fixed.view(), "abc");
  fixed.truncate(1);
  EXPECT_EQ(fixed.view(), "a");
  fixed.clear();
  EXPECT_TRUE(fixed.empty());
}

TEST(copy_text, MovesTextsThatOverlap) {
  char area[8] = "abcdef";
  EXPECT_EQ(copy_text(area, 8, std::string_view(area + 1, 4)), 4U);
  EXPECT_STREQ(area, "bcde");
}

}  // namespace
