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

}  // namespace
}  // namespace zolt::testing
