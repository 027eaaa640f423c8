#include "grammar.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "documents.hpp"
#include "failing_allocator.hpp"
#include "files.hpp"
#include "plain_parser.hpp"
#include "zjsondriver.h"

namespace {

using documents::Document;
using documents::list_of;
using documents::parse;
using documents::repeated;

std::string outcome_of(const std::string &text) {
  return documents::outcome_of(parse(text).get());
}

TEST(zjson_parse, BuildsEveryKindOfValue) {
  EXPECT_EQ(outcome_of("[]"), "[]");
  EXPECT_EQ(outcome_of("{}"), "{}");
  EXPECT_EQ(outcome_of(" [ 1 , -2.5 , \"a\" , 'b' , true , false , null , [ ] , { } ] "),
            R"([1,-2.5,"a","b",true,false,null,[],{}])");
  EXPECT_EQ(outcome_of(R"({"a":1,'b':{"c":[[],[1],{}]}})"), R"({"a":1,"b":{"c":[[],[1],{}]}})");
}

TEST(zjson_parse, KeepsMembersOfTheSameName) {
  const Document document = parse(R"({"a":1,"a":2})");
  ASSERT_EQ(document->root->object->count, 2);
  EXPECT_EQ(ZJsonObject_GetMember(document->root->object, "a")->value->integer, 1);
  EXPECT_EQ(document->root->object->members[1]->value->integer, 2);
}

TEST(zjson_parse, GivesContainersTheCapacityOfItemByItemAppends) {
  for (const int32_t count : {0, 1, 8, 9, 10, 11, 19, 20, 99, 100, 1000}) {
    const std::string items = count == 0 ? "" : "1" + repeated(",1", count - 1);
    const Document array = parse("[" + items + "]");
    EXPECT_EQ(array->root->array->count, count);
    EXPECT_EQ(array->root->array->capacity, (count / 10 + 1) * 10);
    for (int32_t i = count; i < array->root->array->capacity; ++i)
      EXPECT_EQ(array->root->array->items[i], nullptr);
    const std::string members = count == 0 ? "" : "'a':1" + repeated(",'a':1", count - 1);
    const Document object = parse("{" + members + "}");
    EXPECT_EQ(object->root->object->count, count);
    EXPECT_EQ(object->root->object->capacity, (count / 10 + 1) * 10);
  }
}

TEST(zjson_parse, BuildsManyLongListsOfEveryLengthInEachOther) {
  std::string text = "[0";
  for (int count = 120; count < 160; ++count) {
    text +=
        ",[" + list_of("{\"k\":[" + list_of("7", count) + "]}", 3) + "],{" + list_of("\"m\":[]", count) + "}";
  }
  text += ",[" + list_of("[" + list_of("1", 130) + "]", 130) + "],[" + list_of("2", 5000) + "]]";
  EXPECT_TRUE(outcome_of(text) == text);
  // Nothing of them is lost or left behind where the text breaks off.
  for (std::size_t size = 1; size < text.size(); size += 997) {
    EXPECT_EQ(outcome_of(text.substr(0, size)).substr(0, 6), "line #");
  }
  EXPECT_EQ(outcome_of(text + "x").substr(0, 6), "line #");
}

TEST(zjson_parse, LetsParsedContainersBeEdited) {
  const Document document = parse("[" + std::string("1") + repeated(",1", 8) + "]");
  for (int i = 0; i < 100; ++i)
    ZJsonArray_Append(document->root->array, ZJsonValue_NewInt(i));
  EXPECT_EQ(document->root->array->count, 109);
  EXPECT_EQ(document->root->array->capacity, 110);
}

TEST(zjson_parse, PassesNamesThroughTheQuoteRuleASecondTime) {
  EXPECT_EQ(outcome_of(R"({"'k'":1,'"k"':2,"k'":3,"":4,"\"":5})"), R"({"k":1,"k":2,"k'":3,"":4,"\"":5})");
  EXPECT_EQ(outcome_of("{\"a\tb\":1}"), "{\"a\tb\":1}") << "names are not escaped";
}

TEST(zjson_parse, PassesStringValuesThroughTheStringRule) {
  EXPECT_EQ(outcome_of("['\"a\"']"), "[\"a\"]");
  EXPECT_EQ(outcome_of("[\"'a'\"]"), "[\"'a'\"]");
  EXPECT_EQ(outcome_of("[\"a\tb\n\"]"), "[\"a\\tb\\n\"]");
  EXPECT_EQ(outcome_of("['say \"hi\"']"), R"(["say \"hi\""])");
  EXPECT_EQ(outcome_of("[\"\\u0041\\\"\"]"), "[\"\\u0041\\\"\"]");
  EXPECT_EQ(outcome_of("[\"a\\\"b\t\"]"), "[\"a\\\\\"b\\t\"]");
}

