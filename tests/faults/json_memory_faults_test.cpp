// The JSON room without memory: documents, their text and the parser. The scanner is in
// json_scanner_memory_faults_test.cpp.
#include <cerrno>
#include <cstring>
#include <string>

#include "allocation_walk.hpp"
#include "files.hpp"
#include "grammar.h"
#include "json_ends.hpp"
#include "json_names.hpp"
#include "scanner.h"
#include "zfxmemory.h"
#include "zjson_expression.h"
#include "zjson_util.h"
#include "zjsondriver.h"

namespace {

using faults::expect_made;
using faults::Fault;
using faults::FaultedCall;
using faults::in_child;
using faults::kNoBuffer;
using faults::kNoStack;
using faults::make;
using faults::Owner;
using faults::QuietCall;
using faults::Text;

using Document = Owner<ZJsonExpression, ZJsonExpression_Delete>;
using Value = Owner<ZJsonValue, ZJsonValue_Delete>;
using Array = Owner<ZJsonArray, ZJsonArray_Delete>;
using Object = Owner<ZJsonObject, ZJsonObject_Delete>;
using Member = Owner<ZJsonMember, ZJsonMember_Delete>;
using Scanner = Owner<zjson_scanner, zjson_lex_destroy>;

constexpr char kSource[] =
    R"({"name":"x \"y\"","list":[1,2.5,true,null,["deep",{"a":[]}],3,4,5,6,7,8,9,10,11,12],"last":{}})";

constexpr char kShortSource[] = R"({"a":1})";  // for what takes a process for each failure

Document parsed(const std::string &source) {
  return Document(ZJsonExpression_Parse(source.data(), static_cast<int32_t>(source.size())));
}

Document sample_document() {
  return parsed(kSource);
}

const ZJsonMember *list_of(const Document &document) {
  return ZJsonObject_GetMember(document->root->object, "list");
}

std::string text_of(const ZJsonValue *value) {
  char *text = nullptr;
  ZJsonValue_ToString(value, &text, 0, -1);
  const Text owner(text);
  return text == nullptr ? "" : text;
}

void set_message(Fault &fault) {
  const Document document(ZJsonExpression_New());
  fault.during([&] { ZJsonExpression_SetErrorMessage(document.get(), "message"); });
  EXPECT_EQ(document->errorMessage != nullptr, !fault.struck());
  EXPECT_EQ(document->root, nullptr);
  if (document->errorMessage != nullptr) {
    EXPECT_STREQ(document->errorMessage, "message");
  }
}

void set_root(Fault &fault) {
  const Document document = sample_document();
  Array array(ZJsonArray_New());
  fault.during([&] { ZJsonExpression_SetRoot(document.get(), ZJSON_ARRAY, array.get()); });
  EXPECT_EQ(document->root != nullptr, !fault.struck());
  if (fault.struck()) ZJsonExpression_SetRoot(document.get(), ZJSON_ARRAY, array.get());
  ASSERT_NE(document->root, nullptr);
  EXPECT_EQ(document->root->array, array.release());
}

void set_object_as_root(Fault &fault) {
  const Document document(ZJsonExpression_New());
  Object object(ZJsonObject_New());
  fault.during([&] { ZJsonExpression_SetRoot(document.get(), ZJSON_OBJECT, object.get()); });
  EXPECT_EQ(document->root != nullptr, !fault.struck());
  if (document->root != nullptr) {
    EXPECT_EQ(document->root->object, object.release());
  }
}

// The value owns what it is made of, once it is there.
template <auto kMake, class Content>
void make_value_of(Fault &fault, Content content) {
  const Value value(fault.during([&] { return kMake(content.get()); }));
  EXPECT_EQ(value != nullptr, !fault.struck());
  if (value != nullptr) static_cast<void>(content.release());
}

void make_member(Fault &fault) {
  Value value(ZJsonValue_NewInt(1));
  const Member member(fault.during([&] { return ZJsonMember_New("name", value.get()); }));
  EXPECT_EQ(member != nullptr, !fault.struck());
  if (member == nullptr) return;
  EXPECT_STREQ(member->name, "name");
  EXPECT_EQ(member->value, value.release());
}

ZJsonObject *new_object_of_all_types() {
  return ZJsonObject_NewSimple(ZJSON_INTEGER, "integer", int64_t{1}, ZJSON_STRING, "string", "\"x\ty",
                               ZJSON_NULL, "null", ZJSON_BOOL, "bool", 1, ZJSON_NUMBER, "number", 2.5,
                               ZJSON_END);
}

