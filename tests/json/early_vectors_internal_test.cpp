// Documents with long vectors, which are released before everything else: whole or edited, every block is
// given back once.
#include "early_vectors.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "failing_allocator.hpp"
#include "zjson_expression.h"
#include "zjsondriver.h"

namespace {

using zorvcrt::EarlyVectors;
using zorvcrt::VectorHint;

constexpr int kLong = 120;      // items from which a vector is long,
constexpr int kWorthIt = 8192;  // and those of all long ones together from which they are released early

std::string list_of(const std::string &item, int count) {
  std::string list;
  for (int i = 0; i < count; ++i)
    list += (i == 0 ? "" : ",") + item;
  return list;
}

ZJsonExpression *parsed(const std::string &text) {
  ZJsonExpression *document = ZJsonExpression_Parse(text.data(), static_cast<int32_t>(text.size()));
  EXPECT_NE(document->root, nullptr);
  return document;
}

// The blocks that are left behind by a document that was parsed, changed and released; the lists of the
// process's own are made by a first round.
long left_behind(const std::string &text, const std::function<void(ZJsonExpression &)> &change) {
  long before = 0;
  for (int round = 0; round < 2; ++round) {
    before = support::live_blocks();
    ZJsonExpression *document = parsed(text);
    change(*document);
    ZJsonExpression_Delete(document);
  }
  return support::live_blocks() - before;
}

void nothing(ZJsonExpression &) {}

ZJsonArray *array_of(ZJsonValue *value) {
  EXPECT_EQ(value->type, ZJSON_ARRAY);
  return value->array;
}

TEST(VectorHint, IsLeftOnTheWayToALongVectorOnly) {
  const std::string text = "[[7],[[" + list_of("7", kLong) + "]],{\"a\":[" + list_of("7", kLong - 1) + "]}]";
  ZJsonExpression *document = parsed(text);
  ZJsonArray *top = document->root->array;
  EXPECT_EQ(VectorHint::of(document->root), uint32_t{VectorHint::kBelow});
  EXPECT_EQ(VectorHint::of(top->items[0]), uint32_t{VectorHint::kNone});
  EXPECT_EQ(VectorHint::of(top->items[1]), uint32_t{VectorHint::kBelow});
  EXPECT_EQ(VectorHint::of(top->items[1]->array->items[0]), uint32_t{VectorHint::kOwn});
  EXPECT_EQ(VectorHint::of(top->items[2]), uint32_t{VectorHint::kNone});
  ZJsonExpression_Delete(document);
}

TEST(VectorHint, IsNoPartOfTypeOrPayload) {
  ZJsonValue *value = ZJsonValue_NewInteger(-1);
  VectorHint::add(value, VectorHint::kOwn);
  VectorHint::add(value, VectorHint::kBelow);
  EXPECT_EQ(VectorHint::of(value), uint32_t{VectorHint::kOwn} | uint32_t{VectorHint::kBelow});
  EXPECT_EQ(value->type, ZJSON_INTEGER);
  EXPECT_EQ(value->integer, -1);
  ZJsonValue_Delete(value);
}

TEST(EarlyVectors, HoldTheLongOnesWithTheirItemsInPlace) {
  ZJsonExpression *document =
      parsed("[[7],[" + list_of("7", kLong) + "],{" + list_of("\"k\":8", kWorthIt - kLong) + "}]");
  const ZJsonArray *top = document->root->array;
  ZJsonArray *numbers = top->items[1]->array;
  ZJsonObject *members = top->items[2]->object;
  const std::vector<ZJsonValue *> expected(numbers->items, numbers->items + numbers->count);
  const std::vector<ZJsonMember *> expected_members(members->members, members->members + members->count);
  {
    const EarlyVectors early(document->root);
    EXPECT_FALSE(early.hold(top->items));
    EXPECT_FALSE(early.hold(top->items[0]->array->items));
    EXPECT_TRUE(early.hold(numbers->items));
    EXPECT_TRUE(early.hold(members->members));
    EXPECT_FALSE(early.hold(nullptr));
    ASSERT_TRUE(std::equal(expected.begin(), expected.end(), numbers->items));
    ASSERT_TRUE(std::equal(expected_members.begin(), expected_members.end(), members->members));
    numbers->items = nullptr;
    members->members = nullptr;
  }
  for (ZJsonValue *value : expected)
    ZJsonValue_Delete(value);
  for (ZJsonMember *member : expected_members)
    ZJsonMember_Delete(member);
  ZJsonExpression_Delete(document);
}

TEST(EarlyVectors, AreLeftInTheirPlacesWhenTheyAreFew) {
  ZJsonExpression *document =
      parsed("[[" + list_of("7", kLong) + "],[" + list_of("7", kWorthIt - kLong - 1) + "]]");
  const ZJsonArray *top = document->root->array;
  {
    const EarlyVectors early(document->root);
    EXPECT_FALSE(early.hold(top->items[0]->array->items));
    EXPECT_FALSE(early.hold(top->items[1]->array->items));
  }
  ZJsonExpression_Delete(document);
}

TEST(ZJsonExpression_Delete, GivesBackListsOfEveryLengthInEachOther) {
  for (const int count : {1, kLong - 1, kLong, kLong + 1, 513, kWorthIt - 1, kWorthIt, kWorthIt + 1}) {
    for (const char *item : {"7", "\"text\"", "[]", "[1,2]", "{\"a\":null}"}) {
      const std::string list = "[" + list_of(item, count) + "]";
      EXPECT_EQ(left_behind(list, nothing), 0);
      EXPECT_EQ(
          left_behind("{\"a\":" + list + ",\"b\":{" + list_of("\"m\":" + std::string(item), count) + "}}",
                      nothing),
          0);
      if (count > 1000) continue;
      EXPECT_EQ(left_behind("[" + list_of(list, kLong) + "]", nothing), 0);
    }
  }
}

TEST(ZJsonExpression_Delete, GivesBackALongListAsDeepAsTheParserLeavesHints) {
  for (const std::size_t depth : {198U, 199U, 200U, 201U}) {
    const std::string text =
        std::string(depth - 1, '[') + list_of("[7]", kWorthIt) + std::string(depth - 1, ']');
    EXPECT_EQ(left_behind(text, nothing), 0) << depth;
  }
}

TEST(ZJsonExpression_Delete, GivesBackEditedLongLists) {
  const std::string text = "[[" + list_of("[\"a\"]", kWorthIt) + "],{" + list_of("\"k\":[\"a\"]", 200) + "}]";
  const auto first = [](ZJsonExpression &document) { return array_of(document.root->array->items[0]); };
  const auto second = [](ZJsonExpression &document) { return document.root->array->items[1]->object; };
  EXPECT_EQ(left_behind(text,
                        [&](ZJsonExpression &document) {
                          for (int i = 0; i < 50; ++i) {
                            ZJsonArray_Append(first(document), ZJsonValue_NewString("new"));
                            ZJsonObject_Append(second(document), ZJsonMember_New("n", ZJsonValue_NewInt(i)));
                          }
                        }),
            0);
  EXPECT_EQ(left_behind(text,
                        [&](ZJsonExpression &document) {
                          while (ZJsonObject_GetMember(second(document), "k") != nullptr)
                            ZJsonObject_DeleteMember(second(document), "k");
                        }),
            0);
  EXPECT_EQ(left_behind(text,
                        [&](ZJsonExpression &document) {  // slots that were emptied
                          ZJsonArray *array = first(document);
                          for (int i = 0; i < array->count; i += 3)
                            ZJsonValue_Delete(std::exchange(array->items[i], nullptr));
                          ZJsonObject *object = second(document);
                          for (int i = 0; i < object->count; i += 3)
                            ZJsonMember_Delete(std::exchange(object->members[i], nullptr));
                        }),
            0);
  EXPECT_EQ(left_behind(text,
                        [&](ZJsonExpression &document) {  // values put into a document of short lists
                          ZJsonExpression *other = parsed("[null]");
                          ZJsonArray_Append(other->root->array, document.root->array->items[0]);
                          document.root->array->items[0] = nullptr;
                          ZJsonExpression_Delete(other);
                        }),
            0);
  EXPECT_EQ(left_behind(text,
                        [&](ZJsonExpression &document) {  // containers released by themselves
                          ZJsonArray_Delete(std::exchange(document.root->array->items[0]->array, nullptr));
                          ZJsonObject_Delete(std::exchange(document.root->array->items[1]->object, nullptr));
                        }),
            0);
}

// A host's own records may have anything beside the type.
TEST(ZJsonExpression_Delete, TakesAnyHintForAHint) {
  std::mt19937 random(9);
  const std::function<void(ZJsonValue *)> scribble = [&](ZJsonValue *value) {
    VectorHint::add(value, static_cast<uint32_t>(random()));
    if (value->type == ZJSON_ARRAY)
      for (int32_t i = 0; i < value->array->count; ++i)
        scribble(value->array->items[i]);
    if (value->type == ZJSON_OBJECT)
      for (int32_t i = 0; i < value->object->count; ++i)
        scribble(value->object->members[i]->value);
  };
  const std::string nest = std::string(300, '[') + std::string(300, ']');
  for (int round = 0; round < 50; ++round)
    EXPECT_EQ(left_behind("[{},[],\"a\",1.5,true,[1,{\"a\":[],\"b\":{\"c\":[2]}}]," + nest + "]",
                          [&](ZJsonExpression &document) { scribble(document.root); }),
              0);
}

}  // namespace
