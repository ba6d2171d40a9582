#include "zolt41/library/pref_tree.h"

#include <thread>

#include "tests/prefs/prefs_fixture.h"
#include "zolt41/notify/channel_objects.h"

namespace zolt::testing {
namespace {

using PrefTreeTest = PrefsTest;

std::string Top(TYPrefs *store) {
  return Read(store, "top", 0, 0);
}

TEST_F(PrefTreeTest, OnlyTheTopKeysMove) {
  UserPrefs()->SetStr(0, "top", "first");
  SetPrefTree("Other:Tree");
  EXPECT_EQ(Top(UserPrefs()), "-");
  UserPrefs()->SetStr(0, "top", "other");
  EXPECT_EQ(Raw(HKEY_CURRENT_USER, "Other\\Tree", "top"), "other");
  EXPECT_EQ(Top(SharedUserPrefs()), "other");  // one path is one key for both
  RegisterPrefSection(601, "Late");
  UserPrefs()->SetStr(601, "n", "late");
  EXPECT_EQ(InUserTree("Late", "n"), "late");
  SetPrefTree(nullptr);
  EXPECT_EQ(Top(UserPrefs()), "first");
  ResetPrefTree();
  EXPECT_EQ(Top(UserPrefs()), "other");
  ResetPrefTree();
  EXPECT_EQ(Top(UserPrefs()), "first");
  ResetPrefTree();  // none is set
  EXPECT_EQ(Read(UserPrefs(), "n", 0, 601), "late");
  std::thread([] {
    EXPECT_EQ(WaitForSingleObject(ChannelMutex(), 0), WAIT_OBJECT_0);
    ReleaseMutex(ChannelMutex());
  }).join();
}

}  // namespace
}  // namespace zolt::testing
