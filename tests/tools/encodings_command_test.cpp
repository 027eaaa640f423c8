#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "files.hpp"
#include "run.hpp"

namespace {

std::string output_of(const std::vector<std::string> &words, const std::string &input) {
  const support::Outcome outcome = support::run_zorvcrt(words, input);
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_EQ(outcome.errors, "");
  return outcome.output;
}

std::string random_data(std::size_t size) {
  std::mt19937 random(20261121);
  std::string data(size, '\0');
  for (char &c : data)
    c = static_cast<char>(random());
  return data;
}

TEST(Base64Command, EncodesOneLineAndDecodesIt) {
  EXPECT_EQ(output_of({"base64"}, "Man"), "TWFu\n");
  EXPECT_EQ(output_of({"base64"}, ""), "");
  EXPECT_EQ(output_of({"base64", "-d"}, "TW\nFu=TWFu"), "Man");
  EXPECT_EQ(output_of({"base64", "--decode"}, "TQ"), "M");
}

TEST(Base64Command, BringsBackDataOfManyBlocks) {
  for (const std::size_t size : {49151U, 49152U, 49153U, 300000U}) {
    const std::string data = random_data(size);
    EXPECT_EQ(output_of({"base64", "-d"}, output_of({"base64"}, data)), data) << size;
  }
}

TEST(Base64Command, KeepsGroupsThatBreakAtTheEndOfABlock) {
  std::string text = "\n";  // moves every group away from the borders of the blocks
  text += output_of({"base64"}, random_data(100000));
  EXPECT_EQ(output_of({"base64", "-d"}, text), random_data(100000));
}

TEST(UuCommand, EncodesDataLinesAndDecodesThem) {
  EXPECT_EQ(output_of({"uu"}, "Cat"), "#0V%T\n");
  EXPECT_EQ(output_of({"uu"}, ""), "");
  EXPECT_EQ(output_of({"uu", "-d"}, "#0V%T\n`\n#0V%T\n"), "Cat");
  EXPECT_EQ(output_of({"uu", "-d"}, "#0V%T"), "Cat");
}

TEST(UuCommand, BringsBackDataOfManyBlocks) {
  for (const std::size_t size : {46079U, 46080U, 46081U, 300000U}) {
    const std::string data = random_data(size);
    EXPECT_EQ(output_of({"uu", "-d"}, output_of({"uu"}, data)), data) << size;
  }
}

TEST(UuCommand, ReadsAnEndlessLineInBoundedMemory) {
  std::string line = "#0V%T";
  line.append(5000000, 'x');
  EXPECT_EQ(output_of({"uu", "-d"}, line + "\n#0V%T\n"), "CatCat");
}

TEST(Utf8Command, ConvertsUnits) {
  const std::u16string units = u"A\u00E9\u20AC";
  const std::string input(reinterpret_cast<const char *>(units.data()), units.size() * 2);
  EXPECT_EQ(output_of({"utf8"}, input), "A\xC3\xA9\xE2\x82\xAC");
  EXPECT_EQ(output_of({"utf8"}, ""), "");
}

TEST(Utf8Command, ConvertsTextsOfManyBlocks) {
  std::u16string units;
  std::string expected;
  for (int i = 0; i < 70000; ++i) {
    units += u'\u20AC';
    expected += "\xE2\x82\xAC";
  }
  EXPECT_EQ(output_of({"utf8"}, std::string(reinterpret_cast<const char *>(units.data()), units.size() * 2)),
            expected);
}

TEST(Utf8Command, ReportsHalfAUnitAtTheEnd) {
  const support::Outcome outcome = support::run_zorvcrt({"utf8"}, std::string("A\0B", 3));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "A");
  EXPECT_EQ(outcome.errors, "zorvcrt utf8: the input ends in half a unit\n");
}

TEST(EncodingCommands, ReadAFileOrStandardInputForADash) {
  const support::TemporaryFolder folder;
  support::write_file(folder / "data", "Cat!");
  for (const char *name : {"base64", "uu", "utf8"}) {
    const std::string expected = output_of({name}, "Cat!");
    EXPECT_EQ(output_of({name, folder / "data"}, ""), expected) << name;
    EXPECT_EQ(output_of({name, "-"}, "Cat!"), expected) << name;
  }
}

TEST(EncodingCommands, ReportAFileThatCannotBeRead) {
  for (const char *name : {"base64", "uu", "utf8"}) {
    const auto absent = support::run_zorvcrt({name, "/nonexistent"});
    EXPECT_EQ(absent.status, 1);
    EXPECT_EQ(absent.errors, std::string("zorvcrt ") + name + ": /nonexistent: No such file or directory\n");
    const auto folder = support::run_zorvcrt({name, "/"});
    EXPECT_EQ(folder.status, 1);
    EXPECT_EQ(folder.errors, std::string("zorvcrt ") + name + ": /: Is a directory\n");
    EXPECT_EQ(support::run_zorvcrt({name, "one", "two"}).status, 2);
  }
}

}  // namespace
