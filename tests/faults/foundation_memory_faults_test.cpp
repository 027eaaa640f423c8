// The foundation without memory: texts, lists and the heap wrappers.
#include <cstring>
#include <string>
#include <type_traits>

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
using faults::make;
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

void expect_changed(const Fault &fault, const Buffer &buffer, const std::string &changed,
                    const std::string &before = "abc") {
  const std::string text = text_of(buffer);
  EXPECT_TRUE(text == changed || (fault.struck() && text == before)) << text;
  expect_usable(buffer);
}

// A change of a text is made or, for lack of memory, not. Calls that give a text tell by null that it is not.
template <class Call>
void change(Fault &fault, const char *before, const std::string &changed, Call call) {
  const Buffer buffer(strbuf_create(4, before));
  const auto make = [&] { return call(buffer.get()); };
  if constexpr (std::is_void_v<decltype(make())>) {
    fault.during(make);
  } else {
    const bool is_made = fault.during(make) != nullptr;
    EXPECT_EQ(text_of(buffer) == changed, is_made);
  }
  expect_changed(fault, buffer, changed, before);
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
  change(fault, "abc", kLong, [&](strbuf *buffer) { strbuf_copy(buffer, source.get()); });
  EXPECT_EQ(text_of(source), kLong);
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
  int32_t count = 0;
  change(fault, "abc", std::string("abc") + kLong + "!",
         [&](strbuf *buffer) { count = strbuf_append_format(buffer, "%s!", kLong); });
  EXPECT_EQ(count, static_cast<int32_t>(std::strlen(kLong)) + 1);
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
  expect_changed(fault, buffer, kLong);
}

void expect_texts(const List &list, std::initializer_list<const char *> texts) {
  ASSERT_EQ(list->count, texts.size());
  int32_t index = 0;
  for (const char *text : texts) {
    EXPECT_STREQ(strptrlist_get(list.get(), index++), text);
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

// Adds the 32nd text, "x", which needs more slots and a copy, to a list of 31 texts "m". More slots than it
// asks for may be refused without harm.
template <auto kAdd>
void add(Fault &fault) {
  const List list(strptrlist_new());
  for (int i = 0; i < 31; ++i) {
    strptrlist_add(list.get(), "m");
  }
  const int32_t result = fault.during([&] { return kAdd(list.get()); });
  EXPECT_TRUE(result == 0 || (fault.struck() && result == -1)) << result;
  EXPECT_EQ(list->count, result == 0 ? 32U : 31U);
  for (int i = 0; i < 31; ++i) {
    EXPECT_STREQ(strptrlist_get(list.get(), i), "m");
  }
  EXPECT_EQ(kAdd(list.get()), 0);
  EXPECT_STREQ(strptrlist_get(list.get(), static_cast<int32_t>(list->count) - 1), "x");
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

constexpr FaultedCall kFaulted[] = {
    {"DLinkList_AppendItem", "BehindAnother", append_item},
    {"DLinkList_New", "Empty",
     make<[] { return DLinkList_New(nullptr); }, DLinkList_Delete,
          [](DLinkList *chain) {
            static int item = 0;
            EXPECT_NE(DLinkList_AppendItem(chain, &item), nullptr);
          }>},
    {"ZfxMemAlloc", "Small", allocate_block},
    {"ZfxMemAlloc", "Large", make<[] { return ZfxMemAlloc(100000); }, ZfxMemFree>},
    {"ZfxMemRealloc", "Growing", reallocate_block},
    {"ZfxStrDup", "Text",
     make<[] { return ZfxStrDup("abc"); }, ZfxMemFree, [](const char *copy) { EXPECT_STREQ(copy, "abc"); }>},
    {"ZfxStrDup", "Empty", make<[] { return ZfxStrDup(""); }, ZfxMemFree>},
    {"strbuf_append", "BeyondTheRoom",
     [](Fault &fault) {
       change(fault, "abc", std::string("abc") + kLong,
              [](strbuf *buffer) { return strbuf_append(buffer, kLong, -1); });
     }},
    {"strbuf_append", "OwnText",
     [](Fault &fault) {
       change(fault, kLong, std::string(kLong) + kLong,
              [](strbuf *buffer) { return strbuf_append(buffer, strbuf_get(buffer), -1); });
     }},
    {"strbuf_append", "ToABufferWithoutText", append_to_buffer_without_text},
    {"strbuf_append_format", "BeyondTheRoom", append_formatted},
    {"strbuf_clear", "OfABufferWithoutText", clear_buffer_without_text},
    {"strbuf_copy", "BeyondTheRoom", copy_buffer},
    {"strbuf_create", "WithAText", create_buffer},
    {"strbuf_detach", "AndStartAgain", detach_text},
    {"strbuf_format", "BeyondTheRoom", format_text},
    {"strbuf_getBufferSetLength", "Larger", borrow_area},
    {"strbuf_insert", "BeyondTheRoom",
     [](Fault &fault) {
       change(fault, "abc", std::string("a") + kLong + "bc",
              [](strbuf *buffer) { strbuf_insert(buffer, kLong, -1, 1); });
     }},
    {"strbuf_insert", "OwnText",
     [](Fault &fault) {
       change(fault, "abc", "aabcbc",
              [](strbuf *buffer) { strbuf_insert(buffer, strbuf_get(buffer), -1, 1); });
     }},
    {"strbuf_releaseBuffer", "BeyondTheRoom", take_over_area},
    {"strbuf_reserve", "Much", reserve_room},
    {"strbuf_set_str", "BeyondTheRoom",
     [](Fault &fault) {
       change(fault, "abc", kLong, [](strbuf *buffer) { return strbuf_set_str(buffer, kLong, -1); });
     }},
    {"strptrlist_add", "BeyondTheSlots", add<[](strptrlist *list) { return strptrlist_add(list, "x"); }>},
    {"strptrlist_add_sorted", "BeyondTheSlots",
     add<[](strptrlist *list) { return strptrlist_add_sorted(list, "x"); }>},
    {"strptrlist_ensuresize", "Much", grow_list},
    {"strptrlist_ladd", "BeyondTheSlots",
     add<[](strptrlist *list) { return strptrlist_ladd(list, "xy", 1); }>},
    {"strptrlist_new", "Empty",
     make<strptrlist_new, strptrlist_delete,
          [](strptrlist *list) { EXPECT_EQ(strptrlist_add(list, "usable"), 0); }>},
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
