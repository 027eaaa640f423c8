// The quick parser beside the parser of tokens: the same documents, and nothing of its own on all other
// texts.
#include "quick_parser.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "documents.hpp"
#include "failing_allocator.hpp"
#include "grammar.h"
#include "plain_scanner.hpp"
#include "scanner.h"
#include "zjsondriver.h"

namespace {

using zorvcrt::QuickOutcome;

using documents::Document;
using documents::list_of;
using documents::repeated;

// Exactly as large as the text, so that a sanitizer sees each read behind it.
std::unique_ptr<char[]> exact_copy(const std::string &text) {
  std::unique_ptr<char[]> copy(new char[text.size()]);
  std::copy(text.begin(), text.end(), copy.get());
  return copy;
}

// The document, or none when the text is left to the other parser.
Document quickly(const std::string &text) {
  const auto copy = exact_copy(text);
  ZJsonExpression *document = nullptr;
  const char *at = nullptr;
  const QuickOutcome outcome = zorvcrt::parse_quickly(copy.get(), copy.get() + text.size(), document, at);
  EXPECT_EQ(outcome, document == nullptr ? QuickOutcome::kLeft : QuickOutcome::kParsed) << text;
  return Document(document);
}

Document by_tokens(const std::string &text) {
  zjson_scanner *scanner = nullptr;
  zjson_lex_init(&scanner);
  zjson__scan_bytes(text.data(), static_cast<int32_t>(text.size()), scanner);
  ZJsonExpression *document = nullptr;
  zjson_parse(&document, scanner);
  zjson_lex_destroy(scanner);
  return Document(document);
}

bool are_same(const ZJsonValue *one, const ZJsonValue *other);

bool are_same(const ZJsonMember *one, const ZJsonMember *other) {
  return std::strcmp(one->name, other->name) == 0 && are_same(one->value, other->value);
}

template <class Container, class Item>
bool are_same(const Container *one, const Container *other, Item **Container::*slots) {
  if (one->count != other->count || one->capacity != other->capacity) return false;
  for (int32_t i = 0; i < one->count; ++i)
    if (!are_same((one->*slots)[i], (other->*slots)[i])) return false;
  for (int32_t i = one->count; i < one->capacity; ++i)
    if ((one->*slots)[i] != nullptr || (other->*slots)[i] != nullptr) return false;
  return true;
}

bool are_same(const ZJsonValue *one, const ZJsonValue *other) {
  if (one->type != other->type) return false;
  switch (one->type) {
    case ZJSON_STRING:
      return std::strcmp(one->string, other->string) == 0;
    case ZJSON_ARRAY:
      return are_same(one->array, other->array, &ZJsonArray::items);
    case ZJSON_OBJECT:
      return are_same(one->object, other->object, &ZJsonObject::members);
    default:
      return one->integer == other->integer;  // the bits of a real too, and those of a value without payload
  }
}

// A document, of every kind of token and in every layout.
class RandomDocument {
 public:
  explicit RandomDocument(unsigned seed) : random_(seed) {}

  std::string next() {
    text_.clear();
    space();
    container(4);
    return text_;
  }

  unsigned below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }

