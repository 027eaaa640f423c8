#include "zjsondriver.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "documents.hpp"
#include "failing_allocator.hpp"
#include "files.hpp"

namespace {

using documents::Document;
using documents::outcome_of;

std::string parse(const std::string &text) {
  return outcome_of(documents::parse(text).get());
}

// A stream that gives a piece per read; an empty piece is a read that fails with the error.
struct Pieces {
  std::vector<std::string> pieces;
  int error;
  std::size_t next = 0;

  static ssize_t read(void *cookie, char *area, std::size_t size) {
    auto &self = *static_cast<Pieces *>(cookie);
    if (self.next == self.pieces.size()) return 0;
    const std::string &piece = self.pieces[self.next++];
    if (piece.empty()) {
      errno = self.error;
      return -1;
    }
    std::memcpy(area, piece.data(), std::min(size, piece.size()));
    return static_cast<ssize_t>(piece.size());
  }
};

std::string parse_pieces(std::vector<std::string> pieces, int error) {
  Pieces source{std::move(pieces), error};
  FILE *stream = ::fopencookie(&source, "r", {Pieces::read, nullptr, nullptr, nullptr});
  const std::string outcome = outcome_of(Document(ZJsonExpression_ParseStream(stream)).get());
  std::fclose(stream);
  return outcome;
}

TEST(ZJsonExpression_ParseStream, TakesUpAReadThatASignalInterrupts) {
  EXPECT_EQ(parse_pieces({"", "[1,2]"}, EINTR), "[1,2]");
  EXPECT_EQ(parse_pieces({"[1,", "", "2]"}, EINTR), "[1,2]");
  EXPECT_EQ(parse_pieces({"[1,", "", "", "2", "", "]", ""}, EINTR), "[1,2]");
}

TEST(ZJsonExpression_ParseStream, EndsTheProcessWhenItsStreamCannotBeRead) {
  const auto exit_2 = ::testing::ExitedWithCode(2);
  EXPECT_EXIT(parse_pieces({""}, EIO), exit_2, "^input in flex scanner failed\n$");
  EXPECT_EXIT(parse_pieces({"[1,", "", ""}, EIO), exit_2, "^input in flex scanner failed\n$");
}

constexpr char kEmptyMessage[] = "line #1.1: syntax error, unexpected $end, expecting O_BEGIN or A_BEGIN";

TEST(ZJsonExpression_Parse, ParsesTheGivenBytesOnly) {
  EXPECT_EQ(outcome_of(Document(ZJsonExpression_Parse("[12345]", 7)).get()), "[12345]");
  EXPECT_EQ(outcome_of(Document(ZJsonExpression_Parse("[1]2345]", 3)).get()), "[1]");
  EXPECT_EQ(outcome_of(Document(ZJsonExpression_Parse("[12345]", 3)).get()),
            "line #1.4: syntax error, unexpected $end, expecting A_END or COMMA");
}

TEST(ZJsonExpression_Parse, TakesNoBytesForAnEmptyError) {
  for (const int32_t length : {0, -1, INT_MIN}) {
    EXPECT_EQ(outcome_of(Document(ZJsonExpression_Parse("[1]", length)).get()), kEmptyMessage);
    EXPECT_EQ(outcome_of(Document(ZJsonExpression_Parse(nullptr, length)).get()), kEmptyMessage);
  }
  EXPECT_EQ(outcome_of(Document(ZJsonExpression_Parse(nullptr, 5)).get()), kEmptyMessage);
}

TEST(ZJsonExpression_Parse, DropsWhiteSpaceAndZerosAtTheEnd) {
  EXPECT_EQ(parse(std::string("[1] \t\n\r\0\0 ", 10)), "[1]");
  EXPECT_EQ(parse(std::string(" \t\n\r\0 ", 6)), kEmptyMessage);
  EXPECT_EQ(parse("[1]\v"), "line #1.5: syntax error, unexpected $undefined, expecting $end");
  EXPECT_EQ(parse("[1]\f"), "line #1.5: syntax error, unexpected $undefined, expecting $end");
  EXPECT_EQ(parse("\"a\"\n"), "line #1.4: syntax error, unexpected STRING, expecting O_BEGIN or A_BEGIN");
}

TEST(ZJsonExpression_Parse, NeitherChangesNorKeepsTheText) {
  std::string text = "{\"name\":[1,\"two\"]}\n\n";
  const std::string before = text;
  const Document document = documents::parse(text);
  EXPECT_EQ(text, before);
  text.assign(text.size(), 'x');
  EXPECT_EQ(outcome_of(document.get()), "{\"name\":[1,\"two\"]}");
}

TEST(ZJsonExpression_Parse, ReadsNoByteBehindTheText) {
  // Exactly as large as the text, so that a sanitizer sees each read behind it.
  const std::string texts[] = {"[",
                               "[1",
                               "[1.",
                               "[1.5",
                               "[1e",
                               "[1e+",
                               "[-",
                               "[t",
                               "[tru",
                               "[\"",
                               "[\"a",
                               "[\"\\",
                               "[\"0123456789abcde",
                               "[\"0123456789abcdef",
                               "[                ",
                               "{\"a\":",
                               "[fals"};
  for (const std::string &text : texts) {
    const std::unique_ptr<char[]> exact(new char[text.size()]);
    std::memcpy(exact.get(), text.data(), text.size());
    const Document document(ZJsonExpression_Parse(exact.get(), static_cast<int32_t>(text.size())));
    EXPECT_EQ(document->root, nullptr) << text;
  }
}

TEST(ZJsonExpression_Parse, TakesAStringOfManyMegabytes) {
  const std::string text = "[\"" + std::string(100000000, 'x') + "\"]";
  const Document document = documents::parse(text);
  EXPECT_EQ(std::strlen(document->root->array->items[0]->string), 100000000U);
}

Document parse_stream(const std::string &text) {
  FILE *stream = std::tmpfile();
  std::fwrite(text.data(), 1, text.size(), stream);
  std::rewind(stream);
  Document document(ZJsonExpression_ParseStream(stream));
  EXPECT_EQ(std::fclose(stream), 0);  // it is still open
  return document;
}

TEST(ZJsonExpression_ParseFile, ParsesAFile) {
  const support::TemporaryFolder folder;
  support::write_file(folder / "a.json", "\n{ \"a\" : [ 1 , 2 ] }\n");
  ZJsonExpression *document = nullptr;
  EXPECT_EQ(ZJsonExpression_ParseFile(&document, (folder / "a.json").c_str()), 0);
  EXPECT_EQ(outcome_of(Document(document).get()), "{\"a\":[1,2]}");
}

TEST(ZJsonExpression_ParseFile, GivesADocumentWithTheMessageOfASyntaxError) {
  const support::TemporaryFolder folder;
  support::write_file(folder / "bad.json", "[1,\n2");
  ZJsonExpression *document = nullptr;
  EXPECT_EQ(ZJsonExpression_ParseFile(&document, (folder / "bad.json").c_str()), 0);
  EXPECT_EQ(outcome_of(Document(document).get()),
            "line #2.1: syntax error, unexpected $end, expecting A_END or COMMA");
}

TEST(ZJsonExpression_ParseFile, RefusesNullArguments) {
  EXPECT_EQ(ZJsonExpression_ParseFile(nullptr, "/dev/null"), EINVAL);
  ZJsonExpression *document = nullptr;
  EXPECT_EQ(ZJsonExpression_ParseFile(&document, nullptr), EINVAL);
}

TEST(ZJsonExpression_ParseFile, ReturnsTheErrnoOfAFileThatCannotBeOpenedAndLeavesTheResultAlone) {
  const support::TemporaryFolder folder;
  ZJsonExpression mark = {nullptr, nullptr};
  ZJsonExpression *document = &mark;
  EXPECT_EQ(ZJsonExpression_ParseFile(&document, (folder / "absent").c_str()), ENOENT);
  EXPECT_EQ(ZJsonExpression_ParseFile(&document, ""), ENOENT);
  EXPECT_EQ(document, &mark);
}

TEST(ZJsonExpression_ParseFile, ClosesTheFile) {
  const support::TemporaryFolder folder;
  support::write_file(folder / "a.json", "[]");
  const int before = support::open_descriptors();
  ZJsonExpression *document = nullptr;
  ZJsonExpression_ParseFile(&document, (folder / "a.json").c_str());
  ZJsonExpression_Delete(document);
  EXPECT_EQ(support::open_descriptors(), before);
}

TEST(ZJsonExpression_ParseFile, Returns63WhenMemoryRunsOut) {
  const support::TemporaryFolder folder;
  support::write_file(folder / "a.json", "[]");
  const std::string path = folder / "a.json";
  ZJsonExpression mark = {nullptr, nullptr};
  ZJsonExpression *document = &mark;
  const support::FailingAllocator failing(2, true);  // the first is the stream's
  EXPECT_EQ(ZJsonExpression_ParseFile(&document, path.c_str()), 63);
  EXPECT_EQ(document, nullptr);
}

// A file read at once gives what its stream gives, whatever stands behind the document.
TEST(ZJsonExpression_ParseFile, AgreesWithAStreamOfTheSameBytes) {
  const support::TemporaryFolder folder;
  const std::string path = folder / "a.json";
  const std::string deep = std::string(300, '[') + std::string(300, ']');
  for (const std::string &document :
       {std::string("[1]"), std::string("{\"a\":[\"b\",1.5]}"), deep, std::string("[1")}) {
    for (const std::string &end :
         {std::string(), std::string(" "), std::string("\r\n \t\n"), std::string("\v"), std::string("\0", 1),
          std::string(" x"), std::string("\n[2]")}) {
      const std::string text = document + end;
      support::write_file(path, text);
      ZJsonExpression *parsed = nullptr;
      ASSERT_EQ(ZJsonExpression_ParseFile(&parsed, path.c_str()), 0);
      EXPECT_EQ(outcome_of(Document(parsed).get()), outcome_of(parse_stream(text).get())) << text;
    }
  }
}

// Files of the system's own have no size to be read at once by.
TEST(ZJsonExpression_ParseFile, ParsesAFileThatTellsNoSize) {
  const std::string path = "/proc/sys/kernel/ostype";
  ZJsonExpression *document = nullptr;
  ASSERT_EQ(ZJsonExpression_ParseFile(&document, path.c_str()), 0);
  EXPECT_EQ(outcome_of(Document(document).get()), outcome_of(parse_stream(support::read_file(path)).get()));
}

TEST(ZJsonExpression_ParseFile, ParsesAFileTooLargeToBeReadAtOnce) {
  constexpr std::size_t kLength = std::size_t{65} << 20;
  const support::TemporaryFolder folder;
  const std::string path = folder / "a.json";
  support::write_file(path, "[\"" + std::string(kLength, 'x') + "\"]");
  ZJsonExpression *parsed = nullptr;
  ASSERT_EQ(ZJsonExpression_ParseFile(&parsed, path.c_str()), 0);
  const Document document(parsed);
  ASSERT_NE(document->root, nullptr);
  EXPECT_EQ(std::strlen(document->root->array->items[0]->string), kLength);
}

TEST(ZJsonExpression_ParseStream, ReadsToTheEndWithoutTrimming) {
  EXPECT_EQ(outcome_of(parse_stream("[1]\n\n").get()), "[1]");
  EXPECT_EQ(outcome_of(parse_stream("").get()), kEmptyMessage);
  EXPECT_EQ(outcome_of(parse_stream(" ").get()),
            "line #1.2: syntax error, unexpected $undefined, expecting O_BEGIN or A_BEGIN");
  EXPECT_EQ(outcome_of(parse_stream(std::string("[1]\0x", 5)).get()), "[1]");
}

TEST(ZJsonExpression_ParseStream, ReadsDocumentsOfManyBlocks) {
  std::string text = "[";
  while (text.size() < 300000)
    text += "{\"some name\":[1,2.5,\"text " + std::to_string(text.size()) + "\"]},";
  text += "\"" + std::string(200000, 'x') + "\"]";
  EXPECT_TRUE(outcome_of(parse_stream(text).get()) == text);
}

TEST(ZJsonExpression_ParseStreamDeathTest, EndsTheProcessAtALineFeedThatNoTokenTakesIn) {
  EXPECT_EXIT(parse_stream("\n"), ::testing::ExitedWithCode(2), "^flex scanner jammed\n$");
  EXPECT_EXIT(parse("[\"a\"\n\"b\"]"), ::testing::ExitedWithCode(2), "^flex scanner jammed\n$");
}

// Every corpus file in the folder that the environment names parses from memory and from the file to the same
// document.
TEST(ZJsonExpression_ParseFile, ReadsTheCorpora) {
  const char *folder = std::getenv("ZORVCRT_JSON_CORPORA");
  if (folder == nullptr) GTEST_SKIP() << "ZORVCRT_JSON_CORPORA names no folder";
  int files = 0;
  for (const auto &entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() != ".json") continue;
    const std::string text = support::read_file(entry.path());
    const std::string compact = parse(text);
    ASSERT_TRUE(compact.starts_with("{") || compact.starts_with("[")) << entry.path() << compact;
    ZJsonExpression *document = nullptr;
    ASSERT_EQ(ZJsonExpression_ParseFile(&document, entry.path().c_str()), 0);
    ASSERT_TRUE(outcome_of(Document(document).get()) == compact) << entry.path();
    ++files;
  }
  EXPECT_GT(files, 0);
}

}  // namespace