TEST(zjson_parse, EndsStringsAndTheInputAtZeroBytes) {
  EXPECT_EQ(outcome_of(std::string("[\"a\0b\"]", 7)), "[\"a\"]");
  EXPECT_EQ(outcome_of(std::string("{\"a\0b\":1}", 9)), "{\"a\":1}");
  EXPECT_EQ(outcome_of(std::string("[1]\0]]]", 7)), "[1]");
  EXPECT_EQ(outcome_of(std::string("[1\0]", 4)),
            "line #1.4: syntax error, unexpected $end, expecting A_END or COMMA");
}

struct ErrorCase {
  const char *text;
  const char *message;
};

TEST(zjson_parse, NamesThePlaceTheTokenAndWhatWasExpected) {
  const ErrorCase cases[] = {
      {"", "line #1.1: syntax error, unexpected $end, expecting O_BEGIN or A_BEGIN"},
      {"42", "line #1.3: syntax error, unexpected INTEGER, expecting O_BEGIN or A_BEGIN"},
      {"\"abc\"", "line #1.6: syntax error, unexpected STRING, expecting O_BEGIN or A_BEGIN"},
      {"{\"a\" 1}", "line #1.7: syntax error, unexpected INTEGER, expecting COLON"},
      {"[1,]", "line #1.5: syntax error, unexpected A_END"},
      {"[,1]", "line #1.3: syntax error, unexpected COMMA"},
      {"[", "line #1.2: syntax error, unexpected $end"},
      {"{", "line #1.2: syntax error, unexpected $end, expecting STRING or O_END"},
      {"{\"a\"}", "line #1.6: syntax error, unexpected O_END, expecting COLON"},
      {"{\"a\":}", "line #1.7: syntax error, unexpected O_END"},
      {"{\"a\":1,}", "line #1.9: syntax error, unexpected O_END, expecting STRING"},
      {"{\"a\":1 2}", "line #1.9: syntax error, unexpected INTEGER, expecting O_END or COMMA"},
      {"{a:1}", "line #1.3: syntax error, unexpected $undefined, expecting STRING or O_END"},
      {"[1 true]", "line #1.8: syntax error, unexpected TRUE_SYM, expecting A_END or COMMA"},
      {"[1] x", "line #1.6: syntax error, unexpected $undefined, expecting $end"},
      {"[1][", "line #1.5: syntax error, unexpected A_BEGIN, expecting $end"},
      {"{} false", "line #1.9: syntax error, unexpected FALSE_SYM, expecting $end"},
      {"[1]\xff", "line #1.5: syntax error, unexpected $undefined, expecting $end"},
      {"[\n\n  1 null]", "line #3.8: syntax error, unexpected NULL_SYM, expecting A_END or COMMA"},
      {"[\"a\" \"b\"]", "line #1.6: syntax error, unexpected $undefined, expecting A_END or COMMA"},
      {"{1.5", "line #1.5: syntax error, unexpected NUMBER, expecting STRING or O_END"},
      {":", "line #1.2: syntax error, unexpected COLON, expecting O_BEGIN or A_BEGIN"},
      {"{{", "line #1.3: syntax error, unexpected O_BEGIN, expecting STRING or O_END"},
  };
  for (const ErrorCase &c : cases) {
    EXPECT_EQ(outcome_of(c.text), c.message) << c.text;
  }
}

