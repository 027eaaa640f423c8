#include "strptrlist.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "failing_allocator.hpp"

namespace {

struct Delete {
  void operator()(strptrlist *list) const { strptrlist_delete(list); }
};
using List = std::unique_ptr<strptrlist, Delete>;
using Texts = std::vector<std::string>;

List make() {
  return List(strptrlist_new());
}

Texts texts_of(const List &list) {
  return {list->items, list->items + list->count};
}

List sorted_list(const Texts &texts) {
  List list = make();
  for (const std::string &text : texts) {
    EXPECT_EQ(strptrlist_add_sorted(list.get(), text.c_str()), 0);
  }
  return list;
}

TEST(StrptrlistNew, GivesAnEmptyListWith32Slots) {
  const List list = make();
  EXPECT_EQ(list->count, 0U);
  EXPECT_EQ(list->capacity, 32U);
}

TEST(StrptrlistEnsuresize, GrowsByTheWantedSizeRoundedDownPlus32) {
  const List list = make();
  const std::pair<uint64_t, uint64_t> steps[] = {{0, 32},  {31, 32},  {32, 96},
                                                 {95, 96}, {96, 224}, {500, 224 + 480 + 32}};
  for (const auto &[wanted, capacity] : steps) {
    EXPECT_EQ(strptrlist_ensuresize(list.get(), wanted), 0);
    EXPECT_EQ(list->capacity, capacity) << wanted;
  }
}

TEST(StrptrlistEnsuresize, RefusesWhatNoMemoryHoldsAndLeavesTheListAlone) {
  const List list = make();
  strptrlist_add(list.get(), "a");
  for (const uint64_t wanted : {UINT64_MAX, UINT64_MAX - 31, UINT64_MAX - 64, UINT64_MAX / 8,
                                UINT64_MAX / 8 - 64, uint64_t{1} << 60}) {
    EXPECT_EQ(strptrlist_ensuresize(list.get(), wanted), -1) << wanted;
  }
  EXPECT_EQ(list->capacity, 32U);
  EXPECT_EQ(texts_of(list), (Texts{"a"}));
  EXPECT_EQ(strptrlist_ensuresize(nullptr, 1), -1);
}

TEST(StrptrlistAdd, RefusesWithoutAList) {
  EXPECT_EQ(strptrlist_add(nullptr, "x"), -1);
  EXPECT_EQ(strptrlist_ladd(nullptr, "x", 1), -1);
  EXPECT_EQ(strptrlist_add_sorted(nullptr, "x"), -1);
  EXPECT_EQ(strptrlist_find_sorted(nullptr, "x"), -1);
}

TEST(StrptrlistAdd, GrowsAsSoonAsTheNewCountReachesTheCapacity) {
  const List list = make();
  for (int i = 1; i <= 96; ++i) {
    strptrlist_add(list.get(), "x");
    EXPECT_EQ(list->capacity, i < 32 ? 32U : i < 96 ? 96U : 224U) << i;
  }
}

TEST(StrptrlistAdd, KeepsACopyOfItsOwn) {
  char text[] = "abc";
  const List list = make();
  EXPECT_EQ(strptrlist_add(list.get(), text), 0);
  text[0] = 'X';
  EXPECT_EQ(texts_of(list), (Texts{"abc"}));
}

TEST(StrptrlistAdd, TakesNullAsAnEmptyText) {
  const List list = make();
  EXPECT_EQ(strptrlist_add(list.get(), nullptr), 0);
  EXPECT_EQ(strptrlist_add_sorted(list.get(), nullptr), 0);
  EXPECT_EQ(texts_of(list), (Texts{"", ""}));
}

TEST(StrptrlistLadd, CopiesTheGivenNumberOfBytesAndTerminates) {
  const List list = make();
  EXPECT_EQ(strptrlist_ladd(list.get(), "abcdef", 3), 0);
  EXPECT_EQ(strptrlist_ladd(list.get(), "abcdef", 0), 0);
  EXPECT_EQ(strptrlist_ladd(list.get(), nullptr, 2), 0);
  EXPECT_EQ(texts_of(list), (Texts{"abc", "", ""}));
  EXPECT_EQ(std::memcmp(list->items[2], "\0\0\0", 3), 0);
}

TEST(StrptrlistLadd, RefusesALengthThatNoMemoryHolds) {
  const List list = make();
  EXPECT_EQ(strptrlist_ladd(list.get(), "abc", UINT64_MAX), -1);
  EXPECT_EQ(strptrlist_ladd(list.get(), "abc", UINT64_MAX / 2), -1);
  EXPECT_EQ(list->count, 0U);
}

TEST(StrptrlistGet, GivesNullOutsideTheList) {
  const List list = make();
  strptrlist_add(list.get(), "a");
  EXPECT_STREQ(strptrlist_get(list.get(), 0), "a");
  for (const int32_t index : {-1, 1, INT_MAX, INT_MIN}) {
    EXPECT_EQ(strptrlist_get(list.get(), index), nullptr) << index;
  }
  EXPECT_EQ(strptrlist_get(nullptr, 0), nullptr);
}

TEST(StrptrlistAddSorted, KeepsAscendingOrderAndDuplicates) {
  const List list = sorted_list({"b", "a", "c"});
  EXPECT_EQ(texts_of(list), (Texts{"a", "b", "c"}));
  strptrlist_add_sorted(list.get(), "b");
  EXPECT_EQ(texts_of(list), (Texts{"a", "b", "b", "c"}));
  EXPECT_EQ(strptrlist_find_sorted(list.get(), "d"), -1);
}

TEST(StrptrlistAddSorted, OrdersBytesUnsignedAsStrcmpDoes) {
  EXPECT_EQ(texts_of(sorted_list({"\xE9", "a", "Z", ""})), (Texts{"", "Z", "a", "\xE9"}));
}

TEST(StrptrlistAddSorted, GoesInFrontOfTheEqualTextThatTheSearchMeets) {
  const List list = sorted_list({"a", "b", "b", "c"});
  const char *met = list->items[2];  // the middle of four
  strptrlist_add_sorted(list.get(), "b");
  EXPECT_EQ(list->items[3], met);
}

TEST(StrptrlistAddSorted, GrowsTheSlotsAsAddDoes) {
  const List list = make();
  for (int i = 1; i <= 32; ++i) {
    strptrlist_add_sorted(list.get(), std::to_string(i).c_str());
    EXPECT_EQ(list->capacity, i < 32 ? 32U : 96U) << i;
  }
}

TEST(StrptrlistFindSorted, FindsEveryTextAndNoOther) {
  for (std::size_t count = 0; count < 70; ++count) {
    Texts texts;
    for (std::size_t i = 0; i < count; ++i)
      texts.push_back(std::string(1, static_cast<char>(' ' + i)) + "x");
    const List list = sorted_list(texts);
    for (std::size_t i = 0; i < count; ++i) {
      EXPECT_EQ(strptrlist_find_sorted(list.get(), texts[i].c_str()), static_cast<int32_t>(i));
      EXPECT_EQ(strptrlist_find_sorted(list.get(), (texts[i] + "y").c_str()), -1);
    }
    EXPECT_EQ(strptrlist_find_sorted(list.get(), ""), -1);
    EXPECT_EQ(strptrlist_find_sorted(list.get(), nullptr), -1);
  }
  EXPECT_EQ(strptrlist_find_sorted(nullptr, "a"), -1);
}

TEST(StrptrlistRemoveAt, MovesTheLaterTextsDownAndClearsTheFreedSlot) {
  const List list = make();
  for (const char *text : {"a", "b", "c"})
    strptrlist_add(list.get(), text);
  EXPECT_EQ(strptrlist_remove_at(list.get(), 1), 0);
  EXPECT_EQ(texts_of(list), (Texts{"a", "c"}));
  EXPECT_EQ(list->items[2], nullptr);
  for (const int32_t index : {-1, 2, INT_MAX, INT_MIN}) {
    EXPECT_EQ(strptrlist_remove_at(list.get(), index), -1) << index;
  }
  EXPECT_EQ(strptrlist_remove_at(nullptr, 0), -1);
  EXPECT_EQ(strptrlist_remove_at(list.get(), 1), 0);
  EXPECT_EQ(strptrlist_remove_at(list.get(), 0), 0);
  EXPECT_EQ(list->count, 0U);
}

TEST(StrptrlistClear, ReleasesTheTextsAndKeepsTheSlots) {
  const List list = make();
  for (int i = 0; i < 40; ++i)
    strptrlist_add(list.get(), "x");
  char **slots = list->items;
  strptrlist_clear(list.get());
  EXPECT_EQ(list->count, 0U);
  EXPECT_EQ(list->capacity, 96U);
  EXPECT_EQ(list->items[0], nullptr);
  EXPECT_EQ(list->items[39], nullptr);
  strptrlist_add(list.get(), "again");
  EXPECT_EQ(list->items, slots);
  EXPECT_EQ(texts_of(list), (Texts{"again"}));
}

TEST(Strptrlist, AcceptsNullListsEverywhere) {
  strptrlist_clear(nullptr);
  strptrlist_delete(nullptr);
  EXPECT_EQ(strptrlist_add(nullptr, "a"), -1);
  EXPECT_EQ(strptrlist_ladd(nullptr, "a", 1), -1);
  EXPECT_EQ(strptrlist_add_sorted(nullptr, "a"), -1);
}

// The place that the stated search gives a text, on plain numbers.
long plain_place(const Texts &texts, const std::string &text) {
  const long count = static_cast<long>(texts.size());
  if (count == 0) return 0;
  long lo = 0;
  long hi = count - 1;
  long mid = count / 2;
  while (count > 1) {
    const int order = text.compare(texts[static_cast<std::size_t>(mid)]);
    if (order == 0) return mid;
    if (order < 0 && mid == 0) {
      mid = (lo + 1) / 2;
      break;
    }
    if (order < 0) hi = mid - 1;
    if (order > 0) lo = std::min(mid + 1, count - 1);
    mid = (lo + hi + 1) / 2;
    if (lo >= hi) break;
  }
  return text <= texts[static_cast<std::size_t>(mid)] ? mid : mid + 1;
}

TEST(Strptrlist, AgreesWithAPlainVectorOverRandomScripts) {
  std::mt19937 random(20261121);
  for (int script = 0; script < 200; ++script) {
    const List list = make();
    Texts plain;
    std::vector<const char *> slots;
    for (int operation = 0; operation < 150; ++operation) {
      const std::string text(1 + random() % 2, static_cast<char>('a' + random() % 8));
      if (random() % 4 != 0 || plain.empty()) {
        const long place = plain_place(plain, text);
        ASSERT_EQ(strptrlist_add_sorted(list.get(), text.c_str()), 0);
        plain.insert(plain.begin() + place, text);
        slots.insert(slots.begin() + place, list->items[place]);
      } else {
        const auto index = static_cast<long>(random() % plain.size());
        ASSERT_EQ(strptrlist_remove_at(list.get(), static_cast<int32_t>(index)), 0);
        plain.erase(plain.begin() + index);
        slots.erase(slots.begin() + index);
      }
      ASSERT_EQ(texts_of(list), plain);
      ASSERT_TRUE(std::is_sorted(plain.begin(), plain.end()));
      ASSERT_EQ((std::vector<const char *>(list->items, list->items + list->count)), slots);
    }
  }
}

TEST(Strptrlist, AgreesWithAPlainVectorInALongSortedList) {
  std::mt19937 random(20261121);
  const List list = make();
  for (const std::size_t count : {5000U, 700U}) {  // the second time in the slots that the first one has left
    Texts plain;
    while (plain.size() < count) {
      const std::string text = std::to_string(random() % 10000);
      const long place = plain_place(plain, text);
      ASSERT_EQ(strptrlist_add_sorted(list.get(), text.c_str()), 0);
      plain.insert(plain.begin() + place, text);
      ASSERT_EQ(list->items[place], text);
      ASSERT_GT(list->capacity, list->count);
      list->items[list->capacity - 1] = nullptr;  // a slot of the list's own, whatever moves
      if (random() % 8 == 0) {
        const auto index = static_cast<long>(random() % plain.size());
        ASSERT_EQ(strptrlist_remove_at(list.get(), static_cast<int32_t>(index)), 0);
        plain.erase(plain.begin() + index);
      }
    }
    ASSERT_EQ(texts_of(list), plain);
    for (const std::string &text : plain) {
      const int32_t found = strptrlist_find_sorted(list.get(), text.c_str());
      ASSERT_EQ(strptrlist_get(list.get(), found), text);
    }
    strptrlist_clear(list.get());
  }
}

TEST(StrptrlistAddSorted, LeavesTheListAsItIsWhenMemoryIsShort) {
  const List list = make();
  Texts plain;
  for (int i = 0; i < 400; ++i) {
    const std::string text = std::to_string((i * 7919) % 1000 + 1000);
    support::FailingAllocator failing(1, true);
    EXPECT_EQ(strptrlist_add_sorted(list.get(), text.c_str()), -1);
    EXPECT_TRUE(failing.stop());
    ASSERT_EQ(texts_of(list), plain);
    ASSERT_EQ(strptrlist_add_sorted(list.get(), text.c_str()), 0);
    plain.insert(std::lower_bound(plain.begin(), plain.end(), text), text);
    ASSERT_EQ(texts_of(list), plain);
  }
}

TEST(StrptrlistAddSorted, GrowsWithoutSlotsInFrontWhenMemoryIsShort) {
  const List list = make();
  Texts plain;
  for (int i = 0; i < 400; ++i) {
    const std::string text = std::to_string(2000 - i);
    if (list->count != 0 && list->capacity <= list->count + 1) {
      support::FailingAllocator failing(1);  // the larger block alone
      EXPECT_EQ(strptrlist_add_sorted(list.get(), text.c_str()), 0);
      EXPECT_TRUE(failing.stop());
    } else {
      EXPECT_EQ(strptrlist_add_sorted(list.get(), text.c_str()), 0);
    }
    plain.insert(plain.begin(), text);
    ASSERT_EQ(texts_of(list), plain);
  }
}

}  // namespace