 private:
  template <std::size_t kCount>
  const char *one_of(const char *const (&choices)[kCount]) {
    return choices[below(kCount)];
  }
  void space() {
    static const char *const spaces[] = {"", "", "", "", " ", "\n", "\t", "\r\n  ", "\n                    "};
    text_ += one_of(spaces);
  }
  void digits(unsigned most) {
    for (unsigned i = below(most) + 1; i > 0; --i)
      text_ += static_cast<char>('0' + below(10));
  }
  void number() {
    text_ += one_of({"", "", "-"});
    if (below(3) == 0) {
      text_ += '0';
    } else {
      text_ += static_cast<char>('1' + below(9));
      if (below(2) == 0) digits(24);
    }
    if (below(2) == 0) {
      text_ += '.';
      digits(below(8) == 0 ? 70 : 18);
    }
    if (below(6) == 0) {
      text_ += one_of({"e", "E", "e+", "E-"});
      digits(3);
    }
  }
  void string() {
    const char quote = below(4) == 0 ? '\'' : '"';
    text_ += quote;
    for (unsigned i = below(6); i > 0; --i) {
      static const char *const pieces[] = {"a",        "key",  "'",  "\\\"", "\\'",
                                           "\\\\\\\"", "\xff", "\t", "\\n",  "0123456789abcdefghijklmnop"};
      const std::string piece = one_of(pieces);
      text_ += piece[0] == quote ? "" : piece;
    }
    text_ += quote;
  }
  void value(int depth) {
    const unsigned kind = below(8);
    if (kind < 3 && depth > 0) return container(depth);
    if (kind < 4) return string();
    if (kind < 6) return number();
    text_ += one_of({"true", "false", "null"});
  }
  void container(int depth) {
    const bool is_object = below(2) == 0;
    text_ += is_object ? '{' : '[';
    space();
    for (unsigned i = below(below(10) == 0 ? 40 : 5); i > 0; --i) {
      if (is_object) {
        string();
        space();
        text_ += ':';
        space();
      }
      value(depth - 1);
      space();
      if (i > 1) text_ += ',';
      space();
    }
    text_ += is_object ? '}' : ']';
  }

  std::mt19937 random_;
  std::string text_;
};

TEST(parse_quickly, MakesTheDocumentThatTheParserOfTokensMakes) {
  RandomDocument documents(1);
  for (int round = 0; round < 6000; ++round) {
    const std::string text = documents.next();
    const Document expected = by_tokens(text);
    ASSERT_NE(expected->root, nullptr) << text;
    const Document document = quickly(text);
    ASSERT_NE(document, nullptr) << text;
    ASSERT_EQ(document->errorMessage, nullptr);
    ASSERT_TRUE(are_same(document->root, expected->root)) << text;
  }
}

TEST(parse_quickly, MakesListsOfEveryLengthInEachOther) {
  for (const int count : {0, 1, 9, 10, 11, 19, 20, 117, 118, 119, 120, 129, 130, 500, 511, 512, 513, 9000}) {
    const std::string numbers = list_of("7", count);
    const std::string names = list_of("\"k\":[" + list_of("7", count % 600) + "]", 3);
    for (const std::string &text : {"[" + numbers + "]", "[[" + numbers + "],[" + numbers + "]]",
                                    "{" + names + ",\"l\":{" + list_of("\"m\":{}", count) + "}}",
                                    "[" + list_of("[" + list_of("[]", count % 700) + "]", 5) + "," +
                                        list_of("{}", count % 700 + 1) + "]"}) {
      const Document document = quickly(text);
      ASSERT_NE(document, nullptr) << count;
      ASSERT_TRUE(are_same(document->root, by_tokens(text)->root)) << count;
    }
  }
}

TEST(parse_quickly, LeavesWhatIsNestedTooDeepForIt) {
  for (const auto &[open, close] : {std::pair{"[", "]"}, std::pair{"{\"a\":", "}"}}) {
    const std::string inside = open[0] == '[' ? "" : "1";
    EXPECT_NE(quickly(repeated(open, 199) + inside + repeated(close, 199)), nullptr);
    EXPECT_NE(quickly(repeated(open, 200) + inside + repeated(close, 200)), nullptr);
    EXPECT_EQ(quickly(repeated(open, 201) + inside + repeated(close, 201)), nullptr);
  }
}

