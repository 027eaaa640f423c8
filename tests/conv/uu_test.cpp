#include "uu.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <memory>
#include <random>
#include <sstream>
#include <string>

namespace {

// What is written into an area of size bytes and one more, which is filled with '?' before.
struct Written {
  int32_t result;
  std::string area;
};

Written encode(const std::string &data, int32_t size) {
  const auto room = static_cast<std::size_t>(std::max(size, 0)) + 1;
  const auto area = std::make_unique<char[]>(room);  // a block of its own, so that a write past it shows
  std::fill_n(area.get(), room, '?');
  const int32_t result = zfx_uuencode(data.data(), static_cast<int32_t>(data.size()), area.get(), size);
  return {result, std::string(area.get(), room)};
}

Written decode(const std::string &text, int32_t size) {
  const auto room = static_cast<std::size_t>(std::max(size, 0));
  const auto area = std::make_unique<char[]>(room);
  std::fill_n(area.get(), room, '?');
  const int32_t result = zfx_uudecode(text.c_str(), 0, area.get(), size);
  return {result, std::string(area.get(), room)};
}

char character_of(unsigned sextet) {
  return static_cast<char>(sextet == 0 ? '`' : sextet + 32);
}

std::string group_of(const std::string &bytes) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned>(static_cast<uint8_t>(bytes[i])); };
  const unsigned bits = byte(0) << 16 | byte(1) << 8 | byte(2);
  return {character_of(bits >> 18), character_of(bits >> 12 & 63), character_of(bits >> 6 & 63),
          character_of(bits & 63)};
}

// The rules, written down step by step. Gives what an area of '?' holds afterwards.
Written plain_encode(const std::string &data, int size) {
  Written written{0, std::string(static_cast<std::size_t>(size) + 1, '?')};
  const auto put = [&](int position, const std::string &text) {
    written.area.replace(static_cast<std::size_t>(position), text.size(), text);
  };
  int p = 0;
  for (std::size_t start = 0; start < data.size(); start += 45) {
    std::string line = data.substr(start, 45);
    const int count = static_cast<int>(line.size());
    line.resize(48, '\0');
    if (p < size) put(p, std::string(1, character_of(static_cast<unsigned>(count))));
    const int groups = (count + 2) / 3;
    const int fitting = size <= p + 4 ? 0 : (size - 5 - p) / 4 + 1;
    for (int i = 0; i < std::min(groups, fitting); ++i)
      put(p + 1 + 4 * i, group_of(line.substr(static_cast<std::size_t>(3 * i), 3)));
    if (groups > fitting) {
      written.result = 1;
      return written;
    }
    put(p + 1 + 4 * groups, "\n");
    p += 4 * groups + 2;
  }
  return written;
}

std::string random_data(std::mt19937 &random, std::size_t size) {
  std::string data(size, '\0');
  for (char &c : data)
    c = static_cast<char>(random());
  return data;
}

std::string times(std::size_t count, char c, const std::string &behind = "") {
  std::string text;
  text.append(count, c);
  return text.append(behind);
}

TEST(ZfxUuencode, WritesLengthGroupsAndNewline) {
  EXPECT_EQ(encode("Cat", 100).area.substr(0, 7), "#0V%T\n?");
  EXPECT_EQ(encode(std::string(1, '\0'), 100).area.substr(0, 7), "!````\n?");
}

TEST(ZfxUuencode, PutsFortyFiveBytesOnALine) {
  const std::string one = encode(std::string(45, 'x'), 200).area;
  EXPECT_EQ(one[0], 'M');
  EXPECT_EQ(one[61], '\n');
  EXPECT_EQ(one[62], '?');
  const std::string two = encode(std::string(46, 'x'), 200).area;
  EXPECT_EQ(two.substr(61, 2), "\n!");
  EXPECT_EQ(two[67], '\n');
  EXPECT_EQ(two[68], '?');
}

TEST(ZfxUuencode, WritesNothingForNoBytes) {
  char area[4] = "abc";
  for (const int32_t n : {0, -1, INT_MIN}) {
    EXPECT_EQ(zfx_uuencode("x", n, area, 4), 0);
  }
  EXPECT_EQ(zfx_uuencode(nullptr, 5, area, 4), 0);
  EXPECT_STREQ(area, "abc");
}

