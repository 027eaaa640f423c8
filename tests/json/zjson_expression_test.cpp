#include "zjson_expression.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "documents.hpp"
#include "failing_allocator.hpp"
#include "zfxmemory.h"

extern "C" int64_t sum_in_c(const ZJsonExpression *document);

namespace {

using documents::Owned;

template <class Record>
Owned<Record> owned(Record *record) {
  return Owned<Record>(record);
}

std::string stored_string(const char *text) {
  const auto value = owned(ZJsonValue_NewString(text));
  return value->string;
}

std::string stored_name(const char *name) {
  const auto member = owned(ZJsonMember_New(name, nullptr));
  return member->name;
}

void append(ZJsonObject *object, const char *name, int64_t integer) {
  ZJsonObject_Append(object, ZJsonMember_New(name, ZJsonValue_NewInteger(integer)));
}

// "a=1 b=2": names and integers in order.
std::string listing(const ZJsonObject *object) {
  std::string text;
  for (int32_t i = 0; i < object->count; ++i) {
    text += (i == 0 ? "" : " ") + std::string(object->members[i]->name) + "=" +
            std::to_string(object->members[i]->value->integer);
  }
  return text;
}

TEST(ZJsonValue, ConstructorsSetTheTagAndThePayload) {
  EXPECT_EQ(owned(ZJsonValue_New())->type, ZJSON_NULL);
  EXPECT_EQ(owned(ZJsonValue_New())->integer, 0);
  EXPECT_EQ(owned(ZJsonValue_NewNull())->type, ZJSON_NULL);
  for (const int32_t b : {INT_MIN, -1, 0, 1, 256, INT_MAX}) {
    const auto value = owned(ZJsonValue_NewBool(b));
    EXPECT_EQ(value->type, ZJSON_BOOL);
    EXPECT_EQ(value->integer, b != 0 ? 1 : 0) << "the byte, and zeros behind it";
  }
  EXPECT_EQ(owned(ZJsonValue_NewInt(-1))->integer, int64_t{-1});
  EXPECT_EQ(owned(ZJsonValue_NewInt(INT32_MIN))->integer, int64_t{INT32_MIN});
  EXPECT_EQ(owned(ZJsonValue_NewInt(-1))->type, ZJSON_INTEGER);
  EXPECT_EQ(owned(ZJsonValue_NewInteger(INT64_MIN))->integer, INT64_MIN);
  EXPECT_EQ(owned(ZJsonValue_NewInteger(1))->type, ZJSON_INTEGER);
  EXPECT_EQ(owned(ZJsonValue_NewNumber(-2.5))->number, -2.5);
  EXPECT_EQ(owned(ZJsonValue_NewNumber(0))->type, ZJSON_NUMBER);
  ZJsonArray *array = ZJsonArray_New();
  const auto array_value = owned(ZJsonValue_NewArray(array));
  EXPECT_EQ(array_value->type, ZJSON_ARRAY);
  EXPECT_EQ(array_value->array, array);
  ZJsonObject *object = ZJsonObject_New();
  const auto object_value = owned(ZJsonValue_NewObject(object));
  EXPECT_EQ(object_value->type, ZJSON_OBJECT);
  EXPECT_EQ(object_value->object, object);
}

TEST(ZJsonValue_NewString, LeavesOutOnePairOfDoubleQuotesOnly) {
  EXPECT_EQ(stored_string("\"a\""), "a");
  EXPECT_EQ(stored_string("'a'"), "'a'");
  EXPECT_EQ(stored_string("\"\""), "");
  EXPECT_EQ(stored_string("\"'a'\""), "'a'");
  EXPECT_EQ(stored_string("\"\"a\"\""), "\\\"a\\\"") << "a second pair is part of the text";
  EXPECT_EQ(stored_string("\""), "\\\"") << "one quote is no pair";
  EXPECT_EQ(stored_string("\"a"), "\\\"a");
}

TEST(ZJsonValue_NewString, EscapesWhatMustNotStandBetweenQuotes) {
  EXPECT_EQ(stored_string("a\tb"), "a\\tb");
  EXPECT_EQ(stored_string("\b\n\r"), "\\b\\n\\r");
  EXPECT_EQ(stored_string("say \"hi\""), "say \\\"hi\\\"");
  EXPECT_EQ(stored_string("a\\\"b"), "a\\\"b");
  EXPECT_EQ(stored_string("a\\\"b\t"), "a\\\\\"b\\t") << "with a control character every quote gets one more";
  EXPECT_EQ(stored_string("/\f\v\x01\x7f\xc3\xa9\\"), "/\f\v\x01\x7f\xc3\xa9\\");
}

TEST(ZJsonValue_NewString, TakesNullAsEmpty) {
  EXPECT_EQ(stored_string(nullptr), "");
  EXPECT_EQ(stored_string(""), "");
  EXPECT_STREQ(owned(ZJsonValue_NewStringL(nullptr, 5))->string, "");
}

TEST(ZJsonValue_NewStringL, TakesTheGivenLength) {
  const char text[] = "\"abc\"";
  EXPECT_STREQ(owned(ZJsonValue_NewStringL(text + 1, 2))->string, "ab");
  EXPECT_STREQ(owned(ZJsonValue_NewStringL(text, 5))->string, "abc");
  EXPECT_STREQ(owned(ZJsonValue_NewStringL(text, 4))->string, "\\\"abc");
  EXPECT_STREQ(owned(ZJsonValue_NewStringL("\"\"", 2))->string, "");
  EXPECT_STREQ(owned(ZJsonValue_NewStringL(text, 0))->string, "");
}

TEST(ZJsonValue_NewStringL, ReadsNoFurtherThanTheText) {
  const std::vector<char> exact = {'a', 'b', '\0'};
  EXPECT_STREQ(owned(ZJsonValue_NewStringL(exact.data(), INT_MAX))->string, "ab");
  EXPECT_STREQ(owned(ZJsonValue_NewStringL(exact.data(), -1))->string, "");
}

TEST(ZJsonMember_New, LeavesOutOnePairOfEqualQuotes) {
  EXPECT_EQ(stored_name("'k'"), "k");
  EXPECT_EQ(stored_name("\"k\""), "k");
  EXPECT_EQ(stored_name("'k\""), "'k\"");
  EXPECT_EQ(stored_name("\""), "\"");
  EXPECT_EQ(stored_name("''"), "");
  EXPECT_EQ(stored_name("\"'k'\""), "'k'");
  EXPECT_EQ(stored_name(""), "");
  EXPECT_EQ(stored_name("aka"), "aka");
  EXPECT_EQ(stored_name("k\t\""), "k\t\"") << "names are not escaped";
}

TEST(ZJsonMember_New, GivesNullForANullNameAndLeavesTheValueAlone) {
  const auto value = owned(ZJsonValue_NewInt(3));
  EXPECT_EQ(ZJsonMember_New(nullptr, value.get()), nullptr);
  EXPECT_EQ(value->integer, 3);
}

template <class Container>
void expect_fresh(const Container *container, const void *slots) {
  EXPECT_EQ(container->count, 0);
  EXPECT_EQ(container->capacity, 10);
  const std::vector<char> zeros(10 * sizeof(void *));
  EXPECT_EQ(std::memcmp(slots, zeros.data(), zeros.size()), 0);
}

TEST(ZJsonArray, StartsWithTenEmptySlots) {
  const auto array = owned(ZJsonArray_New());
  expect_fresh(array.get(), array->items);
  const auto object = owned(ZJsonObject_New());
  expect_fresh(object.get(), object->members);
}

TEST(ZJsonArray_Append, GrowsByTenWhenNoSlotWouldStayUnused) {
  const auto array = owned(ZJsonArray_New());
  const auto object = owned(ZJsonObject_New());
  for (int32_t count = 1; count <= 1200; ++count) {
    ZJsonArray_Append(array.get(), ZJsonValue_NewInt(count));
    append(object.get(), "n", count);
    ASSERT_EQ(array->count, count);
    ASSERT_EQ(array->capacity, (count / 10 + 1) * 10) << count;
    ASSERT_EQ(object->count, count);
    ASSERT_EQ(object->capacity, (count / 10 + 1) * 10) << count;
  }
  for (int32_t i = 0; i < 1200; ++i) {
    ASSERT_EQ(array->items[i]->integer, i + 1);
    ASSERT_EQ(object->members[i]->value->integer, i + 1);
  }
}

TEST(ZJsonArray_Append, GrowsAVectorThatACallerHasMade) {
  for (const int32_t slots : {1, 10, 99, 500}) {
    const auto array = owned(ZJsonArray_New());
    ZfxMemFree(array->items);
    array->items = static_cast<ZJsonValue **>(ZfxMemAlloc(static_cast<uint64_t>(slots) * sizeof(void *)));
    array->capacity = slots;
    for (int32_t i = 0; i < 1000; ++i) {
      ZJsonArray_Append(array.get(), ZJsonValue_NewInt(i));
    }
    EXPECT_EQ(array->count, 1000);
    EXPECT_EQ(array->items[999]->integer, 999);
  }
}

TEST(ZJsonArray_Append, LeavesImpossibleRecordsAlone) {
  const auto value = owned(ZJsonValue_New());
  ZJsonArray_Append(nullptr, value.get());
  const auto array = owned(ZJsonArray_New());
  ZJsonArray_Append(array.get(), nullptr);
  EXPECT_EQ(array->count, 0);
  for (const auto &[count, capacity] :
       {std::pair{-1, 10}, {INT_MIN, 10}, {20, 10}, {INT_MAX, 10}, {3, -5}, {INT_MAX, INT_MAX}}) {
    array->count = count;
    array->capacity = capacity;
    ZJsonArray_Append(array.get(), value.get());
    EXPECT_EQ(array->count, count);
  }
  array->count = 0;
  ZJsonObject_Append(nullptr, nullptr);
}

TEST(ZJsonObject_GetMember, FindsTheFirstMemberOfANameByteForByte) {
  const auto object = owned(ZJsonObject_New());
  EXPECT_EQ(ZJsonObject_GetMember(object.get(), "a"), nullptr);
  append(object.get(), "a", 1);
  append(object.get(), "A", 2);
  append(object.get(), "a", 3);
  append(object.get(), "", 4);
  EXPECT_EQ(ZJsonObject_GetMember(object.get(), "a")->value->integer, 1);
  EXPECT_EQ(ZJsonObject_GetMember(object.get(), "A")->value->integer, 2);
  EXPECT_EQ(ZJsonObject_GetMember(object.get(), "")->value->integer, 4);
  EXPECT_EQ(ZJsonObject_GetMember(object.get(), "b"), nullptr);
  EXPECT_EQ(ZJsonObject_GetMember(object.get(), nullptr), nullptr);
  EXPECT_EQ(ZJsonObject_GetMember(nullptr, "a"), nullptr);
  ZJsonMember_Delete(object->members[0]);
  object->members[0] = nullptr;
  EXPECT_EQ(ZJsonObject_GetMember(object.get(), "a")->value->integer, 3) << "empty slots are passed over";
}

TEST(ZJsonObject_Replace, PutsTheMemberInThePlaceOfTheFirstOfItsName) {
  const auto object = owned(ZJsonObject_New());
  append(object.get(), "x", 1);
  append(object.get(), "a", 2);
  append(object.get(), "a", 3);
  ZJsonObject_Replace(object.get(), ZJsonMember_New("a", ZJsonValue_NewInt(9)));
  EXPECT_EQ(listing(object.get()), "x=1 a=9 a=3");
  ZJsonObject_Replace(object.get(), ZJsonMember_New("b", ZJsonValue_NewInt(5)));
  EXPECT_EQ(listing(object.get()), "x=1 a=9 a=3 b=5");
}

TEST(ZJsonObject_Replace, ChangesNothingForAMemberThatComesFirst) {
  const auto object = owned(ZJsonObject_New());
  append(object.get(), "a", 1);
  append(object.get(), "a", 2);
  ZJsonObject_Replace(object.get(), object->members[0]);
  EXPECT_EQ(listing(object.get()), "a=1 a=2");
  ZJsonObject_Replace(object.get(), nullptr);
  ZJsonObject_Replace(nullptr, object->members[0]);
  EXPECT_EQ(listing(object.get()), "a=1 a=2");
}

TEST(ZJsonObject_Replace, MovesAMemberOfTheObjectToTheFirstPlaceOfItsName) {
  const auto object = owned(ZJsonObject_New());
  append(object.get(), "a", 1);
  append(object.get(), "b", 2);
  append(object.get(), "a", 3);
  append(object.get(), "c", 4);
  ZJsonObject_Replace(object.get(), object->members[2]);
  EXPECT_EQ(listing(object.get()), "a=3 b=2 c=4");
  EXPECT_EQ(object->members[3], nullptr);
}

TEST(ZJsonObject_DeleteMember, RemovesTheFirstOfANameAndClosesTheGap) {
  const auto object = owned(ZJsonObject_New());
  append(object.get(), "a", 1);
  append(object.get(), "b", 2);
  append(object.get(), "a", 3);
  ZJsonObject_DeleteMember(object.get(), "a");
  EXPECT_EQ(listing(object.get()), "b=2 a=3");
  EXPECT_EQ(object->members[2], nullptr);
  ZJsonObject_DeleteMember(object.get(), "z");
  ZJsonObject_DeleteMember(object.get(), nullptr);
  ZJsonObject_DeleteMember(nullptr, "a");
  EXPECT_EQ(listing(object.get()), "b=2 a=3");
}

TEST(ZJsonObject_DeleteMemberByRef, RemovesThatMemberOnly) {
  const auto object = owned(ZJsonObject_New());
  append(object.get(), "a", 1);
  append(object.get(), "a", 2);
  append(object.get(), "a", 3);
  ZJsonObject_DeleteMemberByRef(object.get(), object->members[1]);
  EXPECT_EQ(listing(object.get()), "a=1 a=3");
  EXPECT_EQ(object->members[2], nullptr);
  const auto stranger = owned(ZJsonMember_New("a", nullptr));
  ZJsonObject_DeleteMemberByRef(object.get(), stranger.get());
  ZJsonObject_DeleteMemberByRef(object.get(), nullptr);
  ZJsonObject_DeleteMemberByRef(nullptr, stranger.get());
  EXPECT_EQ(listing(object.get()), "a=1 a=3");
}

TEST(ZJsonObject_NewSimple, BuildsMembersFromTheList) {
  EXPECT_EQ(owned(ZJsonObject_NewSimple(ZJSON_END))->count, 0);
  const auto two = owned(ZJsonObject_NewSimple(4, "n", int64_t{5}, 0, "z", 99));
  ASSERT_EQ(two->count, 2);
  EXPECT_STREQ(two->members[0]->name, "n");
  EXPECT_EQ(two->members[0]->value->integer, 5);
  EXPECT_STREQ(two->members[1]->name, "z");
  EXPECT_EQ(two->members[1]->value->type, ZJSON_NULL);
  const auto all = owned(ZJsonObject_NewSimple(ZJSON_BOOL, "b", 2, ZJSON_NUMBER, "d", 2.5, ZJSON_STRING, "s",
                                               "\"x\ty\"", ZJSON_INTEGER, "'q'", INT64_MIN, ZJSON_END));
  ASSERT_EQ(all->count, 4);
  EXPECT_EQ(all->members[0]->value->boolean, 1);
  EXPECT_EQ(all->members[1]->value->number, 2.5);
  EXPECT_STREQ(all->members[2]->value->string, "x\\ty");
  EXPECT_STREQ(all->members[3]->name, "q");
  EXPECT_EQ(all->members[3]->value->integer, INT64_MIN);
}

TEST(ZJsonObject_NewSimple, GivesNullForATypeOrNameThatCannotBeGiven) {
  EXPECT_EQ(ZJsonObject_NewSimple(4, "n", int64_t{5}, 3, "o", nullptr, 99), nullptr);
  EXPECT_EQ(ZJsonObject_NewSimple(2, "a", nullptr, 99), nullptr);
  EXPECT_EQ(ZJsonObject_NewSimple(7, "x", 99), nullptr);
  EXPECT_EQ(ZJsonObject_NewSimple(98, "x", 99), nullptr);
  EXPECT_EQ(ZJsonObject_NewSimple(-1, "x", 99), nullptr);
  EXPECT_EQ(ZJsonObject_NewSimple(0, "", 99), nullptr);
  EXPECT_EQ(ZJsonObject_NewSimple(0, "a", 0, static_cast<const char *>(nullptr), 99), nullptr);
}

TEST(ZJsonExpression, StartsEmpty) {
  const auto document = owned(ZJsonExpression_New());
  EXPECT_EQ(document->root, nullptr);
  EXPECT_EQ(document->errorMessage, nullptr);
}

TEST(ZJsonExpression_SetErrorMessage, StoresACopyAndDoesNotReleaseTheOldOne) {
  const auto document = owned(ZJsonExpression_New());
  ZJsonExpression_SetErrorMessage(nullptr, "x");
  ZJsonExpression_SetErrorMessage(document.get(), nullptr);
  EXPECT_EQ(document->errorMessage, nullptr);
  const std::string message = "first";
  ZJsonExpression_SetErrorMessage(document.get(), message.c_str());
  EXPECT_EQ(document->errorMessage, message);
  EXPECT_NE(document->errorMessage, message.c_str());
  char *first = document->errorMessage;
  ZJsonExpression_SetErrorMessage(document.get(), "second");
  EXPECT_STREQ(document->errorMessage, "second");
  EXPECT_STREQ(first, "first");
  ZfxMemFree(first);
}

TEST(ZJsonExpression_SetRoot, WrapsTheContainerAndReleasesTheOldTree) {
  const auto document = owned(ZJsonExpression_New());
  ZJsonArray *array = ZJsonArray_New();
  ZJsonExpression_SetRoot(document.get(), 2, array);
  ASSERT_NE(document->root, nullptr);
  EXPECT_EQ(document->root->type, ZJSON_ARRAY);
  EXPECT_EQ(document->root->array, array);
  ZJsonObject *object = ZJsonObject_NewSimple(4, "n", int64_t{1}, 99);
  ZJsonExpression_SetRoot(document.get(), 3, object);
  EXPECT_EQ(document->root->type, ZJSON_OBJECT);
  EXPECT_EQ(document->root->object, object);
  ZJsonExpression_SetRoot(nullptr, 3, nullptr);
}

TEST(ZJsonExpression_SetRoot, LeavesNoReleasedRecordInTheDocument) {
  const auto document = owned(ZJsonExpression_New());
  ZJsonExpression_SetRoot(document.get(), 4, nullptr);
  EXPECT_EQ(document->root, nullptr);
  ZJsonObject *object = ZJsonObject_New();
  ZJsonExpression_SetRoot(document.get(), 3, object);
  ZJsonExpression_SetRoot(document.get(), 3, object);
  EXPECT_EQ(document->root->object, object);
  ZJsonExpression_SetRoot(document.get(), 3, document->root);
  EXPECT_EQ(document->root->object, object);
  ZJsonExpression_SetRoot(document.get(), 6, nullptr);
  EXPECT_EQ(document->root, nullptr);
}

TEST(ZJsonExpression, ReadsTheSameInC) {
  const auto document = owned(ZJsonExpression_New());
  ZJsonObject *object = ZJsonObject_NewSimple(ZJSON_INTEGER, "i", int64_t{1000}, ZJSON_BOOL, "b", 1,
                                              ZJSON_NUMBER, "d", 20.5, ZJSON_STRING, "s", "A", ZJSON_END);
  ZJsonArray *array = ZJsonArray_New();
  ZJsonArray_Append(array, ZJsonValue_NewInt(100000));
  ZJsonObject_Append(object, ZJsonMember_New("a", ZJsonValue_NewArray(array)));
  ZJsonExpression_SetRoot(document.get(), ZJSON_OBJECT, object);
  EXPECT_EQ(sum_in_c(document.get()), 1000 + 1 + 20 + 'A' + 100000);
}

// A random tree, at most so many levels deep.
ZJsonValue *random_value(std::mt19937 &random, int depth) {
  switch (random() % (depth > 0 ? 8 : 6)) {
    case 0:
      return ZJsonValue_NewNull();
    case 1:
      return ZJsonValue_NewBool(static_cast<int32_t>(random() % 2));
    case 2:
      return ZJsonValue_NewNumber(static_cast<double>(random()) / 8);
    case 3:
      return ZJsonValue_NewString(std::string(random() % 20, 'x').c_str());
    case 4:
    case 5:
      return ZJsonValue_NewInteger(static_cast<int64_t>(random()) - 1000000000);
    case 6: {
      ZJsonArray *array = ZJsonArray_New();
      for (auto i = random() % 25; i > 0; --i)
        ZJsonArray_Append(array, random_value(random, depth - 1));
      return ZJsonValue_NewArray(array);
    }
    default: {
      ZJsonObject *object = ZJsonObject_New();
      for (auto i = random() % 12; i > 0; --i)
        ZJsonObject_Append(object, ZJsonMember_New(std::string(1 + random() % 3, 'k').c_str(),
                                                   random_value(random, depth - 1)));
      return ZJsonValue_NewObject(object);
    }
  }
}

void expect_same(const ZJsonValue *a, const ZJsonValue *b) {
  ASSERT_EQ(a == nullptr, b == nullptr);
  if (a == nullptr) return;
  ASSERT_NE(a, b);
  ASSERT_EQ(a->type, b->type);
  switch (a->type) {
    case ZJSON_STRING:
      ASSERT_STREQ(a->string, b->string);
      ASSERT_NE(a->string, b->string);
      break;
    case ZJSON_ARRAY:
      ASSERT_EQ(a->array->count, b->array->count);
      ASSERT_EQ(a->array->capacity, b->array->capacity);
      for (int32_t i = 0; i < a->array->count; ++i)
        expect_same(a->array->items[i], b->array->items[i]);
      break;
    case ZJSON_OBJECT:
      ASSERT_EQ(a->object->count, b->object->count);
      ASSERT_EQ(a->object->capacity, b->object->capacity);
      for (int32_t i = 0; i < a->object->count; ++i) {
        ASSERT_STREQ(a->object->members[i]->name, b->object->members[i]->name);
        expect_same(a->object->members[i]->value, b->object->members[i]->value);
      }
      break;
    default:
      ASSERT_EQ(a->integer, b->integer);
  }
}

TEST(ZJsonValue_Clone, CopiesRandomTreesWholly) {
  std::mt19937 random(3);
  for (int round = 0; round < 200; ++round) {
    const auto value = owned(random_value(random, 5));
    const auto copy = owned(ZJsonValue_Clone(value.get()));
    expect_same(value.get(), copy.get());
    if (value->type == ZJSON_ARRAY) {
      const auto array = owned(ZJsonValue_NewArray(ZJsonArray_Clone(value->array)));
      expect_same(value.get(), array.get());
    }
    if (value->type == ZJSON_OBJECT) {
      const auto object = owned(ZJsonValue_NewObject(ZJsonObject_Clone(value->object)));
      expect_same(value.get(), object.get());
    }
  }
}

TEST(ZJsonValue_Clone, KeepsATagThatIsNoTypeWithAnEmptyPayload) {
  const auto value = owned(ZJsonValue_NewInteger(5));
  value->type = 7;
  const auto copy = owned(ZJsonValue_Clone(value.get()));
  EXPECT_EQ(copy->type, 7);
  EXPECT_EQ(copy->integer, 0);
}

TEST(ZJsonValue_Clone, GivesNullForNull) {
  EXPECT_EQ(ZJsonValue_Clone(nullptr), nullptr);
  EXPECT_EQ(ZJsonArray_Clone(nullptr), nullptr);
  EXPECT_EQ(ZJsonObject_Clone(nullptr), nullptr);
  EXPECT_EQ(ZJsonMember_Clone(nullptr), nullptr);
}

TEST(ZJsonMember_Clone, PassesTheNameThroughTheQuoteRuleAgain) {
  const auto member = owned(ZJsonMember_New("\"'k'\"", ZJsonValue_NewInt(4)));
  EXPECT_STREQ(member->name, "'k'");
  const auto copy = owned(ZJsonMember_Clone(member.get()));
  EXPECT_STREQ(copy->name, "k");
  EXPECT_EQ(copy->value->integer, 4);
  EXPECT_NE(copy->value, member->value);
  const auto object = owned(ZJsonObject_New());
  ZJsonObject_Append(object.get(), ZJsonMember_New("\"'k'\"", nullptr));
  const auto object_copy = owned(ZJsonObject_Clone(object.get()));
  EXPECT_STREQ(object_copy->members[0]->name, "k");
  EXPECT_EQ(object_copy->members[0]->value, nullptr);
}

TEST(ZJsonValue_Delete, AcceptsNullAndMissingParts) {
  ZJsonValue_Delete(nullptr);
  ZJsonArray_Delete(nullptr);
  ZJsonObject_Delete(nullptr);
  ZJsonMember_Delete(nullptr);
  ZJsonExpression_Delete(nullptr);
  ZJsonValue_Delete(ZJsonValue_NewArray(nullptr));
  ZJsonValue_Delete(ZJsonValue_NewObject(nullptr));
  ZJsonMember_Delete(ZJsonMember_New("n", nullptr));
  ZJsonArray *array = ZJsonArray_New();
  ZfxMemFree(array->items);
  array->items = nullptr;
  array->count = 3;
  ZJsonArray_Delete(array);
  ZJsonObject *object = ZJsonObject_NewSimple(0, "a", 0, "b", 99);
  ZJsonMember_Delete(object->members[0]);
  object->members[0] = nullptr;
  ZJsonObject_Delete(object);
}

// Arrays and objects in turn, each the first item of the one above: too deep for anything that recurses.
ZJsonValue *deep_value(int depth) {
  ZJsonValue *value = ZJsonValue_NewInt(1);
  for (int i = 0; i < depth; ++i) {
    if (i % 2 == 0) {
      ZJsonArray *array = ZJsonArray_New();
      ZJsonArray_Append(array, value);
      ZJsonArray_Append(array, ZJsonValue_NewInt(i));
      value = ZJsonValue_NewArray(array);
    } else {
      ZJsonObject *object = ZJsonObject_New();
      ZJsonObject_Append(object, ZJsonMember_New("k", value));
      value = ZJsonValue_NewObject(object);
    }
  }
  return value;
}

TEST(ZJsonValue, TakesTreesOfAnyDepth) {
  ZJsonValue *value = deep_value(300000);
  ZJsonValue *copy = ZJsonValue_Clone(value);
  ASSERT_NE(copy, nullptr);
  int depth = 0;
  for (const ZJsonValue *at = copy; at->type != ZJSON_INTEGER; ++depth)
    at = at->type == ZJSON_ARRAY ? at->array->items[0] : at->object->members[0]->value;
  EXPECT_EQ(depth, 300000);
  ZJsonValue_Delete(copy);
  ZJsonValue_Delete(value);
}

// Lets allocation number 1, 2, ... of a call fail until the call makes fewer; tells how many it makes.
template <class Call>
std::size_t for_each_failure(Call call) {
  for (std::size_t n = 1;; ++n) {
    support::FailingAllocator failing(n);
    auto *result = call();
    const bool failed = failing.stop();
    EXPECT_EQ(result == nullptr, failed) << "allocation " << n;
    documents::Release()(result);
    if (!failed) return n - 1;
  }
}

TEST(AllocationFailure, MakesEveryConstructorGiveNullAndLeaveNothingBehind) {
  EXPECT_EQ(for_each_failure(ZJsonExpression_New), 1U);
  EXPECT_EQ(for_each_failure(ZJsonArray_New), 2U);
  EXPECT_EQ(for_each_failure(ZJsonObject_New), 2U);
  EXPECT_EQ(for_each_failure(ZJsonValue_New), 1U);
  EXPECT_EQ(for_each_failure([] { return ZJsonValue_NewBool(1); }), 1U);
  EXPECT_EQ(for_each_failure([] { return ZJsonValue_NewInt(1); }), 1U);
  EXPECT_EQ(for_each_failure([] { return ZJsonValue_NewInteger(1); }), 1U);
  EXPECT_EQ(for_each_failure([] { return ZJsonValue_NewNumber(1); }), 1U);
  EXPECT_EQ(for_each_failure([] { return ZJsonValue_NewArray(nullptr); }), 1U);
  EXPECT_EQ(for_each_failure([] { return ZJsonValue_NewObject(nullptr); }), 1U);
  EXPECT_GE(for_each_failure([] { return ZJsonValue_NewString("text"); }), 2U);
  EXPECT_GE(for_each_failure([] { return ZJsonValue_NewString("\t\""); }), 2U);
  EXPECT_EQ(for_each_failure([] { return ZJsonMember_New("n", nullptr); }), 2U);
}

TEST(AllocationFailure, MakesACopyWholeOrNone) {
  std::mt19937 random(4);
  ZJsonArray *array = ZJsonArray_New();
  while (array->count < 11)
    ZJsonArray_Append(array, random_value(random, 3));
  const auto value = owned(ZJsonValue_NewArray(array));
  EXPECT_GT(for_each_failure([&] { return ZJsonValue_Clone(value.get()); }), 100U);
  EXPECT_GT(for_each_failure([&] { return ZJsonArray_Clone(array); }), 100U);
  const auto deep = owned(deep_value(70));
  EXPECT_GT(for_each_failure([&] { return ZJsonValue_Clone(deep.get()); }), 100U);
  const auto member = owned(ZJsonMember_New("n", ZJsonValue_NewInt(1)));
  EXPECT_EQ(for_each_failure([&] { return ZJsonMember_Clone(member.get()); }), 3U);
}

TEST(AllocationFailure, LeavesAnItemThatDoesNotFitWithTheCaller) {
  const auto array = owned(ZJsonArray_New());
  while (array->count < 9)
    ZJsonArray_Append(array.get(), ZJsonValue_NewInt(array->count));
  auto value = owned(ZJsonValue_NewInt(9));
  {
    const support::FailingAllocator failing(1, true);
    ZJsonArray_Append(array.get(), value.get());
  }
  EXPECT_EQ(array->count, 9);
  EXPECT_EQ(array->capacity, 10);
  ZJsonArray_Append(array.get(), value.release());
  EXPECT_EQ(array->count, 10);
  EXPECT_EQ(array->capacity, 20);
}

TEST(AllocationFailure, LeavesASimpleMemberOut) {
  std::size_t n = 1;
  for (;; ++n) {
    support::FailingAllocator failing(n);
    const auto object =
        owned(ZJsonObject_NewSimple(ZJSON_STRING, "a", "x", ZJSON_INTEGER, "b", int64_t{2}, ZJSON_END));
    if (!failing.stop()) break;
    if (n <= 2) {
      EXPECT_EQ(object, nullptr);
    } else {
      ASSERT_NE(object, nullptr);
      EXPECT_EQ(object->count, 1);
    }
  }
  EXPECT_EQ(n, 2U + 4U + 3U + 1U);
}

TEST(AllocationFailure, LeavesTheContainerOfANewRootWithTheCaller) {
  const auto document = owned(ZJsonExpression_New());
  const auto array = owned(ZJsonArray_New());
  const support::FailingAllocator failing(1);
  ZJsonExpression_SetRoot(document.get(), ZJSON_ARRAY, array.get());
  EXPECT_EQ(document->root, nullptr);
}

}  // namespace