TEST(parse_quickly, LeavesWhatIsNoDocument) {
  const char *const texts[] = {"",          "[",     "]",       "}",     "[]]",      "[}",           "{]",
                               "[1,]",      "[,1]",  "{\"a\"}", "{1:2}", "{\"a\":}", "{\"a\":1,}",   "[1}",
                               "{\"a\":1]", "[tru]", "[truex]", "[nul]", "[-]",      "[01]",         "[1.]",
                               "[1e]",      "[.5]",  "[+1]",    "[\"a]", "['a]",     "[\"a\"\"b\"]", "[1 2]",
                               "[[1]",      "{}{}",  "\"a\"]",  "1]",    "[\v1]",    "[\x80]"};
  for (const char *text : texts)
    EXPECT_EQ(quickly(text), nullptr) << text;
}

bool does_jam(const std::string &text) {
  plain::PlainScanner scanner{text};
  for (;;) {
    const int code = scanner.next().code;
    if (code == 0 || code == plain::kJam) return code == plain::kJam;
  }
}

// Wherever a text has been damaged: one outcome, one message, one place.
TEST(ZJsonExpression_Parse, AgreesWithTheParserOfTokensOnDamagedDocuments) {
  RandomDocument documents(2);
  int errors = 0;
  for (int round = 0; round < 6000; ++round) {
    std::string text = round % 8 == 0 ? "" : documents.next();
    const std::size_t at = text.empty() ? 0 : documents.below(static_cast<unsigned>(text.size()));
    if (round % 4 == 1) text.erase(at, 1);
    if (round % 4 == 2) text.insert(at, 1, "[]{},:1\"' x\n\\-.\t"[documents.below(17)]);
    if (round % 4 == 3) text.resize(at);
    if (text.empty()) text = plain::random_text(*std::make_unique<std::mt19937>(round), 12) + "]";
    while (!text.empty() && std::strchr(" \t\n\r", text.back()) != nullptr)
      text.pop_back();
    if (does_jam(text)) continue;
    const auto copy = exact_copy(text);
    const Document document(ZJsonExpression_Parse(copy.get(), static_cast<int32_t>(text.size())));
    const Document expected = by_tokens(text);
    ASSERT_EQ(document->root == nullptr, expected->root == nullptr) << text;
    if (expected->root != nullptr) {
      ASSERT_TRUE(are_same(document->root, expected->root)) << text;
    } else {
      ASSERT_STREQ(document->errorMessage, expected->errorMessage) << text;
      ++errors;
    }
  }
  EXPECT_GT(errors, 1200) << "enough of the texts are damaged";
}

// The place is behind the token that there was no memory for.
TEST(ZJsonExpression_Parse, SaysWhereMemoryHasRunOut) {
  const std::string text = "[ 1,\n{\"a\":\"b\"},[0,1,2,3,4,5,6,7,8,9]]";
  std::vector<std::string> messages;
  for (std::size_t n = 1;; ++n) {
    support::FailingAllocator failing(n);
    const Document document(ZJsonExpression_Parse(text.data(), static_cast<int32_t>(text.size())));
    if (!failing.stop()) break;
    ASSERT_NE(document, nullptr) << n;
    if (messages.empty() || messages.back() != document->errorMessage)
      messages.emplace_back(document->errorMessage);
  }
  const std::vector<std::string> expected = {
      "line #1.1: memory exhausted",   // the document
      "line #1.3: memory exhausted",   // [
      "line #1.4: memory exhausted",   // 1
      "line #2.1: memory exhausted",   // {
      "line #2.4: memory exhausted",   // "a"
      "line #2.8: memory exhausted",   // "b"
      "line #2.11: memory exhausted",  // [
      "line #2.12: memory exhausted",  // 0
      "line #2.14: memory exhausted", "line #2.16: memory exhausted", "line #2.18: memory exhausted",
      "line #2.20: memory exhausted", "line #2.22: memory exhausted", "line #2.24: memory exhausted",
      "line #2.26: memory exhausted", "line #2.28: memory exhausted", "line #2.30: memory exhausted",
      "line #2.31: memory exhausted",  // ] behind ten items
  };
  EXPECT_EQ(messages, expected);
}

}  // namespace