// A text that is often a document or nearly one.
std::string random_json(std::mt19937 &random, int depth) {
  static const char *const spaces[] = {"", "", "", " ", "\n", "\t  ", "\r\n    "};
  static const char *const scalars[] = {
      "1",    "-20",   "3.25",  "1e5",         "true",
      "null", "false", "\"s\"", "'q\"\t\\\"'", "\"long text, longer than 16\""};
  const auto space = [&] { return std::string(spaces[random() % 7]); };
  const auto list = [&](const auto &item) {
    std::string items;
    for (auto i = random() % 4; i > 0; --i)
      items += item() + (i > 1 ? "," : "");
    return items;
  };
  if (depth == 0 || random() % 3 == 0) {
    const std::string scalar = scalars[random() % 10];
    return scalar.back() == '"' || scalar.back() == '\'' ? scalar : space() + scalar + space();
  }
  if (random() % 2 == 0)
    return space() + "[" + space() + list([&] { return random_json(random, depth - 1); }) + "]" + space();
  return space() + "{" + space() +
         list([&] { return "\"k\"" + space() + ":" + random_json(random, depth - 1); }) + "}" + space();
}

TEST(zjson_parse, AgreesWithThePlainGrammarOnRandomTexts) {
  std::mt19937 random(21);
  int documents = 0;
  for (int round = 0; round < 40000; ++round) {
    std::string text = round % 4 == 0 ? plain::random_text(random, 16) : random_json(random, 4);
    if (round % 4 == 1 && !text.empty()) text.erase(random() % text.size(), 1);
    if (round % 4 == 2 && !text.empty())
      text.insert(random() % text.size(), 1, "[]{},:1\"' x"[random() % 11]);
    text = documents::without_end(text);
    const std::string expected = plain::PlainParser(text).run();
    if (expected == "jam") continue;
    ASSERT_EQ(outcome_of(text), expected) << testing::PrintToString(text);
    documents += expected[0] == 'l' ? 0 : 1;
  }
  EXPECT_GT(documents, 10000) << "enough of the texts are documents";
}

TEST(zjson_parse, ReadsTheSameFromAStreamAsFromMemory) {
  std::mt19937 random(22);
  for (int round = 0; round < 2000; ++round) {
    const std::string text = documents::without_end(random_json(random, 5));
    if (text.empty() || plain::PlainParser(text).run() == "jam") continue;
    FILE *stream = std::tmpfile();
    std::fwrite(text.data(), 1, text.size(), stream);
    std::rewind(stream);
    zjson_scanner *scanner = nullptr;
    zjson_lex_init(&scanner);
    zjson__switch_to_buffer(zjson__create_buffer(stream, static_cast<int32_t>(1 + random() % 50), scanner),
                            scanner);
    ZJsonExpression *result = nullptr;
    const int32_t status = zjson_parse(&result, scanner);
    const Document document(result);
    zjson_lex_destroy(scanner);
    std::fclose(stream);
    ASSERT_EQ(status, document->root == nullptr ? 1 : 0);
    ASSERT_EQ(documents::outcome_of(result), outcome_of(text)) << text;
  }
}

int32_t parse_status(const std::string &text, ZJsonExpression **result) {
  zjson_scanner *scanner = nullptr;
  zjson_lex_init(&scanner);
  zjson__scan_bytes(text.data(), static_cast<int32_t>(text.size()), scanner);
  const int32_t status = zjson_parse(result, scanner);
  zjson_lex_destroy(scanner);
  return status;
}

TEST(zjson_parse, TellsDocumentsErrorsAndExhaustionApart) {
  for (const auto &[text, status] :
       {std::pair<std::string, int32_t>{"[1]", 0}, {"[1", 1}, {std::string(20000, '['), 2}}) {
    ZJsonExpression *result = nullptr;
    EXPECT_EQ(parse_status(text, &result), status);
    EXPECT_EQ(parse_status(text, nullptr), status);
    ZJsonExpression_Delete(result);
  }
}

