#include "zjson_util.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <climits>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "documents.hpp"
#include "failing_allocator.hpp"
#include "realconv.h"
#include "zfxmemory.h"

namespace {

using documents::Owned;

constexpr int32_t kCompact = -1;

// Appends to what is given and returns the whole; checks that the length is the text's.
std::string printed(const ZJsonValue *value, int32_t level, const char *before = nullptr,
                    int32_t after_name = 0) {
  char *buffer = ZfxStrDup(before);
  const uint32_t length = ZJsonValue_ToString(value, &buffer, after_name, level);
  const Owned<char> text(buffer);
  if (buffer == nullptr) return "";
  EXPECT_EQ(length, std::strlen(buffer));
  return buffer;
}

template <class... Items>
ZJsonValue *array_of(Items... items) {
  ZJsonArray *array = ZJsonArray_New();
  (ZJsonArray_Append(array, items), ...);
  return ZJsonValue_NewArray(array);
}

template <class... Members>
ZJsonValue *object_of(Members... members) {
  ZJsonObject *object = ZJsonObject_New();
  (ZJsonObject_Append(object, members), ...);
  return ZJsonValue_NewObject(object);
}

ZJsonMember *member(const char *name, ZJsonValue *value) {
  return ZJsonMember_New(name, value);
}

ZJsonValue *integer(int64_t value) {
  return ZJsonValue_NewInteger(value);
}

struct Escaped {
  std::string text;
  uint32_t length;
  bool operator==(const Escaped &) const = default;
};

void PrintTo(const Escaped &escaped, std::ostream *stream) {
  *stream << '"' << escaped.text << "\", " << escaped.length;
}

// The new text and the reported length, or "unchanged" with the length as it was.
Escaped escape(const std::string &text, uint32_t length) {
  const Owned<char> escaped(zjson_str_escape(text.c_str(), &length));
  return {escaped == nullptr ? "unchanged" : escaped.get(), length};
}

Escaped escape(const std::string &text) {
  return escape(text, static_cast<uint32_t>(text.size()));
}

TEST(zjson_str_escape, GivesNullWhereNothingHasToBeEscaped) {
  uint32_t length = 7;
  EXPECT_EQ(zjson_str_escape(nullptr, &length), nullptr);
  EXPECT_EQ(length, 7U);
  EXPECT_EQ(escape(""), (Escaped{"unchanged", 0}));
  EXPECT_EQ(escape("plain / \f\v\x01\xff \\n \\"), (Escaped{"unchanged", 17}));
  EXPECT_EQ(escape("a\\\"b\\\""), (Escaped{"unchanged", 6}));
}

TEST(zjson_str_escape, WritesTheShortFormsOfControlCharacters) {
  EXPECT_EQ(escape("\b\t\n\r"), (Escaped{"\\b\\t\\n\\r", 8}));
  EXPECT_EQ(escape("a\tb"), (Escaped{"a\\tb", 4}));
}

TEST(zjson_str_escape, EscapesQuotesWithoutABackslashBeforeThem) {
  EXPECT_EQ(escape("\"a\""), (Escaped{"\\\"a\\\"", 5}));
  EXPECT_EQ(escape("\\\\\""), (Escaped{"unchanged", 3})) << "any backslash right before it counts";
}

TEST(zjson_str_escape, EscapesEscapedQuotesTooWhenThereIsAnotherReasonAndReportsTheCount) {
  EXPECT_EQ(escape("a\\\"b\t"), (Escaped{"a\\\\\"b\\t", 6}));
  const std::string many = "\t\\\"\\\"\\\"\\\"\\\"\\\"\\\"\\\"";
  EXPECT_EQ(escape(many), (Escaped{"\\t\\\\\"\\\\\"\\\\\"\\\\\"\\\\\"\\\\\"\\\\\"\\\\\"", 18}));
}

TEST(zjson_str_escape, StartsItsCountFromTheLengthItIsGiven) {
  EXPECT_EQ(escape("\t", 0), (Escaped{"\\t", 1}));
  EXPECT_EQ(escape("\t", 100), (Escaped{"\\t", 101}));
  EXPECT_EQ(escape("a", 100), (Escaped{"unchanged", 100}));
  const Owned<char> escaped(zjson_str_escape("\t", nullptr));
  EXPECT_STREQ(escaped.get(), "\\t");
}

TEST(zjson_str_escape, GivesNullWhenMemoryRunsOut) {
  const support::FailingAllocator failing(1);
  uint32_t length = 1;
  EXPECT_EQ(zjson_str_escape("\t", &length), nullptr);
  EXPECT_EQ(length, 1U);
}

TEST(ZJsonValue_ToString, PrintsEachScalar) {
  const auto text_of = [](ZJsonValue *value) { return printed(Owned<ZJsonValue>(value).get(), kCompact); };
  EXPECT_EQ(text_of(ZJsonValue_NewNull()), "null");
  EXPECT_EQ(text_of(ZJsonValue_NewBool(1)), "true");
  EXPECT_EQ(text_of(ZJsonValue_NewBool(0)), "false");
  EXPECT_EQ(text_of(integer(0)), "0");
  EXPECT_EQ(text_of(integer(INT64_MIN)), "-9223372036854775808");
  EXPECT_EQ(text_of(integer(INT64_MAX)), "9223372036854775807");
  EXPECT_EQ(text_of(ZJsonValue_NewNumber(1.05)), "1.5");
  EXPECT_EQ(text_of(ZJsonValue_NewNumber(-100)), "-100.0");
  EXPECT_EQ(text_of(ZJsonValue_NewString("a\tb")), "\"a\\tb\"");
  EXPECT_EQ(text_of(ZJsonValue_NewString("")), "\"\"");
}

TEST(ZJsonValue_ToString, PrintsIntegersOfEveryLength) {
  std::vector<int64_t> integers = {0, INT64_MAX, INT64_MIN, INT64_MIN + 1};
  for (int64_t power = 1; power <= INT64_MAX / 10; power *= 10) {
    for (const int64_t integer : {power - 1, power, power + 1, 10 * power - 1}) {
      integers.push_back(integer);
      integers.push_back(-integer);
    }
  }
  for (const int64_t integer : integers) {
    ZJsonValue value = {ZJSON_INTEGER, {}};
    value.integer = integer;
    char *text = nullptr;
    ZJsonValue_ToString(&value, &text, 0, -1);
    EXPECT_EQ(std::string(text), std::to_string(integer));
    ZfxMemFree(text);
  }
}

TEST(ZJsonValue_ToString, PrintsAnyByteThatIsNotZeroAsTrue) {
  const Owned<ZJsonValue> value(ZJsonValue_NewBool(1));
  value->boolean = 128;
  EXPECT_EQ(printed(value.get(), kCompact), "true");
}

TEST(ZJsonValue_ToString, GivesZeroAndAppendsNothingForATagThatIsNoType) {
  const Owned<ZJsonValue> value(integer(1));
  for (const int32_t type : {7, 99, -1}) {
    value->type = type;
    char text[] = "before";
    char *buffer = text;
    EXPECT_EQ(ZJsonValue_ToString(value.get(), &buffer, 0, 0), 0U);
    EXPECT_STREQ(text, "before");
  }
}

TEST(ZJsonValue_ToString, AppendsToWhatStandsInTheBuffer) {
  const Owned<ZJsonValue> value(array_of(integer(1)));
  EXPECT_EQ(printed(value.get(), kCompact, "x"), "x[1]");
  EXPECT_EQ(printed(value.get(), kCompact, ""), "[1]");
  EXPECT_EQ(printed(value.get(), 0, ""), "[1]") << "an empty buffer needs no new line";
  EXPECT_EQ(printed(value.get(), 2, "x"), "x\n\t\t[1]");
  EXPECT_EQ(printed(value.get(), 2, "x", 1), "x[1]");
  const std::string large(100000, 'y');
  EXPECT_EQ(printed(value.get(), kCompact, large.c_str()), large + "[1]");
}

TEST(ZJson_ToString, GivesZeroForANullAddress) {
  const Owned<ZJsonValue> value(array_of(integer(1)));
  EXPECT_EQ(ZJsonValue_ToString(value.get(), nullptr, 0, 0), 0U);
  EXPECT_EQ(ZJsonArray_ToString(value->array, nullptr, 0, 0), 0U);
  EXPECT_EQ(ZJsonObject_ToString(nullptr, nullptr, 0, 0), 0U);
  EXPECT_EQ(ZJsonMember_ToString(nullptr, nullptr, 0), 0U);
  EXPECT_EQ(ZJsonExpression_ToString(nullptr, nullptr, 0), 0U);
}

TEST(ZJson_ToString, PrintsMissingRecordsInTheirSimplestForm) {
  EXPECT_EQ(printed(nullptr, 0), "null");
  EXPECT_EQ(printed(Owned<ZJsonValue>(ZJsonValue_NewArray(nullptr)).get(), 0), "[]");
  EXPECT_EQ(printed(Owned<ZJsonValue>(ZJsonValue_NewObject(nullptr)).get(), 0), "{}");
  const Owned<ZJsonValue> array(array_of(integer(1), integer(2)));
  ZJsonValue_Delete(array->array->items[0]);
  array->array->items[0] = nullptr;
  EXPECT_EQ(printed(array.get(), kCompact), "[null,2]");
  const Owned<ZJsonValue> object(object_of(member("a", integer(1)), member("b", nullptr)));
  ZJsonMember_Delete(object->object->members[0]);
  object->object->members[0] = nullptr;
  EXPECT_EQ(printed(object.get(), kCompact), "{\"b\":null}");
  ZJsonMember_Delete(object->object->members[1]);
  object->object->members[1] = nullptr;
  EXPECT_EQ(printed(object.get(), 0), "{}");
  const Owned<ZJsonValue> string(ZJsonValue_NewString("x"));
  ZfxMemFree(string->string);
  string->string = nullptr;
  EXPECT_EQ(printed(string.get(), 0), "\"\"");
  char *buffer = nullptr;
  EXPECT_EQ(ZJsonMember_ToString(nullptr, &buffer, 0), 0U);
  EXPECT_EQ(buffer, nullptr);
}

Owned<ZJsonExpression> document_of(ZJsonValue *root) {
  Owned<ZJsonExpression> document(ZJsonExpression_New());
  document->root = root;
  return document;
}

std::string document_text(ZJsonValue *root, int32_t pretty) {
  const auto document = document_of(root);
  char *out = nullptr;
  const uint32_t length = ZJsonExpression_ToString(document.get(), &out, pretty);
  const Owned<char> text(out);
  EXPECT_EQ(length, std::strlen(out));
  return out;
}

TEST(ZJsonExpression_ToString, PrintsMembersOnLinesOfTheirOwn) {
  const auto root = [] {
    return object_of(
        member("a", integer(1)),
        member("b", array_of(integer(1), integer(2), object_of(member("c", ZJsonValue_NewBool(1))))),
        member("d", object_of()), member("e", array_of()));
  };
  EXPECT_EQ(document_text(root(), 0), R"({"a":1,"b":[1,2,{"c":true}],"d":{},"e":[]})");
  EXPECT_EQ(document_text(root(), 1),
            "{\n\t\"a\":1,\n\t\"b\":[1,2,\n\t\t{\n\t\t\t\"c\":true\n\t\t}],\n\t\"d\":{},\n\t\"e\":[]\n}");
}

TEST(ZJsonExpression_ToString, PrintsContainersInArraysOnNewLines) {
  const auto root = array_of(object_of(member("x", ZJsonValue_NewNull())),
                             array_of(integer(1), array_of(integer(2))), ZJsonValue_NewString("s"));
  EXPECT_EQ(document_text(root, 7), "[\n\t{\n\t\t\"x\":null\n\t},\n\t[1,\n\t\t[2]],\"s\"]");
  EXPECT_EQ(document_text(array_of(array_of(integer(1))), 1), "[\n\t[1]]");
  EXPECT_EQ(document_text(array_of(object_of(), array_of()), 1), "[\n\t{},\n\t[]]");
}

TEST(ZJsonExpression_ToString, PrintsEmptyContainersInBothForms) {
  for (const int32_t pretty : {0, 1}) {
    EXPECT_EQ(document_text(object_of(), pretty), "{}");
    EXPECT_EQ(document_text(array_of(), pretty), "[]");
  }
}

TEST(ZJsonExpression_ToString, PrintsNamesAsTheyAreStored) {
  EXPECT_EQ(document_text(object_of(member("a\"b\t", integer(1))), 0), "{\"a\"b\t\":1}");
}

TEST(ZJsonExpression_ToString, PrintsNothingWithoutARoot) {
  char unused[] = "x";
  char *out = unused;
  EXPECT_EQ(ZJsonExpression_ToString(document_of(nullptr).get(), &out, 0), 0U);
  EXPECT_EQ(out, nullptr);
  out = unused;
  EXPECT_EQ(ZJsonExpression_ToString(nullptr, &out, 0), 0U);
  EXPECT_EQ(out, nullptr);
}

TEST(ZJsonMember_ToString, PrintsItsNameAndValue) {
  const Owned<ZJsonMember> record(member("n", array_of(object_of(member("k", integer(1))))));
  char *compact = nullptr;
  EXPECT_EQ(ZJsonMember_ToString(record.get(), &compact, kCompact), 13U);
  EXPECT_STREQ(Owned<char>(compact).get(), "\"n\":[{\"k\":1}]");
  char *pretty = nullptr;
  ZJsonMember_ToString(record.get(), &pretty, 1);
  EXPECT_STREQ(Owned<char>(pretty).get(), "\n\t\"n\":[\n\t\t{\n\t\t\t\"k\":1\n\t\t}]");
}

TEST(ZJsonArray_ToString, PrintsContainersAsTheirValuesPrint) {
  const Owned<ZJsonValue> array(array_of(integer(1), array_of()));
  char *text = nullptr;
  EXPECT_EQ(ZJsonArray_ToString(array->array, &text, 0, 3), 11U);
  EXPECT_STREQ(Owned<char>(text).get(), "[1,\n\t\t\t\t[]]");
  const Owned<ZJsonValue> object(object_of(member("a", integer(1))));
  char *object_text = ZfxStrDup(":");
  ZJsonObject_ToString(object->object, &object_text, 0, 1);
  EXPECT_STREQ(Owned<char>(object_text).get(), ":\n\t{\n\t\t\"a\":1\n\t}");
}

TEST(ZJsonValue_ToString, TakesEveryNegativeLevelAsCompact) {
  const Owned<ZJsonValue> value(array_of(object_of(member("a", array_of(array_of())))));
  for (const int32_t level : {-2, -3, INT_MIN}) {
    EXPECT_EQ(printed(value.get(), level, "x"), "x[{\"a\":[[]]}]");
  }
}

// The rules as recursive functions over an output to which pieces are appended.
struct PlainPrinter {
  std::string text;
  std::size_t limit = SIZE_MAX;  // what the allocator gives; a piece beyond it is left out

