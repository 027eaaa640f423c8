// The format of a settings file, line by line.
#include <algorithm>
#include <string>

#include "locale.hpp"
#include "zorvrcs_fixture.hpp"

namespace {

using namespace settings_test;

class SettingsFormat : public SettingsTest {};

std::string repeated(std::size_t count, char c) {
  return std::string(count, c);
}

TEST_F(SettingsFormat, KeepsNameAndValueWithoutTheWhiteSpaceAroundTheEqualsSign) {
  EXPECT_EQ(load("  \t KEY \t =  some value \t\n"), Entries({nonprivileged("KEY", "some value \t")}));
}

TEST_F(SettingsFormat, CutsALineAtACommentAndRemovesTheWhiteSpaceBeforeIt) {
  EXPECT_EQ(load("KEY = some value   # note\nB=1#2=3\n"),
            Entries({nonprivileged("KEY", "some value"), nonprivileged("B", "1")}));
}

TEST_F(SettingsFormat, SkipsCommentsAndEmptyAndBlankLines) {
  EXPECT_EQ(load("#A=1\n  # B=2\n\n\r\n   \n\t\r\nC=3\n"), Entries({nonprivileged("C", "3")}));
}

TEST_F(SettingsFormat, IgnoresALineWithoutAnEqualsSign) {
  EXPECT_EQ(load("A\nB # C=1\nD=2\n"), Entries({nonprivileged("D", "2")}));
}

TEST_F(SettingsFormat, SplitsAtTheFirstEqualsSign) {
  EXPECT_EQ(load("A=b=c\nD==\n"), Entries({nonprivileged("A", "b=c"), nonprivileged("D", "=")}));
}

TEST_F(SettingsFormat, RemovesOneLineFeedAndThenOneCarriageReturn) {
  EXPECT_EQ(load("A=1\r\nB=2\r\r\nC=3\r"),
            Entries({nonprivileged("A", "1"), nonprivileged("B", "2\r"), nonprivileged("C", "3")}));
}

TEST_F(SettingsFormat, TakesALineThatTheFileEndsIn) {
  EXPECT_EQ(load("A=1"), Entries({nonprivileged("A", "1")}));
}

TEST_F(SettingsFormat, KnowsNeitherQuotesNorContinuationLines) {
  EXPECT_EQ(load("A=\"x\"\nB=1\\\nC=2\n"),
            Entries({nonprivileged("A", "\"x\""), nonprivileged("B", "1\\"), nonprivileged("C", "2")}));
}

TEST_F(SettingsFormat, KeepsASettingWithoutAName) {
  EXPECT_EQ(load("=1\n"), Entries({nonprivileged("", "1")}));
  EXPECT_EQ(query(""), "1");
}

TEST_F(SettingsFormat, ComparesNamesWithCase) {
  EXPECT_EQ(load("a=1\nA=2\n"), Entries({nonprivileged("a", "1"), nonprivileged("A", "2")}));
}

TEST_F(SettingsFormat, ReplacesAnEarlierValueAtItsPlace) {
  EXPECT_EQ(load("A=1\nB=2\nA=3\n"), Entries({nonprivileged("A", "3"), nonprivileged("B", "2")}));
}

TEST_F(SettingsFormat, DeletesByAnEmptyValue) {
  EXPECT_EQ(load("A=1\nB=2\nA=\n"), Entries({nonprivileged("B", "2")}));
  EXPECT_EQ(load("A=1\nA=   # gone\n"), Entries());
}

TEST_F(SettingsFormat, DeletesByAnEmptyExpansion) {
  EXPECT_EQ(load("A=1\nB=2\nA=$UNDEFINED\n"), Entries({nonprivileged("B", "2")}));
}

TEST_F(SettingsFormat, AppendsADeletedNameAtTheEnd) {
  EXPECT_EQ(load("A=1\nB=2\nA=\nA=3\n"), Entries({nonprivileged("B", "2"), nonprivileged("A", "3")}));
}

TEST_F(SettingsFormat, DeletesOnlyAtTheLevelOfTheLine) {
  EXPECT_EQ(load("[PRIVILEGED]\nA=1\n[NONPRIVILEGED]\nA=\n"), Entries({privileged("A", "1")}));
}

TEST_F(SettingsFormat, CountsLinesBeforeAnyHeaderAsNonPrivileged) {
  EXPECT_EQ(load("A=1\n[PRIVILEGED]\nB=2\n"), Entries({privileged("B", "2"), nonprivileged("A", "1")}));
}

TEST_F(SettingsFormat, SeesEachLevelAsOneSectionHoweverOftenItOccurs) {
  EXPECT_EQ(load("[NONPRIVILEGED]\nA=1\n[PRIVILEGED]\nB=2\n[NONPRIVILEGED]\nC=3\n[PRIVILEGED]\nB=4\n"),
            Entries({privileged("B", "4"), nonprivileged("A", "1"), nonprivileged("C", "3")}));
}

// Behind each header one line, after a privileged one: where it lands tells what the header was.
struct HeaderCase {
  const char *header;
  int32_t level;  // of the line behind it; 0 when it is dropped
};

constexpr HeaderCase kHeaders[] = {
    {"[PRIVILEGED]", 1},
    {"[privileged]", 1},
    {"[PriviLeged] and more", 1},
    {"[PRIVILEGED]]:", 1},
    {"   [NONPRIVILEGED]", 4},
    {"[nonprivileged]", 4},
    {"[NonPrivileged]x", 4},
    // Unknown, and so without effect: the line stays privileged.
    {"[Misc]", 1},
    {"[]", 1},
    {"[NONPRIVILEGED", 1},
    {"[NONPRIVILEGED:]", 1},
    {"[ NONPRIVILEGED]", 1},
    {"[NONPRIVILEGED ]", 1},
    {"[NONPRIVILEGEDX]", 1},
    {"[NONPRIVILEGE]", 1},
    {"[XNONPRIVILEGED]", 1},
    {"[NON:PRIVILEGED]", 1},
    {"[GROUP]", 1},
    {"[GROUP]:nobody-knows-it]", 1},
    {"[GROUP", 1},
    {"[GROUP:nobody-knows-it", 1},
    {"[GROU:nobody-knows-it]", 1},
    {"[ GROUP:nobody-knows-it]", 1},
    {"[XGROUP:nobody-knows-it]", 1},
    {"[:GROUP]", 1},
    {"[[GROUP:nobody-knows-it]", 1},
    // A group that we are not in; anything may follow the word.
    {"[GROUP:nobody-knows-it]", 0},
    {"[group:nobody-knows-it]", 0},
    {"[GroupX:nobody-knows-it]", 0},
    {"[GROUP nobody:]", 0},
    {"[GROUP:a:b]", 0},
};

TEST_F(SettingsFormat, ReadsHeaders) {
  for (const HeaderCase &header : kHeaders) {
    Entries expected;
    if (header.level != 0) expected.push_back({header.level, "A", "1"});
    EXPECT_EQ(load(std::string("[PRIVILEGED]\n") + header.header + "\nA=1\n"), expected) << header.header;
  }
}

TEST_F(SettingsFormat, ReadsHeadersByTheUpperCaseOfTheLocale) {
  const support::Locale turkish("tr_TR.ISO-8859-9");  // where "i" has another upper case than "I"
  ASSERT_TRUE(turkish.in_force());
  EXPECT_EQ(load("[PRIVILEGED]\nA=1\n"), Entries({privileged("A", "1")}));
  EXPECT_EQ(load("[privileged]\nA=1\n"), Entries({nonprivileged("A", "1")}));
}

TEST_F(SettingsFormat, UnknownHeadersKeepAForeignGroupForeign) {
  EXPECT_EQ(load("[GROUP:nobody-knows-it]\n[Misc]\nA=1\n[NONPRIVILEGED]\nB=2\n"),
            Entries({nonprivileged("B", "2")}));
}

TEST_F(SettingsFormat, ALineThatBeginsWithABracketIsNeverASetting) {
  EXPECT_EQ(load("[A=1\n[B]=2\n"), Entries());
}

TEST_F(SettingsFormat, HandlesALongLineInPiecesOf2047Bytes) {
  for (const std::size_t length : {2045U, 2046U, 2047U, 2048U}) {
    // Blanks fill the first piece, whose last bytes are the beginning of what follows.
    const std::string text = repeated(length, ' ') + "A=1\n";
    Entries expected;
    if (length == 2045) expected = {};                         // "A=" and "1"
    if (length == 2046) expected = {nonprivileged("", "1")};   // "A" and "=1"
    if (length >= 2047) expected = {nonprivileged("A", "1")};  // blanks and "A=1"
    EXPECT_EQ(load(text), expected) << length;
  }
}

TEST_F(SettingsFormat, HandlesALineOfExactlyOnePieceAsOneLine) {
  EXPECT_EQ(load(repeated(2044, ' ') + "A=1\nB=2\n"),
            Entries({nonprivileged("A", "1"), nonprivileged("B", "2")}));
}

TEST_F(SettingsFormat, ReadsTheRestOfALongCommentAsALineOfItsOwn) {
  EXPECT_EQ(load("#" + repeated(2046, 'x') + "B=2\n"), Entries({nonprivileged("B", "2")}));
}

TEST_F(SettingsFormat, RemovesACarriageReturnAtTheEndOfAPiece) {
  EXPECT_EQ(load("A=1" + repeated(2043, ' ') + "\rB=2\n"),
            Entries({nonprivileged("A", std::string("1") + repeated(1022, ' ')), nonprivileged("B", "2")}));
}

TEST_F(SettingsFormat, SeesALineOnlyUpToAZeroByte) {
  using namespace std::string_view_literals;
  EXPECT_EQ(load("A=1\0B=2\nC=3\n\0D=4\nE=5\r\0\n"sv),
            Entries({nonprivileged("A", "1"), nonprivileged("C", "3"), nonprivileged("E", "5")}));
}

TEST_F(SettingsFormat, CutsAValueAt1023Bytes) {
  for (const std::size_t length : {1022U, 1023U, 1024U, 2000U}) {
    const std::string kept = repeated(std::min<std::size_t>(length, 1023), 'v');
    EXPECT_EQ(load("A=" + repeated(length, 'v') + "\n"), Entries({nonprivileged("A", kept)})) << length;
  }
}

TEST_F(SettingsFormat, KeepsLongNames) {
  const std::string name = repeated(2040, 'N');
  EXPECT_EQ(load(name + "=1\n"), Entries({nonprivileged(name, "1")}));
}

TEST_F(SettingsFormat, KeepsBytesThatAreNoValidText) {
  EXPECT_EQ(load("\xFF\xFE=\x80\xC3\n"), Entries({nonprivileged("\xFF\xFE", "\x80\xC3")}));
}

TEST_F(SettingsFormat, KeepsThousandsOfSettingsInTheirOrder) {
  std::string text;
  Entries expected;
  for (int i = 0; i < 3000; ++i) {
    const std::string name = "NAME_" + std::to_string(i);
    text += name + "=old\n";
    text += name + "=" + std::to_string(i) + "\n";
    if (i % 3 == 0) {
      text += name + "=\n";
    } else {
      expected.push_back(nonprivileged(name, std::to_string(i)));
    }
  }
  EXPECT_EQ(load(text), expected);
}

TEST_F(SettingsFormat, SurvivesALargeFileOfGarbage) {
  std::string garbage;
  uint32_t state = 1;
  for (int i = 0; i < 1 << 20; ++i) {
    state = state * 1664525U + 1013904223U;
    garbage.push_back(static_cast<char>(state >> 24));
  }
  ::setenv("__QUORCONF_NOENV", "1", 1);
  prepare(garbage + garbage + garbage);
  EXPECT_FALSE(all_entries().empty());
}

}  // namespace