TEST(ZfxUuencode, HasNoRoomInANullOrNegativeArea) {
  EXPECT_EQ(zfx_uuencode("x", 1, nullptr, 100), 1);
  char area[1] = {'?'};
  for (const int32_t size : {0, -1, INT_MIN}) {
    EXPECT_EQ(zfx_uuencode("x", 1, area, size), 1);
  }
  EXPECT_EQ(area[0], '?');
}

TEST(ZfxUuencode, DoesNotCountTheNewlineAgainstTheSize) {
  EXPECT_EQ(encode("Cat", 4).result, 1);
  EXPECT_EQ(encode("Cat", 5).result, 0);
  EXPECT_EQ(encode("Cat", 5).area, "#0V%T\n");
  EXPECT_EQ(encode(std::string(45, 'x'), 60).result, 1);
  EXPECT_EQ(encode(std::string(45, 'x'), 61).result, 0);
  EXPECT_EQ(encode(std::string(46, 'x'), 66).result, 1);
  EXPECT_EQ(encode(std::string(46, 'x'), 67).result, 0);
}

TEST(ZfxUuencode, FollowsTheRoomRuleToTheByteAtEverySize) {
  std::mt19937 random(20261121);
  for (const std::size_t n : {1U, 2U, 3U, 4U, 44U, 45U, 46U, 89U, 90U, 91U, 135U}) {
    const std::string data = random_data(random, n);
    for (int size = 0; size < 200; ++size) {
      const Written expected = plain_encode(data, size);
      const Written written = encode(data, size);
      ASSERT_EQ(written.result, expected.result) << n << " bytes into " << size;
      ASSERT_EQ(written.area, expected.area) << n << " bytes into " << size;
    }
  }
}

TEST(ZfxUuencode, AgreesWithThePlainRulesAtEveryLength) {
  std::mt19937 random(20261121);
  for (std::size_t n = 0; n <= 300; ++n) {
    const std::string data = random_data(random, n);
    ASSERT_EQ(encode(data, 500).area, plain_encode(data, 500).area) << n;
  }
}

TEST(ZfxUudecode, DecodesWhatWasEncodedAndNothingMore) {
  std::mt19937 random(20261121);
  for (std::size_t n = 0; n <= 300; ++n) {
    const std::string data = random_data(random, n);
    const std::string area = encode(data, 500).area;
    const std::string text = area.substr(0, area.find('?', n == 0 ? 0 : area.rfind('\n')));
    const Written decoded = decode(text, static_cast<int32_t>(n) + 40);
    ASSERT_EQ(decoded.result, 0);
    ASSERT_EQ(decoded.area, data + std::string(40, '?')) << n;
  }
}

// The decoding rule, character by character, for lines of at most 80 characters.
std::string plainly_decoded(const std::string &text) {
  std::string bytes;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line) && !line.empty();) {
    const auto sextet = [&line](std::size_t i) {
      return i < line.size() ? (static_cast<unsigned char>(line[i]) - 32U) % 64 : 0U;
    };
    const unsigned count = sextet(0);
    if (count == 0) break;
    for (unsigned i = 0; i < count; ++i) {
      const std::size_t group = 1 + i / 3 * 4;
      const unsigned value =
          sextet(group) << 18 | sextet(group + 1) << 12 | sextet(group + 2) << 6 | sextet(group + 3);
      bytes += static_cast<char>(value >> (16 - i % 3 * 8) & 0xFF);
    }
  }
  return bytes;
}

