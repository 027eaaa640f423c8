// JSON files when the system refuses, or changes them while they are read: the reason is told, or the process
// ends as the scanner's header says; what a file has grown to is read whole.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <utility>

#include "../json/documents.hpp"
#include "failing_allocator.hpp"
#include "failing_calls.hpp"
#include "files.hpp"
#include "grammar.h"
#include "process_end.hpp"
#include "scanner.h"
#include "zjsondriver.h"

namespace {

void expect_unreadable(const faults::ProcessEnd &end) {
  EXPECT_EQ(end.status, 2);
  EXPECT_EQ(end.errors, "input in flex scanner failed\n");
}

// A file to be parsed, whose calls are fopen(), fstat(), fread() up to the end, and fclose().
class JsonRefused : public ::testing::Test {
 protected:
  void SetUp() override { support::write_file(path, R"({"a":["b",1]})"); }

  // Parses under the failure; the result, or how the process has come to its end.
  faults::ProcessEnd parse(std::size_t first, std::size_t way, int32_t expected) {
    return faults::end_of(
        [&] {
          const int descriptors = support::open_descriptors();
          ZJsonExpression *document = nullptr;
          support::FailingCalls failing(first, way, false);
          const int32_t result = ZJsonExpression_ParseFile(&document, path.c_str());
          failing.stop();
          EXPECT_EQ(result, expected);
          EXPECT_EQ(document != nullptr, expected == 0);
          EXPECT_TRUE(document == nullptr || document->root != nullptr);
          ZJsonExpression_Delete(document);
          EXPECT_EQ(support::open_descriptors(), descriptors);
        },
        [] { return true; });
  }