// One member more than there is room for at first.
ZJsonObject *new_object_of_eleven() {
  return ZJsonObject_NewSimple(ZJSON_NULL, "a", ZJSON_NULL, "b", ZJSON_NULL, "c", ZJSON_NULL, "d", ZJSON_NULL,
                               "e", ZJSON_NULL, "f", ZJSON_NULL, "g", ZJSON_NULL, "h", ZJSON_NULL, "i",
                               ZJSON_NULL, "j", ZJSON_NULL, "k", ZJSON_END);
}

// The members are there as far as there is memory, each whole or not at all, and there is room for more.
template <int32_t kMembers, auto kMake>
void make_simple_object(Fault &fault) {
  const Object object(fault.during(kMake));
  if (!fault.struck()) {
    EXPECT_EQ(object->count, kMembers);
  }
  if (object == nullptr) return;
  for (int32_t i = 0; i < object->count; ++i) {
    EXPECT_NE(object->members[i]->value, nullptr);
  }
  ZJsonObject_Append(object.get(), ZJsonMember_New("more", nullptr));
  EXPECT_NE(ZJsonObject_GetMember(object.get(), "more"), nullptr);
}

// Appends until the vector has to grow, at the end under the failure.
void append_item(Fault &fault) {
  const Array array(ZJsonArray_New());
  while (array->count < 9) {
    ZJsonArray_Append(array.get(), ZJsonValue_NewInt(array->count));
  }
  Value value(ZJsonValue_NewInt(9));
  fault.during([&] { ZJsonArray_Append(array.get(), value.get()); });
  EXPECT_EQ(array->count, fault.struck() ? 9 : 10);
  EXPECT_EQ(array->capacity, fault.struck() ? 10 : 20);
  if (fault.struck()) ZJsonArray_Append(array.get(), value.get());
  ASSERT_EQ(array->count, 10);
  EXPECT_EQ(array->items[9], value.release());
  EXPECT_EQ(array->items[8]->integer, 8);
}

template <auto kPut>
void put_member(Fault &fault) {
  const Object object(ZJsonObject_New());
  while (object->count < 9) {
    const std::string name = "m" + std::to_string(object->count);
    ZJsonObject_Append(object.get(), ZJsonMember_New(name.c_str(), nullptr));
  }
  Member member(ZJsonMember_New("new", nullptr));
  fault.during([&] { kPut(object.get(), member.get()); });
  EXPECT_EQ(object->count, fault.struck() ? 9 : 10);
  if (fault.struck()) kPut(object.get(), member.get());
  EXPECT_EQ(ZJsonObject_GetMember(object.get(), "new"), member.release());
}

// A document so deep that a walk over it needs memory of its own.
Document deep_document() {
  constexpr int kLevels = 110;  // a little more than the parser has room for in place
  std::string source;
  for (int level = 0; level < kLevels; ++level) {
    source += level % 2 == 0 ? "[" : "{\"a\":";
  }
  for (int level = kLevels - 1; level >= 0; --level) {
    source += level % 2 == 0 ? "]" : "}";
  }
  // The innermost object has no value; give it one.
  source.insert(source.find("\"a\":}") + 4, "1");
  return parsed(source);
}

void clone_value(Fault &fault, const Document &document) {
  expect_made<ZJsonValue_Delete>(
      fault, [&] { return ZJsonValue_Clone(document->root); },
      [&](const ZJsonValue *copy) { EXPECT_EQ(text_of(copy), text_of(document->root)); });
}

void clone_array(Fault &fault) {
  const Document document = sample_document();
  const ZJsonArray *list = list_of(document)->value->array;
  expect_made<ZJsonArray_Delete>(
      fault, [&] { return ZJsonArray_Clone(list); },
      [&](const ZJsonArray *copy) { EXPECT_EQ(copy->count, list->count); });
}

void clone_object(Fault &fault) {
  const Document document = sample_document();
  expect_made<ZJsonObject_Delete>(
      fault, [&] { return ZJsonObject_Clone(document->root->object); },
      [&](const ZJsonObject *copy) { EXPECT_EQ(copy->count, document->root->object->count); });
}

void clone_member(Fault &fault) {
  const Document document = sample_document();
  const ZJsonMember *list = list_of(document);
  expect_made<ZJsonMember_Delete>(
      fault, [&] { return ZJsonMember_Clone(list); },
      [&](const ZJsonMember *copy) { EXPECT_EQ(text_of(copy->value), text_of(list->value)); });
}