TEST(zjson_parse, ParsesOneDocumentOfAHandleAndLeavesItsLastToken) {
  zjson_scanner *scanner = nullptr;
  zjson_lex_init(&scanner);
  zjson__scan_string("[1] } 7", scanner);
  ZJsonExpression *result = nullptr;
  EXPECT_EQ(zjson_parse(&result, scanner), 1);
  EXPECT_STREQ(zjson_get_text(scanner), "} ");
  ZJsonExpression_Delete(result);
  ZJsonSymbolValue value = {};
  EXPECT_EQ(zjson_lex(&value, nullptr, scanner), ZJSON_TOKEN_INTEGER);
  EXPECT_EQ(value.integer, 7);
  zjson_lex_destroy(scanner);
}

TEST(zjson_parse, HasNoInputWithoutAScanner) {
  ZJsonExpression *result = nullptr;
  EXPECT_EQ(zjson_parse(&result, nullptr), 1);
  EXPECT_STREQ(result->errorMessage,
               "line #1.1: syntax error, unexpected $end, expecting O_BEGIN or A_BEGIN");
  ZJsonExpression_Delete(result);
}

std::string nested_arrays(int depth) {
  return repeated("[", depth) + repeated("]", depth);
}
std::string nested_objects(int depth) {
  return repeated("{\"a\":", depth - 1) + "{}" + repeated("}", depth - 1);
}

TEST(zjson_parse, NestsAsDeepAsItsStackOfTenThousandEntriesAllows) {
  for (const std::string &text : {nested_arrays(9996), nested_arrays(9997), nested_objects(3333)}) {
    EXPECT_TRUE(outcome_of(text) == text) << outcome_of(text).substr(0, 50);
  }
  EXPECT_EQ(outcome_of(nested_arrays(9998)), "line #1.10000: memory exhausted");
  EXPECT_EQ(outcome_of(nested_objects(3334)), "line #1.16666: memory exhausted");
}

TEST(zjson_parse, ReportsOpenBracketsAsUnclosedUntilTheStackIsUsedUp) {
  EXPECT_EQ(outcome_of(repeated("[", 9998)), "line #1.9999: syntax error, unexpected $end");
  EXPECT_EQ(outcome_of(repeated("[", 9999)), "line #1.10000: memory exhausted");
}

TEST(zjson_parse, CountsWhatStandsBesideTheBracketsInTheStack) {
  // An element makes an entry, so the bracket that closes it needs one more than in an empty array.
  const std::string fits = repeated("[", 9996) + "1" + repeated("]", 9996);
  EXPECT_TRUE(outcome_of(fits) == fits) << outcome_of(fits).substr(0, 50);
  EXPECT_EQ(outcome_of(repeated("[", 9997) + "1]"), "line #1.10000: memory exhausted");
  // So does a comma behind the elements.
  EXPECT_EQ(outcome_of(repeated("[1,", 3332) + "["), "line #1.9998: syntax error, unexpected $end");
  EXPECT_EQ(outcome_of(repeated("[1,", 3333)), "line #1.10000: memory exhausted");
}

TEST(zjson_error, BuildsADocumentWithTheMessageAtTheEndOfThePlace) {
  const ZJsonLocation place = {1, 2, 3, 4};
  ZJsonExpression *result = nullptr;
  EXPECT_EQ(zjson_error(&place, &result, nullptr, "text %d"), 0);
  EXPECT_STREQ(result->errorMessage, "line #3.4: text %d");
  EXPECT_EQ(result->root, nullptr);
  ZJsonExpression *first = result;
  zjson_error(nullptr, &result, nullptr, nullptr);
  EXPECT_STREQ(result->errorMessage, "line #0.0: ");
  EXPECT_NE(result, first);
  EXPECT_STREQ(first->errorMessage, "line #3.4: text %d") << "what was there is not released";
  ZJsonExpression_Delete(first);
  ZJsonExpression_Delete(result);
  EXPECT_EQ(zjson_error(&place, nullptr, nullptr, "x"), 0);
}

TEST(zjson_error, CutsTheMessageToItsBuffer) {
  const ZJsonLocation place = {1, 1, 1, 1};
  for (const std::size_t size : {1011U, 1012U, 1013U, 5000U}) {
    ZJsonExpression *result = nullptr;
    zjson_error(&place, &result, nullptr, std::string(size, 'm').c_str());
    EXPECT_EQ(std::strlen(result->errorMessage), std::min<std::size_t>(1023, size + 11));
    ZJsonExpression_Delete(result);
  }
}

