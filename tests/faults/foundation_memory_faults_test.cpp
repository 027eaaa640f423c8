// The foundation without memory: texts, lists and the heap wrappers.
#include <cstring>
#include <string>

#include "CompareString.h"
#include "GetErrorNumber.h"
#include "GetErrorText.h"
#include "NextToken.h"
#include "TrimString.h"
#include "allocation_walk.hpp"
#include "crtvers.h"
#include "dllist.h"
#include "format.h"
#include "strbuf.h"
#include "strptrlist.h"
#include "zfxmemory.h"

namespace {

using faults::Fault;
using faults::FaultedCall;
using faults::Owner;
using faults::QuietCall;
using faults::Text;

using Buffer = Owner<strbuf, strbuf_destroy>;
using List = Owner<strptrlist, strptrlist_delete>;
using Chain = Owner<DLinkList, DLinkList_Delete>;

constexpr char kLong[] = "a text that is longer than the step of every buffer here";

std::string text_of(const Buffer &buffer) {
  EXPECT_EQ(std::strlen(strbuf_get(buffer.get())), strbuf_length(buffer.get()));
  return strbuf_get(buffer.get());
}

// The buffer takes texts again, whatever has happened to it.
void expect_usable(const Buffer &buffer) {
  EXPECT_STREQ(strbuf_set_str(buffer.get(), "usable", -1), "usable");
  EXPECT_STREQ(strbuf_append(buffer.get(), kLong, -1), kLong);
  EXPECT_EQ(text_of(buffer), std::string("usable") + kLong);
}

// The text after a call that gives null when the text cannot be had.
void expect_whole_or_unchanged(const Buffer &buffer, const char *result, const std::string &whole) {
  EXPECT_EQ(text_of(buffer), result == nullptr ? "abc" : whole);
  expect_usable(buffer);
}

void create_buffer(Fault &fault) {
  const Buffer buffer(fault.during([] { return strbuf_create(4, kLong); }));
  if (!fault.struck()) {
    EXPECT_EQ(text_of(buffer), kLong);
  }
  if (buffer == nullptr) return;
  if (fault.struck() && strbuf_get(buffer.get()) == nullptr) {
    EXPECT_EQ(strbuf_length(buffer.get()), 0U);
  }
  expect_usable(buffer);
}

void replace_text(Fault &fault) {
  const Buffer buffer(strbuf_create(4, "abc"));
  const char *result = fault.during([&] { return strbuf_set_str(buffer.get(), kLong, -1); });
  if (!fault.struck()) {
    EXPECT_NE(result, nullptr);
  }
  expect_whole_or_unchanged(buffer, result, kLong);
}

// A buffer that could have no text at first.
Buffer buffer_without_text() {
  support::FailingAllocator second(2, true);
  Buffer buffer(strbuf_create(4, ""));
  second.stop();
  EXPECT_EQ(strbuf_get(buffer.get()), nullptr);
  return buffer;
}

void clear_buffer_without_text(Fault &fault) {
  const Buffer buffer = buffer_without_text();
  fault.during([&] { strbuf_clear(buffer.get()); });
  EXPECT_EQ(strbuf_length(buffer.get()), 0U);
  if (!fault.struck()) {
    EXPECT_EQ(text_of(buffer), "");
  }
  expect_usable(buffer);
}

void append_to_buffer_without_text(Fault &fault) {
  const Buffer buffer = buffer_without_text();
  const char *result = fault.during([&] { return strbuf_append(buffer.get(), kLong, -1); });
  if (!fault.struck()) {
    EXPECT_STREQ(result, kLong);
  }
  expect_usable(buffer);
}

void copy_buffer(Fault &fault) {
  const Buffer source(strbuf_create(4, kLong));
  const Buffer buffer(strbuf_create(4, "abc"));
  fault.during([&] { strbuf_copy(buffer.get(), source.get()); });
  const std::string text = text_of(buffer);
  EXPECT_TRUE(text == kLong || (fault.struck() && text == "abc")) << text;
  EXPECT_EQ(text_of(source), kLong);
  expect_usable(buffer);
}

void append_text(Fault &fault) {
  const Buffer buffer(strbuf_create(4, "abc"));
  const char *result = fault.during([&] { return strbuf_append(buffer.get(), kLong, -1); });
  if (!fault.struck()) {
    EXPECT_NE(result, nullptr);
  }
  expect_whole_or_unchanged(buffer, result, std::string("abc") + kLong);
}

void append_own_text(Fault &fault) {
  const Buffer buffer(strbuf_create(4, kLong));
  const char *result =
      fault.during([&] { return strbuf_append(buffer.get(), strbuf_get(buffer.get()), -1); });
  EXPECT_TRUE(result != nullptr || fault.struck());
  EXPECT_EQ(text_of(buffer), result == nullptr ? kLong : std::string(kLong) + kLong);
  expect_usable(buffer);
}

void reserve_room(Fault &fault) {
  const Buffer buffer(strbuf_create(4, "abc"));
  const int32_t capacity = buffer->capacity;
  const int32_t result = fault.during([&] { return strbuf_reserve(buffer.get(), 1000); });
  EXPECT_TRUE(result == 0 || (fault.struck() && result == -1)) << result;
  EXPECT_EQ(buffer->capacity > capacity, result == 0);
  EXPECT_EQ(text_of(buffer), "abc");
  expect_usable(buffer);
}

void expect_inserted_or_unchanged(Fault &fault, const Buffer &buffer, const std::string &whole) {
  const std::string text = text_of(buffer);
  EXPECT_TRUE(text == whole || (fault.struck() && text == "abc")) << text;
  expect_usable(buffer);
}

void insert_text(Fault &fault) {
  const Buffer buffer(strbuf_create(4, "abc"));
  fault.during([&] { strbuf_insert(buffer.get(), kLong, -1, 1); });
  expect_inserted_or_unchanged(fault, buffer, std::string("a") + kLong + "bc");
}

void insert_own_text(Fault &fault) {
  const Buffer buffer(strbuf_create(4, "abc"));
  fault.during([&] { strbuf_insert(buffer.get(), strbuf_get(buffer.get()), -1, 1); });
  expect_inserted_or_unchanged(fault, buffer, "aabcbc");
}

void detach_text(Fault &fault) {
  const Buffer buffer(strbuf_create(4, kLong));
  const Text text(fault.during([&] { return strbuf_detach(buffer.get()); }));
  EXPECT_STREQ(text.get(), kLong) << "the text is the caller's in every case";
  EXPECT_EQ(strbuf_length(buffer.get()), 0U);
  if (!fault.struck()) {
    EXPECT_EQ(text_of(buffer), "");
  }
  expect_usable(buffer);
}

void format_text(Fault &fault) {
  const Buffer buffer(strbuf_create(4, "abc"));
  const int32_t count = fault.during([&] { return strbuf_format(buffer.get(), "%s!", kLong); });
  EXPECT_EQ(count, static_cast<int32_t>(std::strlen(kLong)) + 1);
  const std::string text = text_of(buffer);
  EXPECT_TRUE(text == std::string(kLong) + "!" || (fault.struck() && text.empty())) << text;
  expect_usable(buffer);
}

void append_formatted(Fault &fault) {
  const Buffer buffer(strbuf_create(4, "abc"));
  const int32_t count = fault.during([&] { return strbuf_append_format(buffer.get(), "%s!", kLong); });
  EXPECT_EQ(count, static_cast<int32_t>(std::strlen(kLong)) + 1);
  expect_inserted_or_unchanged(fault, buffer, std::string("abc") + kLong + "!");
}

void borrow_area(Fault &fault) {
  const Buffer buffer(strbuf_create(4, "abc"));
  const char *area = fault.during([&] { return strbuf_getBufferSetLength(buffer.get(), 100); });
  EXPECT_EQ(area != nullptr, !fault.struck());
  if (area != nullptr) {
    EXPECT_STREQ(area, "abc");
  }
  EXPECT_EQ(buffer->scratch_size, area == nullptr ? 0 : 100);
  EXPECT_EQ(text_of(buffer), "abc");
  strbuf_releaseBuffer(buffer.get(), 0, -1);
  expect_usable(buffer);
}

void take_over_area(Fault &fault) {
  const Buffer buffer(strbuf_create(4, "abc"));
  std::strcpy(strbuf_getBufferSetLength(buffer.get(), 100), kLong);
  fault.during([&] { strbuf_releaseBuffer(buffer.get(), 1, -1); });
  EXPECT_EQ(buffer->scratch, nullptr) << "the loan ends in every case";
  expect_inserted_or_unchanged(fault, buffer, kLong);
}

void expect_texts(const List &list, std::initializer_list<const char *> texts) {
  ASSERT_EQ(list->count, texts.size());
  int32_t index = 0;
  for (const char *text : texts) {
    EXPECT_STREQ(strptrlist_get(list.get(), index++), text);
  }
}

void create_list(Fault &fault) {
  const List list(fault.during([] { return strptrlist_new(); }));
  EXPECT_EQ(list != nullptr, !fault.struck());
  if (list != nullptr) {
    EXPECT_EQ(strptrlist_add(list.get(), "usable"), 0);
  }
}

void grow_list(Fault &fault) {
  const List list(strptrlist_new());
  strptrlist_add(list.get(), "one");
  const int32_t result = fault.during([&] { return strptrlist_ensuresize(list.get(), 1000); });
  EXPECT_EQ(result, fault.struck() ? -1 : 0);
  EXPECT_EQ(list->capacity, fault.struck() ? 32U : 32U + 1024U);
  EXPECT_EQ(strptrlist_add(list.get(), "two"), 0);
  expect_texts(list, {"one", "two"});
}

using Add = int32_t (*)(strptrlist *list);

// Adds the 32nd text, "x", which needs more slots and a copy, to a list of 31 texts "m". More slots than it
// asks for may be refused without harm.
void add_by(Fault &fault, Add add) {
  const List list(strptrlist_new());
  for (int i = 0; i < 31; ++i) {
    strptrlist_add(list.get(), "m");
  }
  const int32_t result = fault.during([&] { return add(list.get()); });
  EXPECT_TRUE(result == 0 || (fault.struck() && result == -1)) << result;
  EXPECT_EQ(list->count, result == 0 ? 32U : 31U);
  for (int i = 0; i < 31; ++i) {
    EXPECT_STREQ(strptrlist_get(list.get(), i), "m");
  }
  EXPECT_EQ(add(list.get()), 0);
  EXPECT_STREQ(strptrlist_get(list.get(), static_cast<int32_t>(list->count) - 1), "x");
}

void add_text(Fault &fault) {
  add_by(fault, [](strptrlist *list) { return strptrlist_add(list, "x"); });
}

void add_text_of_length(Fault &fault) {
  add_by(fault, [](strptrlist *list) { return strptrlist_ladd(list, "xy", 1); });
}

void add_sorted(Fault &fault) {
  add_by(fault, [](strptrlist *list) { return strptrlist_add_sorted(list, "x"); });
}

void create_chain(Fault &fault) {
  const Chain chain(fault.during([] { return DLinkList_New(nullptr); }));
  EXPECT_EQ(chain != nullptr, !fault.struck());
  if (chain == nullptr) return;
  static int item = 0;
  EXPECT_NE(DLinkList_AppendItem(chain.get(), &item), nullptr);
}

void append_item(Fault &fault) {
  static int items[2] = {1, 2};
  const Chain chain(DLinkList_New(nullptr));
  DLinkListLink *first = DLinkList_AppendItem(chain.get(), &items[0]);
  const DLinkListLink *link = fault.during([&] { return DLinkList_AppendItem(chain.get(), &items[1]); });
  EXPECT_EQ(link != nullptr, !fault.struck());
  EXPECT_EQ(chain->head, first);
  EXPECT_EQ(chain->tail, link == nullptr ? first : link);
  EXPECT_EQ(DLinkList_RemoveItem(chain.get(), first), &items[0]);
  EXPECT_NE(DLinkList_AppendItem(chain.get(), &items[0]), nullptr);
}

void allocate_block(Fault &fault) {
  errno = 0;
  const Text block(fault.during([] { return static_cast<char *>(ZfxMemAlloc(100)); }));
  EXPECT_EQ(block != nullptr, !fault.struck());
  EXPECT_EQ(errno, fault.struck() ? ENOMEM : 0);
}

void allocate_large_block(Fault &fault) {
  const Text block(fault.during([] { return static_cast<char *>(ZfxMemAlloc(100000)); }));
  EXPECT_EQ(block != nullptr, !fault.struck());
}

void reallocate_block(Fault &fault) {
  Text block(static_cast<char *>(ZfxMemAlloc(8)));
  std::strcpy(block.get(), "kept");
  auto *moved = fault.during([&] { return static_cast<char *>(ZfxMemRealloc(block.get(), 100000)); });
  EXPECT_EQ(moved != nullptr, !fault.struck());
  if (moved != nullptr) {
    static_cast<void>(block.release());
    block.reset(moved);
  }
  EXPECT_STREQ(block.get(), "kept");
}

void duplicate_text(Fault &fault) {
  const Text copy(fault.during([] { return ZfxStrDup("abc"); }));
  EXPECT_EQ(copy != nullptr, !fault.struck());
  if (copy != nullptr) {
    EXPECT_STREQ(copy.get(), "abc");
  }
}

void duplicate_empty_text(Fault &fault) {
  const Text copy(fault.during([] { return ZfxStrDup(""); }));
  EXPECT_EQ(copy != nullptr, !fault.struck());
}

constexpr FaultedCall kFaulted[] = {
    {"DLinkList_AppendItem", "BehindAnother", append_item},
    {"DLinkList_New", "Empty", create_chain},
    {"ZfxMemAlloc", "Small", allocate_block},
    {"ZfxMemAlloc", "Large", allocate_large_block},
    {"ZfxMemRealloc", "Growing", reallocate_block},
    {"ZfxStrDup", "Text", duplicate_text},
    {"ZfxStrDup", "Empty", duplicate_empty_text},
    {"strbuf_append", "BeyondTheRoom", append_text},
    {"strbuf_append", "OwnText", append_own_text},
    {"strbuf_append", "ToABufferWithoutText", append_to_buffer_without_text},
    {"strbuf_append_format", "BeyondTheRoom", append_formatted},
    {"strbuf_clear", "OfABufferWithoutText", clear_buffer_without_text},
    {"strbuf_copy", "BeyondTheRoom", copy_buffer},
    {"strbuf_create", "WithAText", create_buffer},
    {"strbuf_detach", "AndStartAgain", detach_text},
    {"strbuf_format", "BeyondTheRoom", format_text},
    {"strbuf_getBufferSetLength", "Larger", borrow_area},
    {"strbuf_insert", "BeyondTheRoom", insert_text},
    {"strbuf_insert", "OwnText", insert_own_text},
    {"strbuf_releaseBuffer", "BeyondTheRoom", take_over_area},
    {"strbuf_reserve", "Much", reserve_room},
    {"strbuf_set_str", "BeyondTheRoom", replace_text},
    {"strptrlist_add", "BeyondTheSlots", add_text},
    {"strptrlist_add_sorted", "BeyondTheSlots", add_sorted},
    {"strptrlist_ensuresize", "Much", grow_list},
    {"strptrlist_ladd", "BeyondTheSlots", add_text_of_length},
    {"strptrlist_new", "Empty", create_list},
};

// Made once, so that the calls below need no memory of their own.
Buffer sample;
List sample_list;

char text_area[64];

const QuietCall kQuiet[] = {
    {"DLinkList_Delete", [] { DLinkList_Delete(nullptr); }},
    {"DLinkList_DeleteItem", [] { DLinkList_DeleteItem(nullptr, nullptr); }},
    {"DLinkList_RemoveItem", [] { DLinkList_RemoveItem(nullptr, nullptr); }},
    {"DLinkList_RemoveLink", [] { DLinkList_RemoveLink(nullptr, nullptr, 0); }},
    {"TrimString",
     [] {
       std::strcpy(text_area, "  text  ");
       TrimString(text_area);
     }},
    {"ZfxCompareLen", [] { EXPECT_EQ(ZfxCompareLen("abc", "abd", 2), 0); }},
    {"ZfxCompareLenNoCase", [] { EXPECT_EQ(ZfxCompareLenNoCase("abc", "ABd", 2), 0); }},
    {"ZfxCompareNoCase", [] { EXPECT_EQ(ZfxCompareNoCase("abc", "ABC"), 0); }},
    {"ZfxGetCrtVersion", [] { ZfxGetCrtVersion(text_area, sizeof text_area); }},
    {"ZfxGetErrorNumber", [] { ZfxGetErrorNumber(); }},
    {"ZfxGetErrorText", [] { EXPECT_GT(ZfxGetErrorText(ENOENT, text_area, sizeof text_area), 0); }},
    {"ZfxMemCopy", [] { ZfxMemCopy(text_area, "abc", 4); }},
    {"ZfxMemFree", [] { ZfxMemFree(nullptr); }},
    {"ZfxMemReadable", [] { ZfxMemReadable(text_area, 1); }},
    {"ZfxMemWriteable", [] { ZfxMemWriteable(text_area, 1); }},
    {"ZfxNextToken",
     [] {
       int32_t position = 0;
       EXPECT_EQ(ZfxNextToken("a,b", ',', text_area, sizeof text_area, &position), 1);
     }},
    {"ZfxStrEquals", [] { EXPECT_EQ(ZfxStrEquals("a", "a"), 1); }},
    {"ZfxStrLenEquals", [] { EXPECT_EQ(ZfxStrLenEquals("ab", "ac", 1), 1); }},
    {"ZfxStrLenNoCaseEquals", [] { EXPECT_EQ(ZfxStrLenNoCaseEquals("ab", "Ac", 1), 1); }},
    {"ZfxStrNoCaseEquals", [] { EXPECT_EQ(ZfxStrNoCaseEquals("a", "A"), 1); }},
    {"strbuf_compareNoCase", [] { EXPECT_EQ(strbuf_compareNoCase(sample.get(), " SAMPLE "), 0); }},
    {"strbuf_destroy", [] { strbuf_destroy(nullptr); }},
    {"strbuf_endswith", [] { EXPECT_EQ(strbuf_endswith(sample.get(), "e ", -1, 0), 1); }},
    {"strbuf_get", [] { strbuf_get(sample.get()); }},
    {"strbuf_getat", [] { EXPECT_EQ(strbuf_getat(sample.get(), 1), 's'); }},
    {"strbuf_length", [] { EXPECT_EQ(strbuf_length(sample.get()), 8U); }},
    {"strbuf_ltrunc", [] { EXPECT_EQ(strbuf_ltrunc(sample.get(), 0), 8U); }},
    {"strbuf_trim",
     [] {
       strbuf_set_str(sample.get(), " sample ", -1);
       strbuf_trim(sample.get());
     }},
    {"string_format", [] { EXPECT_STREQ(string_format(text_area, sizeof text_area, "%d", 1), "1"); }},
    {"strptrlist_clear", [] { strptrlist_clear(nullptr); }},
    {"strptrlist_delete", [] { strptrlist_delete(nullptr); }},
    {"strptrlist_find_sorted", [] { EXPECT_EQ(strptrlist_find_sorted(sample_list.get(), "one"), 0); }},
    {"strptrlist_get", [] { EXPECT_STREQ(strptrlist_get(sample_list.get(), 0), "one"); }},
    {"strptrlist_remove_at", [] { EXPECT_EQ(strptrlist_remove_at(sample_list.get(), 7), -1); }},
};

struct FoundationWithoutMemory : ::testing::TestWithParam<FaultedCall> {};

TEST_P(FoundationWithoutMemory, KeepsItsContractWhicheverAllocationFails) {
  faults::walk(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Call, FoundationWithoutMemory, ::testing::ValuesIn(kFaulted), faults::RowName());

struct FoundationFrugal : ::testing::TestWithParam<QuietCall> {
  void SetUp() override {
    sample.reset(strbuf_create(16, " sample "));
    sample_list.reset(strptrlist_new());
    strptrlist_add(sample_list.get(), "one");
  }
  void TearDown() override {
    sample.reset();
    sample_list.reset();
  }
};

TEST_P(FoundationFrugal, TakesNoMemory) {
  faults::expect_no_allocation(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Call, FoundationFrugal, ::testing::ValuesIn(kQuiet), faults::RowName());

TEST(FoundationMemoryFaults, NameEveryExportOfTheRoom) {
  EXPECT_EQ(faults::names_in(kFaulted, kQuiet), faults::exported_names("foundation"));
}

}  // namespace