TEST(ZfxUudecode, TakesLinesThatEndBeforeAndBehindTheirDataAmongFullOnes) {
  std::mt19937 random(20261121);
  for (int round = 0; round < 3000; ++round) {
    std::string text;
    for (int line = 0; line < 4; ++line) {
      const std::size_t characters = random() % 3 == 0 ? random() % 79 : 60;
      text += random() % 4 == 0 ? static_cast<char>(33 + random() % 90) : random() % 8 == 0 ? '\r' : 'M';
      for (std::size_t i = 0; i < characters; ++i) {
        text += static_cast<char>(33 + random() % 64);
      }
      text += '\n';
    }
    const std::string expected = plainly_decoded(text);
    std::string area(expected.size() + 8, 'x');
    ASSERT_EQ(zfx_uudecode(text.c_str(), 0, area.data(), static_cast<int32_t>(expected.size())), 0) << text;
    ASSERT_EQ(area, expected + std::string(8, 'x')) << text;
  }
}

TEST(ZfxUudecode, StopsAtALineThatStandsForNoBytes) {
  for (const char *end : {"`\n", "`", " \n", "\n", ""}) {
    EXPECT_EQ(decode(std::string("#0V%T\n") + end + "#0V%T\n", 6).area, *end == '\0' ? "CatCat" : "Cat???")
        << end;
  }
  EXPECT_EQ(decode("", 1).result, 0);
  EXPECT_EQ(zfx_uudecode(nullptr, 0, nullptr, 0), 0);
}

TEST(ZfxUudecode, TakesCharactersModulo64) {
  EXPECT_EQ(decode("#0V%T", 3).area, "Cat");
  EXPECT_EQ(decode("cpV%T", 3).area, "Cat");  // 'c' is '#' and 'p' is '0', each plus 64
  EXPECT_EQ(decode("!` ``", 1).area, std::string(1, '\0'));
}

TEST(ZfxUudecode, NeedsRoomForEveryByteOfAGroup) {
  for (int32_t size = 0; size <= 3; ++size) {
    const Written written = decode("#0V%T\n", size);
    EXPECT_EQ(written.result, size < 3 ? 1 : 0);
    EXPECT_EQ(written.area, size < 3 ? std::string(static_cast<std::size_t>(size), '?') : "Cat");
  }
  EXPECT_EQ(decode("$0V%T0V%T\n", 3).result, 1);
  EXPECT_EQ(decode("$0V%T0V%T\n", 3).area, "Cat");
  EXPECT_EQ(decode("$0V%T0V%T\n", 4).area, "CatC");
  EXPECT_EQ(decode("%0V%T0V%T\n", 4).result, 1);
  EXPECT_EQ(decode("%0V%T0V%T\n", 5).area, "CatCa");
  EXPECT_EQ(decode("#0V%T\n", -1).result, 1);
  EXPECT_EQ(zfx_uudecode("#0V%T\n", 0, nullptr, 100), 1);
  const std::string full = encode(std::string(45, 'x'), 61).area;
  EXPECT_EQ(decode(full, 44).result, 1);
  EXPECT_EQ(decode(full, 44).area, times(42, 'x', "??"));
  EXPECT_EQ(decode(full, 45).area, std::string(45, 'x'));
}

TEST(ZfxUudecode, CountsMissingCharactersAsBlanks) {
  EXPECT_EQ(decode("#0V\n", 3).area, decode("#0V  \n", 3).area);
  EXPECT_EQ(decode("&", 6).area, std::string(6, '\0'));
}

TEST(ZfxUudecode, LooksAt80CharactersOfALineAnd79OfAnUnterminatedOne) {
  // '_' is 63: a line of 63 bytes needs 84 characters behind it, all bits set
  const std::string line(85, '_');
  const std::string of_80 = decode(line + "\n", 63).area;  // 79 characters of data: 19 groups and three
  EXPECT_EQ(of_80, times(59, '\xFF', std::string("\xC0\0\0\0", 4)));
  const std::string of_79 = decode(line, 63).area;
  EXPECT_EQ(of_79, times(58, '\xFF', std::string("\xF0\0\0\0\0", 5)));
  EXPECT_EQ(decode(line.substr(0, 79) + "\n", 63).area, of_79);
  EXPECT_EQ(decode(line.substr(0, 80) + "\n", 63).area, of_80);
  EXPECT_EQ(decode(line.substr(0, 81) + "\n", 63).area, of_80);
  EXPECT_EQ(decode(line + "\n#0V%T\n", 66).area, of_80 + "Cat");
}

}  // namespace