  void append(const std::string &piece) {
    if (text.size() + piece.size() + 1 <= limit) text += piece;
  }
  void indent(int level) {
    append("\n");
    for (int i = 0; i < level; ++i)
      append("\t");
  }
  void value(const ZJsonValue *v, bool after_name, int level) {
    switch (v->type) {
      case ZJSON_NULL:
        return append("null");
      case ZJSON_BOOL:
        return append(v->boolean != 0 ? "true" : "false");
      case ZJSON_INTEGER:
        return append(std::to_string(v->integer));
      case ZJSON_NUMBER: {
        char number[256];
        realconv_ftoa(number, sizeof number, v->number);
        return append(number);
      }
      case ZJSON_STRING:
        append("\"");
        append(v->string);
        return append("\"");
      case ZJSON_ARRAY:
        return array(v->array, after_name, level);
      default:
        return object(v->object, after_name, level);
    }
  }
  void array(const ZJsonArray *a, bool after_name, int level) {
    if (!after_name && !text.empty() && level >= 0) indent(level);
    append("[");
    for (int32_t i = 0; i < a->count; ++i) {
      if (i > 0) append(",");
      value(a->items[i], false, level == -1 ? -1 : level + 1);
    }
    append("]");
  }
  void object(const ZJsonObject *o, bool after_name, int level) {
    if (level >= 0 && !after_name && !text.empty()) indent(level);
    const int member_level = level >= 0 ? level + 1 : -1;
    append("{");
    for (int32_t i = 0; i < o->count; ++i) {
      if (i > 0) append(",");
      if (member_level >= 0) indent(member_level);
      append("\"");
      append(o->members[i]->name);
      append("\":");
      value(o->members[i]->value, true, member_level);
    }
    if (o->count > 0 && level >= 0) indent(level);
    append("}");
  }
};

ZJsonValue *random_value(std::mt19937 &random, int depth) {
  switch (random() % (depth > 0 ? 9 : 5)) {
    case 0:
      return ZJsonValue_NewNull();
    case 1:
      return ZJsonValue_NewBool(static_cast<int32_t>(random() % 2));
    case 2:
      return ZJsonValue_NewNumber(static_cast<double>(random()) / 8 - 1e8);
    case 3:
      return ZJsonValue_NewString(std::string(random() % 60, "\t\"x"[random() % 3]).c_str());
    case 4:
      return integer(static_cast<int64_t>(random()) - 1000000000);
    case 5:
    case 6: {
      ZJsonArray *array = ZJsonArray_New();
      for (auto i = random() % 12; i > 0; --i)
        ZJsonArray_Append(array, random_value(random, depth - 1));
      return ZJsonValue_NewArray(array);
    }
    default: {
      ZJsonObject *object = ZJsonObject_New();
      for (auto i = random() % 8; i > 0; --i)
        ZJsonObject_Append(object,
                           member(std::string(random() % 4, 'k').c_str(), random_value(random, depth - 1)));
      return ZJsonValue_NewObject(object);
    }
  }
}

TEST(ZJsonValue_ToString, AgreesWithThePlainRulesOnRandomTrees) {
  std::mt19937 random(5);
  for (int round = 0; round < 500; ++round) {
    const Owned<ZJsonValue> value(random_value(random, 6));
    const auto level = static_cast<int32_t>(random() % 5) - 1;
    const bool after_name = random() % 3 == 0;
    const std::string before = random() % 2 == 0 ? "" : std::string(random() % 5000, 'b');
    PlainPrinter plain{before};
    plain.value(value.get(), after_name, level);
    ASSERT_EQ(printed(value.get(), level, before.empty() ? nullptr : before.c_str(), after_name ? 1 : 0),
              plain.text);
  }
}

TEST(ZJsonValue_ToString, HandsOverABlockExactlyAsLongAsItsText) {
  std::mt19937 random(6);
  for (int round = 0; round < 50; ++round) {
    const Owned<ZJsonValue> value(random_value(random, 7));
    char *buffer = nullptr;
    const uint32_t length = ZJsonValue_ToString(value.get(), &buffer, 0, 0);
    const Owned<char> text(buffer);
    const Owned<char> exact(static_cast<char *>(ZfxMemAlloc(length + 1)));
    // The allocator may leave a remainder that is too small for a block of its own, and pages of large ones.
    EXPECT_LE(malloc_usable_size(buffer), malloc_usable_size(exact.get()) + (length < 100000 ? 16 : 4096));
  }
}

TEST(ZJsonValue_ToString, LeavesOutThePiecesForWhichThereIsNoBlock) {
  std::mt19937 random(7);
  for (int round = 0; round < 40; ++round) {
    const Owned<ZJsonValue> value(random_value(random, 4));
    PlainPrinter whole;
    whole.value(value.get(), false, 0);
    for (std::size_t limit = 1; limit < whole.text.size() + 3; limit += 1 + limit / 40) {
      PlainPrinter plain{"", limit};
      plain.value(value.get(), false, 0);
      char *buffer = nullptr;
      uint32_t length = 0;
      {
        const support::LimitedAllocator limited(limit);
        length = ZJsonValue_ToString(value.get(), &buffer, 0, 0);
      }
      const Owned<char> text(buffer);
      ASSERT_EQ(length, plain.text.size()) << limit;
      ASSERT_EQ(std::string(buffer == nullptr ? "" : buffer), plain.text) << limit;
    }
  }
}

TEST(ZJsonValue_ToString, LeavesTheTextAsItWasWhenThereIsNoMemoryAtAll) {
  const Owned<ZJsonValue> value(array_of(ZJsonValue_NewString(std::string(10000, 'x').c_str())));
  char *buffer = ZfxStrDup("before");
  uint32_t length = 0;
  {
    const support::FailingAllocator failing(1, true);
    length = ZJsonValue_ToString(value.get(), &buffer, 0, 0);
  }
  EXPECT_EQ(length, 6U);
  EXPECT_STREQ(Owned<char>(buffer).get(), "before");
  char *none = nullptr;
  const support::FailingAllocator failing(1, true);
  EXPECT_EQ(ZJsonValue_ToString(value.get(), &none, 0, 0), 0U);
  EXPECT_EQ(none, nullptr);
}

TEST(ZJsonValue_ToString, PrintsTheWholeTextWhenOneAllocationFails) {
  std::mt19937 random(8);
  const Owned<ZJsonValue> value(
      array_of(random_value(random, 7), ZJsonValue_NewString(std::string(20000, 'x').c_str())));
  const std::string whole = printed(value.get(), 0);
  for (std::size_t n = 1;; ++n) {
    support::FailingAllocator failing(n);
    char *buffer = nullptr;
    ZJsonValue_ToString(value.get(), &buffer, 0, 0);
    const bool failed = failing.stop();
    ASSERT_EQ(Owned<char>(buffer).get(), whole) << n;
    if (!failed) break;
  }
}

TEST(ZJsonValue_ToString, PrintsTreesOfAnyDepth) {
  ZJsonValue *value = integer(1);
  constexpr int kDepth = 200000;
  for (int i = 0; i < kDepth; ++i)
    value = i % 2 == 0 ? array_of(value) : object_of(member("k", value));
  const Owned<ZJsonValue> owner(value);
  const std::string text = printed(value, kCompact);
  EXPECT_EQ(text.size(), 1 + kDepth / 2 * (2 + 6));
  EXPECT_EQ(text.substr(0, 12), "{\"k\":[{\"k\":[");
}

TEST(ZJsonValue_ToString, LeavesOutTheItemsOfAContainerForWhoseWalkThereIsNoMemory) {
  ZJsonValue *value = integer(1);
  for (int i = 0; i < 100; ++i)
    value = array_of(value);
  const Owned<ZJsonValue> owner(value);
  char *buffer = nullptr;
  {
    const support::LimitedAllocator limited(600);  // enough for the text and not for the walk
    ZJsonValue_ToString(value, &buffer, 0, kCompact);
  }
  const std::string text = Owned<char>(buffer).get();
  EXPECT_LT(text.size(), 200U);
  EXPECT_EQ(text, std::string(text.size() / 2, '[') + std::string(text.size() / 2, ']'));
}

// The last request cuts the block to the text's size, which is not worth a failure.
TEST(ZJsonValue_ToString, GivesTheTextWhenItsBlockCannotBeCut) {
  const std::string inside(10000, 'x');
  const Owned<ZJsonValue> value(ZJsonValue_NewStringL(inside.data(), static_cast<int32_t>(inside.size())));
  std::vector<bool> whole;  // whether the text came, when that request and all behind it failed
  for (bool failed = true; failed;) {
    char *text = nullptr;
    support::FailingAllocator failing(whole.size() + 1, true);
    ZJsonValue_ToString(value.get(), &text, 0, kCompact);
    failed = failing.stop();
    const Owned<char> owned(text);
    whole.push_back(text != nullptr && '"' + inside + '"' == text);
  }
  ASSERT_GE(whole.size(), 3U);
  EXPECT_FALSE(whole.front());
  EXPECT_TRUE(whole[whole.size() - 2]);
  EXPECT_TRUE(whole.back());
}

}  // namespace
