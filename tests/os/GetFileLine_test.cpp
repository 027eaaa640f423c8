#include "GetFileLine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "plain_text.hpp"
#include "random_text.hpp"

namespace {

using Lines = std::vector<std::string>;

struct FileCloser {
  void operator()(FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<FILE, FileCloser>;

File file_with(std::string_view text) {
  File file(std::tmpfile());
  std::fwrite(text.data(), 1, text.size(), file.get());
  std::rewind(file.get());
  return file;
}

Lines lines_of(std::string_view text, int32_t size = 256) {
  const File file = file_with(text);
  std::vector<char> buffer(static_cast<std::size_t>(size));
  Lines lines;
  while (const char *line = GetFileLine(buffer.data(), size, file.get())) {
    EXPECT_EQ(line, buffer.data());
    lines.emplace_back(line);
  }
  return lines;
}

TEST(GetFileLine, GivesTheLinesThatSaySomethingTrimmed) {
  EXPECT_EQ(lines_of("one\n  two words \t\r\n\v\fthree\n"), (Lines{"one", "two words", "three"}));
}

TEST(GetFileLine, PassesOverBlankLinesAndComments) {
  EXPECT_EQ(lines_of("\n#one\n  # two\n \t \na # b\n#\n\nc\n"), (Lines{"a # b", "c"}));
}

TEST(GetFileLine, FindsNothingInAFileOfCommentsAndBlankLinesOnly) {
  EXPECT_EQ(lines_of("# one\n\n   \n  # two\n"), Lines{});
  EXPECT_EQ(lines_of("# no line end"), Lines{});
  EXPECT_EQ(lines_of(""), Lines{});
}

TEST(GetFileLine, GivesALastLineWithoutALineEnd) {
  EXPECT_EQ(lines_of("a\nb"), (Lines{"a", "b"}));
}

TEST(GetFileLine, ClearsAllOfTheBufferBeforeReading) {
  const File file = file_with("ab\n");
  char buffer[16];
  std::memset(buffer, '?', sizeof buffer);
  ASSERT_EQ(GetFileLine(buffer, 12, file.get()), buffer);
  EXPECT_STREQ(buffer, "ab");
  EXPECT_TRUE(std::all_of(buffer + 4, buffer + 12, [](char c) { return c == '\0'; }));
  EXPECT_EQ(buffer[12], '?') << "cleared more than the size";
}

TEST(GetFileLine, GivesALongLineInPieces) {
  EXPECT_EQ(lines_of("abcdefgh\nij\n", 4), (Lines{"abc", "def", "gh", "ij"}));
  EXPECT_EQ(lines_of("abc\n", 6), (Lines{"abc"}));
  EXPECT_EQ(lines_of("abc\n", 5), (Lines{"abc"}));
  EXPECT_EQ(lines_of("abc\nd\n", 4), (Lines{"abc", "d"}));
  EXPECT_EQ(lines_of("abc\nd\n", 3), (Lines{"ab", "c", "d"}));
  EXPECT_EQ(lines_of("ab\n", 2), (Lines{"a", "b"}));
}

TEST(GetFileLine, TakesEachPieceOfALongCommentForALineOfItsOwn) {
  EXPECT_EQ(lines_of("#bcdef#h\nx\n", 4), (Lines{"def", "x"}));
}

TEST(GetFileLine, DoesNotTouchTheBufferOnceTheEndHasBeenMet) {
  const File file = file_with("a");
  char buffer[8];
  ASSERT_EQ(GetFileLine(buffer, sizeof buffer, file.get()), buffer);
  std::strcpy(buffer, "same");
  EXPECT_EQ(GetFileLine(buffer, sizeof buffer, file.get()), nullptr);
  EXPECT_STREQ(buffer, "same");
}

TEST(GetFileLine, LeavesAnEmptyTextWhenInputRunsOut) {
  const File file = file_with("# comment\n");
  char buffer[32] = "before";
  EXPECT_EQ(GetFileLine(buffer, sizeof buffer, file.get()), nullptr);
  EXPECT_STREQ(buffer, "");
}

TEST(GetFileLine, FindsNothingInAStreamThatCannotBeRead) {
  char buffer[8] = "before";
  const File directory(std::fopen("/", "r"));
  ASSERT_NE(directory, nullptr);
  EXPECT_EQ(GetFileLine(buffer, sizeof buffer, directory.get()), nullptr);
  EXPECT_STREQ(buffer, "");
  const File output(std::fopen("/dev/null", "w"));
  EXPECT_EQ(GetFileLine(buffer, sizeof buffer, output.get()), nullptr);
}

TEST(GetFileLine, ToleratesMissingArgumentsAndUselessSizes) {
  const File file = file_with("a\nb\n");
  char buffer[8] = "same";
  EXPECT_EQ(GetFileLine(nullptr, 8, file.get()), nullptr);
  EXPECT_EQ(GetFileLine(buffer, sizeof buffer, nullptr), nullptr);
  for (const int32_t size : {0, -1, INT_MIN}) {
    EXPECT_EQ(GetFileLine(buffer, size, file.get()), nullptr);
  }
  EXPECT_STREQ(buffer, "same");
  EXPECT_EQ(GetFileLine(buffer, 1, file.get()), nullptr) << "no room for a line";
  EXPECT_EQ(buffer[0], '\0');
  EXPECT_EQ(buffer[1], 'a') << "cleared more than the size";
  EXPECT_STREQ(GetFileLine(buffer, sizeof buffer, file.get()), "a") << "nothing was consumed";
}

TEST(GetFileLine, EndsALineAtAZeroByte) {
  using namespace std::string_view_literals;
  EXPECT_EQ(lines_of("a\0b\nc\n"sv), (Lines{"a", "c"}));
  EXPECT_EQ(lines_of("\0b\nc\n"sv), (Lines{"c"}));
}

TEST(GetFileLine, KeepsBytesOutsideAscii) {
  EXPECT_EQ(lines_of("\xC3\xA4 \xFF\n"), (Lines{"\xC3\xA4 \xFF"}));
}

// The rule on ordinary strings.
Lines plain_lines(const std::string &text, std::size_t room) {
  Lines lines;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t line_end = std::min(text.find('\n', start), text.size() - 1) + 1;
    const std::size_t end = std::min(line_end, start + room);
    const std::string piece = plain::trimmed(text.substr(start, end - start));
    start = end;
    if (!piece.empty() && piece.front() != '#') lines.push_back(piece);
  }
  return lines;
}

TEST(GetFileLine, AgreesWithThePlainRuleOnRandomTexts) {
  std::mt19937 random(20261121);
  const std::string alphabet = "ab #\t\n";
  for (int round = 0; round < 5000; ++round) {
    const std::string text = support::random_text(random, random() % 30, alphabet);
    const auto size = static_cast<int32_t>(2 + random() % 8);
    ASSERT_EQ(lines_of(text, size), plain_lines(text, static_cast<std::size_t>(size) - 1))
        << '"' << text << '"';
  }
}

}  // namespace
