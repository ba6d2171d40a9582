#include <tuple>

#include "tests/prefs/prefs_fixture.h"

namespace zolt::testing {
namespace {

class SectionsTest : public PrefsTest {
 protected:
  WinPrefs &user = *GetUserPrefs();
};

TEST_F(SectionsTest, TheNewestOfAnIdIsFoundAndAnOlderOneShowsAgain) {
  uintptr_t const first = user.RegisterSection(7, "First");
  uintptr_t const second = user.RegisterSection(7, "Second");
  uintptr_t const third = user.RegisterSection(7, "Third");
  EXPECT_STREQ(user.SectionName(0, first), "First");
  user.UnRegisterSection(7, second);  // out of order
  EXPECT_STREQ(user.SectionName(7, 0), "Third");
  user.UnRegisterSection(0, third);  // the record counts, not the id
  EXPECT_STREQ(user.SectionName(7, 0), "First");
  user.UnRegisterSection(7, third);  // gone already
  user.UnRegisterSection(7, 0);
  EXPECT_EQ(user.GetSectionFromID(7), nullptr);
}

TEST_F(SectionsTest, EveryStoreHasItsTreeAndItsBits) {
  int32_t const id = user.GetIDFromString("Private", SectionNameHash("Chat"));
  ASSERT_NE(user.RegisterSection("Private", SectionNameHash("Chat")), 0U);
  std::tuple<TYPrefs *, HKEY, char const *, int32_t> const rows[] = {
      {UserPrefs(), HKEY_CURRENT_USER, "5.0", 0x01},
      {SharedUserPrefs(), HKEY_CURRENT_USER, "Shared", 0x04},
      {SystemPrefs(), HKEY_LOCAL_MACHINE, "5.0", 0x10},
      {SharedSystemPrefs(), HKEY_LOCAL_MACHINE, "Shared", 0x40}};
  for (auto const &[store, root, tree, readable] : rows)
    store->WriteNum(static_cast<uint32_t>(id), "n", readable, PrefLevelThis);
  for (auto const &[store, root, tree, readable] : rows) {
    std::string const path = std::string("Software\\Veltrane\\Tessaly\\") + tree;
    EXPECT_EQ(Raw(root, path + "\\Conferencing\\Chat\\Private", "n"), std::to_string(readable));
    EXPECT_EQ(store->IsReadable(kSection), readable);
    EXPECT_EQ(store->IsWritable(kSection), readable * 2);
    EXPECT_EQ(store->IsReadable(0), 0);
  }
}

TEST_F(SectionsTest, AnIdIsAHashOfTheNamesNearestParentFirst) {
  std::tuple<std::string, int32_t, uint32_t> const rows[] = {
      {"CHAT", 0, 0x44148435},
      {"cab", 0, 0x42414300},
      {"Caf\xE9", 0, 0x9464143C},
      {std::string(260, 'a'), 0, 0x14141414},
      {"Private", SectionNameHash("Chat"), 0xF1DA71FC}};
  for (auto const &[name, parent, id] : rows)
    EXPECT_EQ(static_cast<uint32_t>(user.GetIDFromString(name.c_str(), parent)), id);
  EXPECT_EQ(user.RegisterSection("Private", 12345), 0U);
  // A section under its own id is its own ancestor; names fill the buffer or never do.
  user.RegisterSection(kAudio, kAudio, "Audio", 0);
  std::string repeated;
  while (repeated.size() < 519) repeated += "Audio";
  EXPECT_EQ(user.GetIDFromString("x", kAudio), SectionNameHash(repeated.substr(0, 519).c_str()));
  user.RegisterSection(99, 99, "", user.RegisterSection(98, ""));
  EXPECT_EQ(user.GetIDFromString("x", 99), SectionNameHash("x"));
}

TEST_F(SectionsTest, NamesAreKeptTo63CharactersButKeysBearThemWhole) {
  std::string const name = std::string(62, 'n') + "\xE9 and more";
  uintptr_t const record = user.RegisterSection(name.c_str());
  EXPECT_EQ(user.SectionName(0, record), name.substr(0, 63));
  EXPECT_EQ(user.SectionID((std::string(62, 'N') + "\xE9").c_str(), 0),
            SectionNameHash(name.c_str()));
  EXPECT_EQ(user.SectionID((std::string(62, 'n') + "i").c_str(), 0), -1);  // all 8 bits count
  EXPECT_EQ(InUserTree(name, ""), "no value");
  EXPECT_NE(user.RegisterSection(5, std::string(256, 'k').c_str()), 0U);  // no key has such a name
  EXPECT_EQ(user.IsReadable(5) + user.IsWritable(5), 0);
  user.SetStr(5, "n", "v");
}

TEST_F(SectionsTest, AKeyLeadsBackToItsSection) {
  EXPECT_EQ(KeySection(user.SectionKey(kAudio, 0), 0), kAudio);
  EXPECT_EQ(KeySection(user.SectionKey(kAudio, 0), 1), 0);
  EXPECT_EQ(KeySection(user.SectionKey(0, 0), 0), 0);
  for (int32_t const system : {0, 1}) {
    EXPECT_EQ(KeySection("software:VELTRANE\\Tessaly:5.0:Conferencing\\Audio", system, 0), kAudio);
    EXPECT_EQ(KeySection("Software:Veltrane:Tessaly:Shared:General", system, 0), kGeneral);
    EXPECT_EQ(KeySection("Software:Veltrane:Tessaly:5.0", system, 0), 0);
    EXPECT_EQ(KeySection(nullptr, system, 0), 0);
    EXPECT_EQ(KeySection(std::string(1000, ':').c_str(), system, 0), 0);
  }
}

}  // namespace
}  // namespace zolt::testing
