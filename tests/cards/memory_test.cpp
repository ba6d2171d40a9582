// Cards when memory runs out.

#include <gtest/gtest.h>

#include "tests/support/failing_memory.h"
#include "tests/support/mem_bytes.h"
#include "zolt41/cards/card_prefs.h"
#include "zolt41/cards/property_format.h"
#include "zolt41/cards/property_storage.h"

namespace zolt::testing {
namespace {

TEST(CardMemoryTest, AWriteIntoAStoreIsLostAndHarmsNothing) {
  std::string const cut(40, 'n');
  TYUserPrefs store(PrefLevelCard, nullptr, 0);
  store.SetStr(7, cut.c_str(), "first");
  std::string const before = Taken(store.GetData());
  store.SetModified(0);
  int failures = 0;
  for (; failures < 100; failures++) {
    WithMemoryFor(failures, [&] { return store.SetStr(7, cut.c_str(), "second"), 0; });
    if (store.GetModified() != 0) break;
    EXPECT_EQ(store.Count(), 1);
    EXPECT_EQ(Taken(store.GetData()), before);
  }
  EXPECT_GT(failures, 0);
  EXPECT_EQ(store.Count(), 2);
  std::string const stored = cut.substr(0, 31);
  WithMemoryFor(0, [&] {
    while (store.Count() > 0) store.Remove(7, stored.c_str());
    return 0;
  });
  EXPECT_EQ(store.Count(), 0);
}

TEST(CardMemoryTest, APropertyOutOfTheListItselfIsAddedWholeOrNot) {
  PCardStorage card;
  std::string const name(100, 'n');
  card.AddProp(name.c_str(), PropertyAscii, 0, "a value that is longer than what fits in place",
               47);
  std::string const before = Taken(card.Get());
  char *inList = nullptr;
  char *const value = card.GetPropA(0, nullptr, nullptr, nullptr, &inList);
  EXPECT_EQ(WithMemoryFor(0, [&] { return card.AddProp(inList, 0, 0, value, 47); }), 0xFFFFFFFFU);
  EXPECT_EQ(WithMemoryFor(0, [&] { return card.SetPropA(0, inList, 0, 0, value, 47); }), 0);
  WithMemoryFor(0, [&] { return card.SetStrProp(inList, 0, 0, "x"), 0; });
  EXPECT_EQ(Taken(card.Get()), before);
}

// What has no memory gives its failure, and all is as it was.
TEST(CardMemoryTest, AStoreIsReadClearedAndFilledWholeOrNot) {
  TYUserPrefs store(PrefLevelCard, nullptr, 0);
  store.SetStr(7, "a", std::string(300, 'l').c_str());
  store.SetStr(7, "b", "short");
  store.SetModified(0);
  std::string const before = Taken(store.GetData());
  std::string buffer = "before" + std::string(400, '-');
  EXPECT_EQ(WithMemoryFor(0, [&] { return store.GetStr(7, "a", buffer.data()); }), 0);
  EXPECT_EQ(buffer.substr(0, 7), "before-");
  WithMemoryFor(0, [&] { return store.Clear(), 0; });
  EXPECT_EQ(store.GetModified(), 0);
  EXPECT_EQ(Taken(store.GetData()), before);
  // The slots exchanged: that they are sorted takes memory, too.
  std::string const unsorted =
      before.substr(0, 8) + before.substr(52, 44) + before.substr(8, 44) + before.substr(96);
  TYUserPrefs other(PrefLevelCard, nullptr, 0);
  int failures = 0;
  for (; other.Count() == 0 && failures < 100; failures++) {
    WithMemoryFor(failures, [&] {
      return other.SetData(unsorted.data(), static_cast<uint32_t>(unsorted.size())), 0;
    });
  }
  EXPECT_GT(failures, 3);
  EXPECT_EQ(Taken(other.GetData()), before);
}

TEST(CardMemoryTest, AListIsReplacedWholeOrNot) {
  PCardStorage old;
  for (char const *name : {"A", "B", "C"}) old.AddProp(name, PropertyAscii, 0, "v", 2);
  PCardStorage card;
  card.AddProp("OLD", PropertyAscii, 0, "v", 2);
  std::string const before = Taken(card.Get());
  std::string const wanted = Taken(old.Get());
  int failures = 0;
  for (; card.Modified() != 0 && failures < 100; failures++) {
    EXPECT_EQ(Taken(card.Get()), before);
    WithMemoryFor(failures,
                  [&] { return card.Set(wanted.data(), static_cast<int32_t>(wanted.size())), 0; });
  }
  EXPECT_EQ(failures, 3);
  EXPECT_EQ(Taken(card.Get()), wanted);
}

}  // namespace
}  // namespace zolt::testing
