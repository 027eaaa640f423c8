#include "dllist.h"

#include <gtest/gtest.h>

#include <iterator>
#include <list>
#include <memory>
#include <random>
#include <vector>

namespace {

std::vector<int *> destroyed;

int32_t record(void *item) {
  destroyed.push_back(static_cast<int *>(item));
  return 100 + *static_cast<int *>(item);
}

struct Delete {
  void operator()(DLinkList *list) const { DLinkList_Delete(list); }
};
using List = std::unique_ptr<DLinkList, Delete>;

// The items from head to tail, after checking that the way back is the same.
std::vector<void *> items_of(const List &list) {
  std::vector<void *> items;
  const DLinkListLink *before = nullptr;
  for (const DLinkListLink *link = list->head; link != nullptr; link = link->next) {
    EXPECT_EQ(link->previous, before);
    items.push_back(link->item);
    before = link;
  }
  EXPECT_EQ(list->tail, before);
  return items;
}

class DLinkListTest : public ::testing::Test {
 protected:
  void SetUp() override { destroyed.clear(); }

  int a = 1;
  int b = 2;
  int c = 3;
  List list{DLinkList_New(record)};
  DLinkListLink *first = DLinkList_AppendItem(list.get(), &a);
  DLinkListLink *second = DLinkList_AppendItem(list.get(), &b);
  DLinkListLink *third = DLinkList_AppendItem(list.get(), &c);
};

TEST(DLinkListNew, GivesAnEmptyListThatHoldsTheCallback) {
  const List list(DLinkList_New(record));
  EXPECT_EQ(list->destroy, &record);
  EXPECT_EQ(list->head, nullptr);
  EXPECT_EQ(list->tail, nullptr);
}

TEST_F(DLinkListTest, AppendsAtTheTail) {
  EXPECT_EQ(items_of(list), (std::vector<void *>{&a, &b, &c}));
  EXPECT_EQ(list->head, first);
  EXPECT_EQ(list->tail, third);
}

TEST_F(DLinkListTest, DeleteCallsTheCallbackOnEveryItemButNullFromHeadToTail) {
  DLinkList_AppendItem(list.get(), nullptr);
  list.reset();
  EXPECT_EQ(destroyed, (std::vector<int *>{&a, &b, &c}));
}

TEST_F(DLinkListTest, DeleteWithoutACallbackReleasesOnlyLinks) {
  List plain(DLinkList_New(nullptr));
  DLinkList_AppendItem(plain.get(), &a);
  plain.reset();
  EXPECT_TRUE(destroyed.empty());
}

TEST_F(DLinkListTest, RemoveLinkReturnsTheNeighbourOfTheDirection) {
  EXPECT_EQ(DLinkList_RemoveLink(list.get(), second, 1), first);
  second = DLinkList_AppendItem(list.get(), &b);
  EXPECT_EQ(DLinkList_RemoveLink(list.get(), third, 2), second);
  EXPECT_EQ(destroyed, (std::vector<int *>{&b, &c}));
}

TEST_F(DLinkListTest, RemoveLinkReturnsNullForOtherDirections) {
  EXPECT_EQ(DLinkList_RemoveLink(list.get(), second, 0), nullptr);
  EXPECT_EQ(DLinkList_RemoveLink(list.get(), third, 3), nullptr);
  EXPECT_EQ(DLinkList_RemoveLink(list.get(), first, -1), nullptr);
  EXPECT_EQ(list->head, nullptr);
}

TEST_F(DLinkListTest, RemoveLinkOfTheTailLeavesANewTail) {
  EXPECT_EQ(DLinkList_RemoveLink(list.get(), third, 2), nullptr);
  EXPECT_EQ(list->tail, second);
  EXPECT_EQ(second->next, nullptr);
}

TEST_F(DLinkListTest, RemoveLinkOfTheHeadLeavesANewHead) {
  EXPECT_EQ(DLinkList_RemoveLink(list.get(), first, 1), nullptr);
  EXPECT_EQ(list->head, second);
  EXPECT_EQ(second->previous, nullptr);
}

TEST_F(DLinkListTest, RemoveLinkEmptiesAListWhileIterating) {
  for (DLinkListLink *link = list->head; link != nullptr;) {
    link = DLinkList_RemoveLink(list.get(), link, DLINKLIST_NEXT);
  }
  EXPECT_EQ(list->head, nullptr);
  EXPECT_EQ(list->tail, nullptr);
  EXPECT_EQ(destroyed.size(), 3U);
}

TEST_F(DLinkListTest, RemoveItemGivesTheItemBackWithoutTheCallback) {
  EXPECT_EQ(DLinkList_RemoveItem(list.get(), first), &a);
  EXPECT_EQ(DLinkList_RemoveItem(list.get(), third), &c);
  EXPECT_TRUE(destroyed.empty());
  EXPECT_EQ(items_of(list), (std::vector<void *>{&b}));
}

TEST_F(DLinkListTest, DeleteItemReturnsTheCallbacksResult) {
  EXPECT_EQ(DLinkList_DeleteItem(list.get(), second), 102);
  EXPECT_EQ(destroyed, (std::vector<int *>{&b}));
  EXPECT_EQ(items_of(list), (std::vector<void *>{&a, &c}));
}

TEST_F(DLinkListTest, DeleteItemReturnsZeroWithoutAnItemOrACallback) {
  EXPECT_EQ(DLinkList_DeleteItem(list.get(), DLinkList_AppendItem(list.get(), nullptr)), 0);
  const List plain(DLinkList_New(nullptr));
  DLinkList_AppendItem(plain.get(), &a);
  EXPECT_EQ(DLinkList_DeleteItem(plain.get(), DLinkList_AppendItem(plain.get(), &b)), 0);
  EXPECT_TRUE(destroyed.empty());
}

TEST_F(DLinkListTest, RemovingTheOnlyLinkLeavesAnEmptyUsableList) {
  const List single(DLinkList_New(record));
  EXPECT_EQ(DLinkList_RemoveItem(single.get(), DLinkList_AppendItem(single.get(), &a)), &a);
  EXPECT_TRUE(items_of(single).empty());
  EXPECT_EQ(DLinkList_DeleteItem(single.get(), DLinkList_AppendItem(single.get(), &b)), 102);
  EXPECT_TRUE(items_of(single).empty());
  DLinkList_AppendItem(single.get(), &c);
  EXPECT_EQ(items_of(single), (std::vector<void *>{&c}));
}

TEST_F(DLinkListTest, AcceptsNullListsAndLinks) {
  DLinkList_Delete(nullptr);
  EXPECT_EQ(DLinkList_AppendItem(nullptr, &a), nullptr);
  EXPECT_EQ(DLinkList_RemoveLink(list.get(), nullptr, 1), nullptr);
  EXPECT_EQ(DLinkList_RemoveLink(nullptr, first, 1), nullptr);
  EXPECT_EQ(DLinkList_RemoveItem(list.get(), nullptr), nullptr);
  EXPECT_EQ(DLinkList_RemoveItem(nullptr, first), nullptr);
  EXPECT_EQ(DLinkList_DeleteItem(list.get(), nullptr), 0);
  EXPECT_EQ(DLinkList_DeleteItem(nullptr, first), 0);
  EXPECT_EQ(items_of(list), (std::vector<void *>{&a, &b, &c}));
}

TEST(DLinkList, AgreesWithAPlainListOverRandomScripts) {
  std::mt19937 random(20261121);
  std::vector<int> pool(50);
  for (int script = 0; script < 300; ++script) {
    const List list(DLinkList_New(record));
    std::list<DLinkListLink *> plain;
    for (int operation = 0; operation < 100; ++operation) {
      if (plain.empty() || random() % 3 != 0) {
        plain.push_back(DLinkList_AppendItem(list.get(), &pool[random() % pool.size()]));
        continue;
      }
      const auto place = std::next(plain.begin(), static_cast<long>(random() % plain.size()));
      DLinkListLink *previous = place == plain.begin() ? nullptr : *std::prev(place);
      DLinkListLink *next = std::next(place) == plain.end() ? nullptr : *std::next(place);
      switch (random() % 4) {
        case 0:
          ASSERT_EQ(DLinkList_RemoveLink(list.get(), *place, 1), previous);
          break;
        case 1:
          ASSERT_EQ(DLinkList_RemoveLink(list.get(), *place, 2), next);
          break;
        case 2:
          DLinkList_RemoveItem(list.get(), *place);
          break;
        default:
          DLinkList_DeleteItem(list.get(), *place);
          break;
      }
      plain.erase(place);
    }
    std::vector<void *> expected;
    for (const DLinkListLink *link : plain)
      expected.push_back(link->item);
    ASSERT_EQ(items_of(list), expected);
  }
}

}  // namespace