bool is_part_of(const std::string &text, const std::string &whole) {
  std::size_t next = 0;
  for (const char c : whole) {
    if (next < text.size() && text[next] == c) ++next;
  }
  return next == text.size();
}

using Print = uint32_t (*)(const Document &document, char **text);

// What cannot be printed for lack of memory is left out; the rest is there.
void print_by(Fault &fault, Print print, const Document &document, const char *before) {
  char *whole = before == nullptr ? nullptr : ZfxStrDup(before);
  print(document, &whole);
  const Text whole_owner(whole);
  char *text = before == nullptr ? nullptr : ZfxStrDup(before);
  const uint32_t length = fault.during([&] { return print(document, &text); });
  const Text owner(text);
  EXPECT_EQ(text == nullptr ? 0 : std::strlen(text), length);
  if (!fault.struck()) {
    EXPECT_STREQ(text, whole);
  } else if (text != nullptr) {
    EXPECT_TRUE(is_part_of(text, whole)) << text;
    if (before != nullptr) {
      EXPECT_EQ(std::string(text).rfind(before, 0), 0U);
    }
  }
}

uint32_t print_document(const Document &document, char **text) {
  return ZJsonExpression_ToString(document.get(), text, 1);
}

uint32_t print_value(const Document &document, char **text) {
  return ZJsonValue_ToString(document->root, text, 0, -1);
}

uint32_t print_object(const Document &document, char **text) {
  return ZJsonObject_ToString(document->root->object, text, 0, 0);
}

uint32_t print_array(const Document &document, char **text) {
  return ZJsonArray_ToString(list_of(document)->value->array, text, 0, 0);
}

uint32_t print_member(const Document &document, char **text) {
  return ZJsonMember_ToString(list_of(document), text, 2);
}

// Its text outgrows what the printer has in place, and the block after that.
Document long_document() {
  std::string source = "[0";
  for (int i = 1; i < 10000; ++i) {
    source += ",0";
  }
  source += "]";
  return parsed(source);
}

void escape_text(Fault &fault) {
  uint32_t length = 3;
  const Text text(fault.during([&] { return zjson_str_escape("a\tb", &length); }));
  EXPECT_EQ(text != nullptr, !fault.struck());
  EXPECT_EQ(length, fault.struck() ? 3U : 4U);
}

void report_error(Fault &fault) {
  const ZJsonLocation place = {1, 1, 2, 3};
  ZJsonExpression *result = nullptr;
  EXPECT_EQ(fault.during([&] { return zjson_error(&place, &result, nullptr, "message"); }), 0);
  const Document document(result);
  if (!fault.struck()) {
    ASSERT_NE(document, nullptr);
    EXPECT_STREQ(document->errorMessage, "line #2.3: message");
  }
}

// What a parse gives when memory may have run out on its way: nothing, a message, or all.
void expect_document(const Fault &fault, const Document &document, const std::string &whole) {
  if (!fault.struck()) {
    ASSERT_NE(document, nullptr);
  }
  if (document == nullptr) return;
  if (document->root != nullptr) {
    EXPECT_EQ(text_of(document->root), whole);
    EXPECT_EQ(document->errorMessage, nullptr);
  } else if (document->errorMessage != nullptr) {
    EXPECT_TRUE(fault.struck());
    EXPECT_NE(std::strstr(document->errorMessage, ": memory exhausted"), nullptr) << document->errorMessage;
  } else {
    ADD_FAILURE() << "a document with neither a root nor a message";
  }
}

void parse(Fault &fault, const std::string &source) {
  const auto length = static_cast<int32_t>(source.size());
  const Document document(fault.during([&] { return ZJsonExpression_Parse(source.data(), length); }));
  expect_document(fault, document, source);
}

void parse_long_array(Fault &fault) {
  std::string source = "[";
  for (int i = 0; i < 520; ++i) {
    source += "null,";
  }
  source.back() = ']';
  parse(fault, source);
}

void parse_wrong_text(Fault &fault) {
  static constexpr char kWrong[] = R"({"a":["b",{"c" 1}]})";
  const Document document(fault.during([] { return ZJsonExpression_Parse(kWrong, sizeof kWrong - 1); }));
  if (!fault.struck()) {
    ASSERT_NE(document, nullptr);
  }
  if (document == nullptr) return;
  EXPECT_EQ(document->root, nullptr);
  ASSERT_NE(document->errorMessage, nullptr);
  const bool by_memory = std::strstr(document->errorMessage, "memory exhausted") != nullptr;
  const bool by_syntax = std::strstr(document->errorMessage, "syntax error") != nullptr;
  EXPECT_TRUE(by_syntax || (fault.struck() && by_memory)) << document->errorMessage;
}