  support::TemporaryFolder folder;
  std::string path = folder / "document.json";
};

TEST_F(JsonRefused, TellsWhyTheFileCannotBeOpened) {
  std::size_t way = 0;
  for (const int number : {EMFILE, EACCES, EINTR, ENFILE, EIO}) {
    EXPECT_TRUE(parse(1, way++, number).returned) << number;
  }
}

TEST_F(JsonRefused, ReadsAFileWhoseKindCannotBeTold) {
  EXPECT_TRUE(parse(2, 0, 0).returned);
}

TEST_F(JsonRefused, EndsTheProcessWhenTheFileCannotBeRead) {
  for (const std::size_t call : {3U, 4U}) {
    expect_unreadable(parse(call, 0, 0));
  }
}

TEST_F(JsonRefused, TakesAnInterruptedReadUpAgain) {
  for (const std::size_t call : {3U, 4U}) {
    EXPECT_TRUE(parse(call, 2, 0).returned);
  }
}

TEST_F(JsonRefused, EndsTheProcessWhenAStreamCannotBeRead) {
  const faults::ProcessEnd end = faults::end_of(
      [&] {
        FILE *stream = std::fopen(path.c_str(), "r");
        const support::FailingCalls failing(1, 0, false);
        ZJsonExpression_ParseStream(stream);
      },
      [] { return true; });
  expect_unreadable(end);
}

TEST_F(JsonRefused, EndsTheProcessWhenTheInputOfAScannerCannotBeRead) {
  const faults::ProcessEnd end = faults::end_of(
      [&] {
        zjson_scanner *scanner = nullptr;
        ASSERT_EQ(zjson_lex_init(&scanner), 0);
        zjson_set_in(std::fopen(path.c_str(), "r"), scanner);
        const support::FailingCalls failing(1, 0, false);
        ZJsonExpression *document = nullptr;
        zjson_parse(&document, scanner);
      },
      [] { return true; });
  expect_unreadable(end);
}

TEST_F(JsonRefused, ScansOnBehindAnInterruptedReadOfAStream) {
  FILE *stream = std::fopen(path.c_str(), "r");
  zjson_scanner *scanner = nullptr;
  ASSERT_EQ(zjson_lex_init(&scanner), 0);
  zjson_set_in(stream, scanner);
  support::FailingCalls failing(1, 2, false);
  EXPECT_EQ(zjson_lex(nullptr, nullptr, scanner), ZJSON_TOKEN_OBJECT_BEGIN);
  EXPECT_TRUE(failing.stop());
  EXPECT_EQ(failing.error(), EINTR);
  zjson_lex_destroy(scanner);
  std::fclose(stream);
}

TEST_F(JsonRefused, HasReadTheFileEvenIfItCannotBeClosedWell) {
  EXPECT_TRUE(parse(5, 0, 0).returned);
}

// Parses a file to which something is added when its size is known, before it is read for the given time.
void expect_parsed_when_grown(const std::string &text, const std::string &added, std::size_t read = 1) {
  const support::TemporaryFolder folder;
  const std::string path = folder / "document.json";
  support::write_file(path, text);
  ZJsonExpression *document = nullptr;
  support::BeforeCall growth("fread", read, [&] { std::ofstream(path, std::ios::app) << added; });
  EXPECT_EQ(ZJsonExpression_ParseFile(&document, path.c_str()), 0);
  EXPECT_TRUE(growth.has_happened());
  EXPECT_EQ(documents::outcome_of(documents::Document(document).get()), text + added);
}

TEST(JsonGrowing, IsParsedWithOneByteMore) {
  expect_parsed_when_grown("[1,2", "]");
}

TEST(JsonGrowing, IsParsedWithManyBlocksMore) {
  expect_parsed_when_grown("[" + documents::list_of("\"item\"", 2000),
                           "," + documents::list_of("\"more\"", 20000) + "]");
}

TEST(JsonGrowing, IsParsedWithWhatComesBetweenTwoReads) {
  expect_parsed_when_grown("[" + documents::list_of("\"item\"", 2000), ",1]", 2);
}

TEST(JsonGrowing, IsParsedWhenItWasEmpty) {
  expect_parsed_when_grown("", "{\"a\":[\"b\",1]}");
}

// Lists of more items than a parser keeps in place are kept in pages, which grow.
void expect_memory_exhausted_without_pages(const std::string &text) {
  const auto length = static_cast<int32_t>(text.size());
  std::size_t failures = 0;
  for (std::size_t first = 1;; ++first) {
    support::FailingCalls failing(first, 0, false);
    ZJsonExpression *document = ZJsonExpression_Parse(text.data(), length);
    const bool failed = failing.stop();
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(document->root == nullptr, failed) << first;
    if (failed) {
      EXPECT_NE(std::strstr(document->errorMessage, "memory exhausted"), nullptr);
    }
    ZJsonExpression_Delete(document);
    if (!failed) break;
    EXPECT_EQ(failing.error(), ENOMEM);
    ++failures;
  }
  EXPECT_GE(failures, 2U);
}

TEST(JsonWithoutPages, SaysThatMemoryIsExhaustedByAnArray) {
  expect_memory_exhausted_without_pages("[" + documents::list_of("0", 20000) + "]");
}

TEST(JsonWithoutPages, SaysThatMemoryIsExhaustedByAnObject) {
  expect_memory_exhausted_without_pages("{" + documents::list_of("\"a\":0", 20000) + "}");
}

// So deep that the parser with a stack of states takes it.
TEST(JsonWithoutPages, SaysThatMemoryIsExhaustedInTheDepth) {
  const std::string members = "{" + documents::list_of("\"a\":0", 20000) + "}";
  expect_memory_exhausted_without_pages(std::string(300, '[') + members + std::string(300, ']'));
}

// Released in every way, a long list is released in its turn when there are no pages for its items.
TEST(JsonWithoutPages, ReleasesLongListsInTheirTurn) {
  const std::string text = "{\"a\":[" + documents::list_of("[7]", 9000) + "]}";
  using Release = void (*)(ZJsonExpression *);
  const Release releases[] = {
      [](ZJsonExpression *) {},
      [](ZJsonExpression *document) { ZJsonExpression_SetRoot(document, ZJSON_ARRAY, ZJsonArray_New()); },
      [](ZJsonExpression *document) { ZJsonValue_Delete(std::exchange(document->root, nullptr)); },
      [](ZJsonExpression *document) {
        ZJsonMember_Delete(std::exchange(document->root->object->members[0], nullptr));
      },
      [](ZJsonExpression *document) { ZJsonObject_DeleteMember(document->root->object, "a"); },
      [](ZJsonExpression *document) {
        ZJsonObject_DeleteMemberByRef(document->root->object, document->root->object->members[0]);
      },
      [](ZJsonExpression *document) {
        ZJsonObject_Replace(document->root->object, ZJsonMember_New("a", ZJsonValue_NewNull()));
      },
  };
  for (const Release release : releases) {
    const long before = support::live_blocks();
    ZJsonExpression *document = documents::parse(text).release();
    support::FailingCalls failing(1, 0, true);
    errno = EDOM;
    release(document);
    ZJsonExpression_Delete(document);
    const int number = errno;
    EXPECT_TRUE(failing.stop());
    EXPECT_EQ(failing.function(), "mmap");
    EXPECT_EQ(number, EDOM);
    EXPECT_EQ(support::live_blocks(), before);
  }
}

}  // namespace