std::string trace_of(const std::string &text) {
  support::CapturedDescriptor capture(2);
  zjson_debug = 1;
  const Document document = parse(text);
  zjson_debug = 0;
  return capture.text();
}

TEST(zjson_debug, TracesADocument) {
  EXPECT_EQ(zjson_debug, 0);
  EXPECT_EQ(trace_of("[1,\n'a']"), R"(Starting parse
Entering state 0
Reading a token: Next token is token A_BEGIN (1.1: )
Shifting token A_BEGIN (1.1: )
Entering state 2
Reading a token: Next token is token INTEGER (1.2: )
Shifting token INTEGER (1.2: )
Entering state 10
Reducing stack by rule 15 (line 152):
   $1 = token INTEGER (1.2: )
-> $$ = nterm VALUE (1.2: )
Stack now 0 2
Entering state 20
Reducing stack by rule 11 (line 130):
   $1 = nterm VALUE (1.2: )
-> $$ = nterm ELEMENTS (1.2: )
Stack now 0 2
Entering state 19
Reading a token: Next token is token COMMA (1.3-2.0: )
Shifting token COMMA (1.3-2.0: )
Entering state 26
Reading a token: Next token is token STRING (2.0-2: )
Shifting token STRING (2.0-2: )
Entering state 12
Reducing stack by rule 13 (line 143):
   $1 = token STRING (2.0-2: )
-> $$ = nterm VALUE (2.0-2: )
Stack now 0 2 19 26
Entering state 29
Reducing stack by rule 12 (line 135):
   $1 = nterm ELEMENTS (1.2: )
   $2 = token COMMA (1.3-2.0: )
   $3 = nterm VALUE (2.0-2: )
-> $$ = nterm ELEMENTS (1.2-2.2: )
Stack now 0 2
Entering state 19
Reading a token: Next token is token A_END (2.3: )
Shifting token A_END (2.3: )
Entering state 25
Reducing stack by rule 10 (line 123):
   $1 = token A_BEGIN (1.1: )
   $2 = nterm ELEMENTS (1.2-2.2: )
   $3 = token A_END (2.3: )
-> $$ = nterm ARRAY (1.1-2.3: )
Stack now 0
Entering state 5
Reducing stack by rule 2 (line 75):
   $1 = nterm ARRAY (1.1-2.3: )
-> $$ = nterm START (1.1-2.3: )
Stack now 0
Entering state 3
Reading a token: Now at end of input.
Shifting token $end (2.3: )
Entering state 21
Stack now 0 3 21
Cleanup: popping token $end (2.3: )
Cleanup: popping nterm START (1.1-2.3: )
)");
}

TEST(zjson_debug, TracesASyntaxError) {
  EXPECT_EQ(trace_of("{\"a\":x"), R"(Starting parse
Entering state 0
Reading a token: Next token is token O_BEGIN (1.1: )
Shifting token O_BEGIN (1.1: )
Entering state 1
Reading a token: Next token is token STRING (1.2-4: )
Shifting token STRING (1.2-4: )
Entering state 6
Reading a token: Next token is token COLON (1.5: )
Shifting token COLON (1.5: )
Entering state 22
Reading a token: Next token is token $undefined (1.6: )
Error: popping token COLON (1.5: )
Stack now 0 1 6
Error: popping token STRING (1.2-4: )
Stack now 0 1
Error: popping token O_BEGIN (1.1: )
Stack now 0
Cleanup: discarding lookahead token $undefined (1.6: )
Stack now 0
)");
}

