#include "zolt41/foundation/zoltx_list.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace {

// An item is known by a letter.
char letters[] = "abcdefgh";

std::string Items(ZOLTXList const &list) {
  std::string items;
  for (uint32_t i = 0; i < list.Count(); i++) items += *static_cast<char *>(list.GetItem(i));
  return items;
}

// The capacity is the first field, behind the table of virtual operations.
uint32_t CapacityOf(ZOLTXList const &list) {
  return reinterpret_cast<uint32_t const *>(&list)[sizeof(void *) / sizeof(uint32_t)];
}

TEST(ZOLTXList, InsertsAndRemovesInOrder) {
  ZOLTXList list;
  EXPECT_FALSE(list.RemoveFirstItem());
  EXPECT_EQ(list.IndexOf(nullptr), ZOLTXList::kNone);
  for (uint32_t i = 0; i < 3; i++) EXPECT_EQ(list.AddItem(letters + i), i);
  EXPECT_EQ(list.InsertItem(letters + 3, 0), 0U);
  EXPECT_EQ(list.InsertItem(letters + 1, 99), 4U);
  EXPECT_EQ(list.InsertItem(letters + 4, 4), 4U);
  EXPECT_EQ(Items(list), "dabceb");
  EXPECT_FALSE(list.RemoveItemByValue(letters + 5));
  EXPECT_FALSE(list.RemoveItem(6));
  EXPECT_TRUE(list.RemoveItemByValue(letters + 1));
  EXPECT_TRUE(list.RemoveFirstItem());
  EXPECT_TRUE(list.RemoveItem(3));
  EXPECT_EQ(Items(list), "ace");
}

TEST(ZOLTXList, WalksBackAndSearchesForward) {
  struct Walk {
    ZOLTXList list;
    std::string met;
  } walk;
  for (int i = 0; i < 8; i++) walk.list.AddItem(letters + i);
  auto const removeAfterB = [](void const *item, void *context) {
    auto *const self = static_cast<Walk *>(context);
    self->met += *static_cast<char const *>(item);
    if (self->met.back() > 'b') self->list.RemoveItemByValue(item);
  };
  walk.list.DoForEach(removeAfterB, &walk);
  EXPECT_EQ(walk.met, "hgfedcba");
  EXPECT_EQ(Items(walk.list), "ab");
  auto const isNot = [](void const *item, void *other) { return item != other; };
  EXPECT_EQ(walk.list.FindItem(isNot, letters), 1U);
  walk.list.RemoveItem(1);
  EXPECT_EQ(walk.list.FindItem(isNot, letters), ZOLTXList::kNone);
}

TEST(ZOLTXList, GrowsByTheStatedSteps) {
  std::tuple<uint32_t, uint32_t, uint32_t> const cases[] = {
      {0, 1, 16}, {4, 5, 20}, {8, 9, 24}, {127, 142, 143}, {256, 288, 288}};
  for (auto const &[capacity, afterAdd, afterInsert] : cases) {
    ZOLTXList added(capacity);
    ZOLTXList inserted(capacity);
    for (uint32_t i = 0; i < capacity; i++) inserted.InsertItem(letters, added.AddItem(letters));
    EXPECT_EQ(CapacityOf(added), capacity);
    added.AddItem(letters);
    inserted.InsertItem(letters, 0);
    EXPECT_EQ(CapacityOf(inserted), afterInsert);
    added.Empty();
    EXPECT_EQ(CapacityOf(added), afterAdd);
  }
}

}  // namespace