void parse_scanner(Fault &fault) {
  zjson_scanner *handle = nullptr;
  zjson_lex_init(&handle);
  const Scanner scanner(handle);
  zjson__scan_string(kSource, handle);
  ZJsonExpression *result = nullptr;
  const int32_t status = fault.during([&] { return zjson_parse(&result, handle); });
  const Document document(result);
  EXPECT_TRUE(status == 0 || (fault.struck() && status == 2)) << status;
  EXPECT_EQ(status == 0, document != nullptr && document->root != nullptr);
  expect_document(fault, document, kSource);
}

void parse_stream(Fault &fault) {
  const support::TemporaryFolder folder;
  const std::string path = folder / "document.json";
  support::write_file(path, kShortSource);
  in_child(fault, {kNoBuffer, kNoStack}, [&] {
    FILE *stream = std::fopen(path.c_str(), "r");
    const Document document(fault.during([&] { return ZJsonExpression_ParseStream(stream); }));
    expect_document(fault, document, kShortSource);
    std::fclose(stream);
  });
}

void parse_file(Fault &fault) {
  const support::TemporaryFolder folder;
  const std::string path = folder / "document.json";
  support::write_file(path, kShortSource);
  in_child(fault, {kNoBuffer, kNoStack}, [&] {
    ZJsonExpression *result = nullptr;
    const int32_t status = fault.during([&] { return ZJsonExpression_ParseFile(&result, path.c_str()); });
    const Document document(result);
    EXPECT_TRUE(status == 0 || (fault.struck() && (status == 63 || status == ENOMEM))) << status;
    EXPECT_EQ(status == 0, document != nullptr);
    expect_document(fault, document, kShortSource);
  });
}

constexpr FaultedCall kFaulted[] = {
    {"ZJsonArray_Append", "BeyondTheCapacity", append_item},
    {"ZJsonArray_Clone", "Nested", clone_array},
    {"ZJsonArray_New", "Empty", make<ZJsonArray_New, ZJsonArray_Delete>},
    {"ZJsonArray_ToString", "Pretty",
     [](Fault &fault) { print_by(fault, print_array, sample_document(), "before "); }},
    {"ZJsonExpression_New", "Empty", make<ZJsonExpression_New, ZJsonExpression_Delete>},
    {"ZJsonExpression_Parse", "Text", [](Fault &fault) { parse(fault, kSource); }},
    {"ZJsonExpression_Parse", "DeepText", [](Fault &fault) { parse(fault, text_of(deep_document()->root)); }},
    {"ZJsonExpression_Parse", "LongArray", parse_long_array},
    {"ZJsonExpression_Parse", "WrongText", parse_wrong_text},
    {"ZJsonExpression_ParseFile", "File", parse_file},
    {"ZJsonExpression_ParseStream", "Stream", parse_stream},
    {"ZJsonExpression_SetErrorMessage", "First", set_message},
    {"ZJsonExpression_SetRoot", "InPlaceOfAnother", set_root},
    {"ZJsonExpression_SetRoot", "First", set_object_as_root},
    {"ZJsonExpression_ToString", "Pretty",
     [](Fault &fault) { print_by(fault, print_document, sample_document(), nullptr); }},
    {"ZJsonMember_Clone", "Nested", clone_member},
    {"ZJsonMember_New", "WithAValue", make_member},
    {"ZJsonMember_ToString", "Pretty",
     [](Fault &fault) { print_by(fault, print_member, sample_document(), "before "); }},
    {"ZJsonObject_Append", "BeyondTheCapacity", put_member<ZJsonObject_Append>},
    {"ZJsonObject_Clone", "Nested", clone_object},
    {"ZJsonObject_New", "Empty", make<ZJsonObject_New, ZJsonObject_Delete>},
    {"ZJsonObject_NewSimple", "AllTypes", make_simple_object<5, new_object_of_all_types>},
    {"ZJsonObject_NewSimple", "ElevenMembers", make_simple_object<11, new_object_of_eleven>},
    {"ZJsonObject_Replace", "AbsentMember", put_member<ZJsonObject_Replace>},
    {"ZJsonObject_ToString", "Pretty",
     [](Fault &fault) { print_by(fault, print_object, sample_document(), "before "); }},
    {"ZJsonValue_Clone", "Nested", [](Fault &fault) { clone_value(fault, sample_document()); }},
    {"ZJsonValue_Clone", "Deep", [](Fault &fault) { clone_value(fault, deep_document()); }},
    {"ZJsonValue_New", "Null", make<ZJsonValue_New, ZJsonValue_Delete>},
    {"ZJsonValue_NewArray", "OfAnArray",
     [](Fault &fault) { make_value_of<ZJsonValue_NewArray>(fault, Array(ZJsonArray_New())); }},
    {"ZJsonValue_NewBool", "True", make<[] { return ZJsonValue_NewBool(1); }, ZJsonValue_Delete>},
    {"ZJsonValue_NewInt", "One", make<[] { return ZJsonValue_NewInt(1); }, ZJsonValue_Delete>},
    {"ZJsonValue_NewInteger", "One", make<[] { return ZJsonValue_NewInteger(1); }, ZJsonValue_Delete>},
    {"ZJsonValue_NewNull", "Null", make<ZJsonValue_NewNull, ZJsonValue_Delete>},
    {"ZJsonValue_NewNumber", "Half", make<[] { return ZJsonValue_NewNumber(0.5); }, ZJsonValue_Delete>},
    {"ZJsonValue_NewObject", "OfAnObject",
     [](Fault &fault) { make_value_of<ZJsonValue_NewObject>(fault, Object(ZJsonObject_New())); }},
    {"ZJsonValue_NewString", "Escaped",
     make<[] { return ZJsonValue_NewString("a \"quoted\" text"); }, ZJsonValue_Delete,
          [](const ZJsonValue *value) { EXPECT_STREQ(value->string, R"(a \"quoted\" text)"); }>},
    {"ZJsonValue_NewStringL", "Plain",
     make<[] { return ZJsonValue_NewStringL("text", 2); }, ZJsonValue_Delete>},
    {"ZJsonValue_ToString", "BehindAText",
     [](Fault &fault) { print_by(fault, print_value, sample_document(), "before "); }},
    {"ZJsonValue_ToString", "Deep",
     [](Fault &fault) { print_by(fault, print_value, deep_document(), nullptr); }},
    {"ZJsonValue_ToString", "LongBehindAText",
     [](Fault &fault) { print_by(fault, print_value, long_document(), "before "); }},
    {"zjson_error", "First", report_error},
    {"zjson_parse", "Scanner", parse_scanner},
    {"zjson_str_escape", "WithATab", escape_text},
};

