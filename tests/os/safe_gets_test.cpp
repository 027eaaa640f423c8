#include "safe_gets.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "standard_input.hpp"

namespace {

using standard_input::Input;

constexpr uint32_t kKeep = 0;
constexpr uint32_t kDiscard = 1;

// The text that is read, or "(null)".
std::string read_line(uint64_t capacity, uint32_t discard) {
  std::vector<char> area(capacity + 1, '?');
  const char *line = safe_gets(area.data(), capacity, discard);
  EXPECT_EQ(area[capacity], '?');
  if (line == nullptr) {
    EXPECT_STREQ(area.data(), "");
    return "(null)";
  }
  EXPECT_EQ(line, area.data());
  return line;
}

TEST(safe_gets, RemovesTheEndOfALine) {
  const Input input("one\ntwo\r\n\n\r\nlast");
  for (const char *line : {"one", "two", "", "", "last", "(null)"}) {
    EXPECT_EQ(read_line(100, kKeep), line);
  }
}

TEST(safe_gets, RemovesOneCarriageReturnOnly) {
  const Input input("a\r\r\nb\rc\n");
  EXPECT_EQ(read_line(100, kDiscard), "a\r");
  EXPECT_EQ(read_line(100, kDiscard), "b\rc");
}

TEST(safe_gets, LeavesTheRestOfALineThatDoesNotFitOrThrowsItAway) {
  for (const uint32_t discard : {kKeep, kDiscard, UINT32_MAX}) {
    const Input input("abcdef\nxyz\n");
    EXPECT_EQ(read_line(4, discard), "abc");
    EXPECT_EQ(Input::rest(), discard == kKeep ? "def\nxyz\n" : "xyz\n");
  }
}

TEST(safe_gets, DiscardsNothingBehindALineThatFits) {
  for (const char *text : {"abc\nnext\n", "abc\r\nnext\n"}) {
    const Input input(text);
    EXPECT_EQ(read_line(6, kDiscard), "abc");
    EXPECT_EQ(Input::rest(), "next\n");
  }
}

TEST(safe_gets, DiscardsTheLineFeedAloneThatDidNotFit) {
  const Input input("abc\nnext\n");
  EXPECT_EQ(read_line(4, kDiscard), "abc");
  EXPECT_EQ(Input::rest(), "next\n");
}

TEST(safe_gets, TakesTheLineFeedBehindACarriageReturnThatFillsTheArea) {
  for (const uint32_t discard : {kKeep, kDiscard}) {
    const Input input("abc\r\nnext\n");
    EXPECT_EQ(read_line(5, discard), "abc");
    EXPECT_EQ(Input::rest(), "next\n");
  }
}

TEST(safe_gets, LeavesWhatElseFollowsSuchACarriageReturn) {
  const Input kept("abc\rdef\nnext\n");
  EXPECT_EQ(read_line(5, kKeep), "abc");
  EXPECT_EQ(Input::rest(), "def\nnext\n");
  const Input discarded("abc\rdef\nnext\n");
  EXPECT_EQ(read_line(5, kDiscard), "abc");
  EXPECT_EQ(Input::rest(), "next\n");
}

TEST(safe_gets, RemovesACarriageReturnAtTheEndOfTheInput) {
  for (const uint64_t capacity : {5U, 100U}) {
    for (const uint32_t discard : {kKeep, kDiscard}) {
      const Input input("abc\r");
      EXPECT_EQ(read_line(capacity, discard), "abc");
      EXPECT_EQ(read_line(capacity, discard), "(null)");
    }
  }
}

TEST(safe_gets, ThrowsAwayARestOfAnyLength) {
  for (const std::size_t rest : {1U, 509U, 510U, 511U, 512U, 1021U, 1022U, 1023U, 100000U}) {
    const Input input("abc" + std::string(rest, 'x') + "\nnext\n");
    EXPECT_EQ(read_line(4, kDiscard), "abc");
    EXPECT_EQ(Input::rest(), "next\n");
    const Input endless("abc" + std::string(rest, 'x'));
    EXPECT_EQ(read_line(4, kDiscard), "abc");
    EXPECT_EQ(read_line(4, kDiscard), "(null)");
  }
}

TEST(safe_gets, HoldsAnEmptyTextOnlyInOneByte) {
  const Input input("abc\nnext\n");
  EXPECT_EQ(read_line(1, kKeep), "");
  EXPECT_EQ(read_line(1, kDiscard), "");
  EXPECT_EQ(Input::rest(), "next\n");
}

TEST(safe_gets, RefusesAMissingAreaAndLeavesTheInputAlone) {
  const Input input("line\n");
  char buffer[] = "same";
  errno = 0;
  EXPECT_EQ(safe_gets(nullptr, 10, kDiscard), nullptr);
  EXPECT_EQ(errno, EINVAL);
  errno = 0;
  EXPECT_EQ(safe_gets(buffer, 0, kDiscard), nullptr);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_STREQ(buffer, "same");
  EXPECT_EQ(Input::rest(), "line\n");
}

TEST(safe_gets, TakesACapacityBeyondAllAreas) {
  const Input input("line\n");
  char buffer[16] = "";
  EXPECT_EQ(safe_gets(buffer, UINT64_MAX, kKeep), buffer);
  EXPECT_STREQ(buffer, "line");
}

TEST(safe_gets, GivesNullAndAnEmptyTextWhenTheInputCannotBeRead) {
  const Input input("");
  FILE *before = stdin;
  stdin = std::fopen("/", "r");  // a folder can be opened, and not read
  ASSERT_NE(stdin, nullptr);
  EXPECT_EQ(read_line(16, kDiscard), "(null)");
  std::fclose(stdin);
  stdin = before;
}

TEST(safe_gets, ReadsWhatComesThroughAPipe) {
  EXPECT_TRUE(standard_input::holds_in_child("abcd\r\nxyz\r", [] {
    char buffer[6] = "";
    return safe_gets(buffer, sizeof buffer, kKeep) == buffer && std::strcmp(buffer, "abcd") == 0 &&
           safe_gets(buffer, sizeof buffer, kKeep) == buffer && std::strcmp(buffer, "xyz") == 0 &&
           safe_gets(buffer, sizeof buffer, kKeep) == nullptr;
  }));
}

// The rule, restated on a string: reads one line and removes it from the text.
std::string plain_line(std::string &text, std::size_t capacity, uint32_t discard) {
  if (text.empty() && capacity > 1) return "(null)";
  const std::size_t end = std::min(text.find('\n'), text.size());  // of the line without its line feed
  std::string line = text.substr(0, std::min(end + 1, capacity - 1));
  text.erase(0, line.size());
  bool complete = line.ends_with('\n');
  if (complete) line.pop_back();
  const bool cut_at_return = line.ends_with('\r');
  if (cut_at_return) line.pop_back();
  if (!complete && cut_at_return && text.starts_with('\n')) {
    text.erase(0, 1);
    complete = true;
  }
  if (!complete && discard != kKeep) text.erase(0, std::min(text.find('\n'), text.size() - 1) + 1);
  return line;
}

TEST(safe_gets, AgreesWithThePlainRuleOnRandomInput) {
  std::mt19937 random(20261121);
  const std::string alphabet = "ab\r\n";
  for (int round = 0; round < 5000; ++round) {
    std::string text(random() % (round % 20 == 0 ? 1500 : 20), ' ');
    for (char &c : text) {
      c = alphabet[random() % (round % 20 == 0 && random() % 100 != 0 ? 2 : alphabet.size())];
    }
    const Input input(text);
    std::string rest = text;
    for (int line = 0; line < 10; ++line) {
      const uint64_t capacity = 1 + random() % 7;
      const uint32_t discard = random() % 2;
      ASSERT_EQ(read_line(capacity, discard), plain_line(rest, capacity, discard)) << round;
    }
    ASSERT_EQ(Input::rest(), rest) << round;
  }
}

}  // namespace