TEST(zjson_debug, TracesEveryRuleWithItsNumberAndLine) {
  const std::string trace =
      trace_of(R"({"a":[],"b":{},"c":[1,2.5,"s",true,false,null,[1],{"d":1}]})") + trace_of("[]");
  const std::pair<int, int> rules[] = {{2, 75},   {3, 80},   {4, 89},   {5, 93},   {6, 99},
                                       {7, 104},  {8, 111},  {9, 119},  {10, 123}, {11, 130},
                                       {12, 135}, {13, 143}, {14, 148}, {15, 152}, {16, 156},
                                       {17, 160}, {18, 164}, {19, 168}, {20, 172}};
  for (const auto &[rule, line] : rules) {
    const std::string text =
        "Reducing stack by rule " + std::to_string(rule) + " (line " + std::to_string(line) + "):\n";
    EXPECT_NE(trace.find(text), std::string::npos) << text;
  }
}

TEST(zjson_debug, TracesTheGrowthOfTheStackAndItsEnd) {
  const std::string trace = trace_of(repeated("[", 9999));
  for (const char *size : {"400", "800", "1600", "3200", "6400", "10000"}) {
    const std::string text = "Stack size increased to " + std::string(size) + "\nEntering state 2\n";
    EXPECT_NE(trace.find(text), std::string::npos) << text;
  }
  EXPECT_NE(trace.find("Cleanup: popping token A_BEGIN (1.9999: )\n"), std::string::npos);
  EXPECT_NE(trace_of(repeated("[", 199)).find("Stack size increased to 400\n"), std::string::npos);
  EXPECT_EQ(trace_of(repeated("[", 198)).find("Stack size increased"), std::string::npos);
}

TEST(zjson_debug, ChangesNothingButTheTrace) {
  std::mt19937 random(23);
  for (int round = 0; round < 300; ++round) {
    const std::string text = documents::without_end(random_json(random, 4));
    if (plain::PlainParser(text).run() == "jam") continue;
    const std::string silent = outcome_of(text);
    support::CapturedDescriptor capture(2);
    zjson_debug = 1;
    const std::string traced = outcome_of(text);
    zjson_debug = 0;
    ASSERT_EQ(traced, silent);
  }
}

TEST(zjson_parse, EndsWithMemoryExhaustedWhenMemoryRunsOut) {
  const std::string text = R"({"a":[1,2.5,"s",'q"',true,false,null,[],{}],"b":{"c":{"d":[)" +
                           repeated("[", 260) + repeated("]", 260) + "]}},\"e\":\"tab\t\",\"f\":[0" +
                           repeated(",1", 200) + "],\"g\":{" + list_of("\"m\":2", 150) + "}}";
  const std::string whole = outcome_of(text);
  std::size_t n = 1;
  for (;; ++n) {
    support::FailingAllocator failing(n);
    ZJsonExpression *result = nullptr;
    result = ZJsonExpression_Parse(text.data(), static_cast<int32_t>(text.size()));
    const bool failed = failing.stop();
    const Document document(result);
    ASSERT_NE(document, nullptr) << n;
    if (!failed) {
      EXPECT_EQ(documents::printed(document.get()), whole);
      break;
    }
    ASSERT_EQ(document->root, nullptr) << n;
    ASSERT_NE(std::strstr(document->errorMessage, "memory exhausted"), nullptr) << n;
  }
  EXPECT_GT(n, 1000U);
  for (const std::size_t first : {1U, 2U, 10U, 100U, 1000U}) {
    const support::FailingAllocator failing(first, true);
    EXPECT_EQ(ZJsonExpression_Parse(text.data(), static_cast<int32_t>(text.size())), nullptr);
  }
}

TEST(zjson_parse, ReportsAnErrorOrNothingWhenMemoryRunsOutForTheMessage) {
  for (std::size_t n = 1; n <= 2; ++n) {
    support::FailingAllocator failing(n);
    const Document document(ZJsonExpression_Parse("", 0));
    if (failing.stop()) {
      EXPECT_EQ(document, nullptr);
    } else {
      EXPECT_NE(document->errorMessage, nullptr);
    }
  }
}

TEST(zjson_parse, RunsOnManyThreadsAtOnce) {
  const std::string text = R"({"a":[1,2.5,"s",{"b":null}]})";
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 2000; ++round)
        ASSERT_EQ(outcome_of(text), text);
    });
  }
  for (std::thread &thread : threads)
    thread.join();
}

}  // namespace
