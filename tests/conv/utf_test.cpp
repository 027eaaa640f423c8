#include "utf.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <string>
#include <vector>

#include "zfxmemory.h"

namespace {

std::string converted(const std::vector<uint16_t> &units) {
  char *text = nullptr;
  const int32_t length = Ucs2ToUtf8(units.data(), static_cast<int32_t>(units.size()), &text);
  EXPECT_EQ(text[length], '\0');
  std::string result(text, static_cast<std::size_t>(length));
  ZfxMemFree(text);
  return result;
}

void append_plain(std::string &text, unsigned unit) {
  if (unit <= 0x7F) {
    text += static_cast<char>(unit);
  } else if (unit <= 0x7FF) {
    text += static_cast<char>(0xC0 + unit / 64);
    text += static_cast<char>(0x80 + unit % 64);
  } else {
    text += static_cast<char>(0xE0 + unit / 4096);
    text += static_cast<char>(0x80 + unit / 64 % 64);
    text += static_cast<char>(0x80 + unit % 64);
  }
}

TEST(Ucs2ToUtf8, UsesOneTwoOrThreeBytes) {
  EXPECT_EQ(converted({0x41}), "A");
  EXPECT_EQ(converted({0xE9}), "\xC3\xA9");
  EXPECT_EQ(converted({0x20AC}), "\xE2\x82\xAC");
  EXPECT_EQ(converted({0x7F, 0x80, 0x7FF, 0x800, 0xFFFF}), "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF");
}

TEST(Ucs2ToUtf8, EncodesSurrogatesOneByOne) {
  EXPECT_EQ(converted({0xD83D, 0xDE00}), "\xED\xA0\xBD\xED\xB8\x80");
}

TEST(Ucs2ToUtf8, KeepsAZeroUnitAsAZeroByte) {
  EXPECT_EQ(converted({0x61, 0, 0x62}), std::string("a\0b", 3));
}

TEST(Ucs2ToUtf8, GivesAnEmptyTextForNothing) {
  const uint16_t unit = 0x41;
  for (const int32_t n : {0, -1, INT_MIN}) {
    char *text = nullptr;
    EXPECT_EQ(Ucs2ToUtf8(&unit, n, &text), 0);
    EXPECT_STREQ(text, "");
    ZfxMemFree(text);
  }
  char *text = nullptr;
  EXPECT_EQ(Ucs2ToUtf8(nullptr, 5, &text), 0);
  EXPECT_STREQ(text, "");
  ZfxMemFree(text);
  EXPECT_EQ(Ucs2ToUtf8(&unit, 1, nullptr), 0);
}

TEST(Ucs2ToUtf8, ConvertsEveryUnit) {
  std::vector<uint16_t> units;
  std::string expected;
  for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
    units.push_back(static_cast<uint16_t>(unit));
    append_plain(expected, unit);
  }
  EXPECT_EQ(converted(units), expected);
}

TEST(Ucs2ToUtf8, AgreesWithTheDefinitionOnRandomTextsOfEveryLength) {
  std::mt19937 random(20261121);
  for (std::size_t n = 0; n <= 300; ++n) {
    std::vector<uint16_t> units(n);
    std::string expected;
    const unsigned mask = (1U << (1 + random() % 16)) - 1;
    for (uint16_t &unit : units) {
      unit = static_cast<uint16_t>(random() & mask);
      append_plain(expected, unit);
    }
    ASSERT_EQ(converted(units), expected) << n;
  }
}

}  // namespace