// Made once, so that the calls below need no memory of their own.
Document sample;

const QuietCall kQuiet[] = {
    {"ZJsonArray_Delete", [] { ZJsonArray_Delete(nullptr); }},
    {"ZJsonExpression_Delete", [] { ZJsonExpression_Delete(nullptr); }},
    {"ZJsonMember_Delete", [] { ZJsonMember_Delete(nullptr); }},
    {"ZJsonObject_Delete", [] { ZJsonObject_Delete(nullptr); }},
    {"ZJsonObject_DeleteMember", [] { ZJsonObject_DeleteMember(sample->root->object, "last"); }},
    {"ZJsonObject_DeleteMemberByRef",
     [] { ZJsonObject_DeleteMemberByRef(sample->root->object, sample->root->object->members[0]); }},
    {"ZJsonObject_GetMember", [] { ZJsonObject_GetMember(sample->root->object, "list"); }},
    {"ZJsonValue_Delete", [] { ZJsonValue_Delete(std::exchange(sample->root, nullptr)); }},
    {"zjson_debug", [] { EXPECT_EQ(zjson_debug, 0); }},
};

struct JsonWithoutMemory : ::testing::TestWithParam<FaultedCall> {};

TEST_P(JsonWithoutMemory, KeepsItsContractWhicheverAllocationFails) {
  faults::walk(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Call, JsonWithoutMemory, ::testing::ValuesIn(kFaulted), faults::RowName());

struct JsonFrugal : ::testing::TestWithParam<QuietCall> {
  void SetUp() override { sample = sample_document(); }
  void TearDown() override { sample.reset(); }
};

TEST_P(JsonFrugal, TakesNoMemory) {
  faults::expect_no_allocation(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Call, JsonFrugal, ::testing::ValuesIn(kQuiet), faults::RowName());

TEST(JsonMemoryFaults, NameEveryExportOfTheRoomButTheScanners) {
  EXPECT_EQ(faults::names_in(kFaulted, kQuiet), faults::json_names(false));
}

}  // namespace
