#include "zolt41/prefs/enum_prefs.h"

#include "tests/prefs/prefs_fixture.h"

namespace zolt::testing {
namespace {

// "number name:type" for each entry from where the walk stands.
std::string Rest(CEnumPrefs *walk) {
  std::string entries;
  for (int32_t number; (number = walk->Next()) != -1;)
    entries +=
        std::to_string(number) + walk->GetName() + ":" + std::to_string(walk->GetType()) + " ";
  return entries;
}

using EnumPrefsTest = PrefsTest;

TEST_F(EnumPrefsTest, ValuesComeFirstThenSubkeys) {
  CEnumPrefs *const walk = UserPrefs()->GetEnum(0, 501, "Lists");
  EXPECT_EQ(walk->Next(), -1);
  EXPECT_EQ(walk->CreateKey("sub"), 1);
  EXPECT_EQ(walk->CreateKey("both"), 1);
  EXPECT_EQ(walk->CreateKey(std::string(300, 'k').c_str()), 0);
  walk->WriteStr("text", "t");
  walk->WriteFree("both", REG_BINARY, nullptr, 0);
  std::string const longest(259, 'n');
  walk->WriteNum(longest.c_str(), 7);
  std::string const all = "1text:1 2both:3 3" + longest + ":1 4sub:10000 5both:3 ";
  walk->Reset();
  EXPECT_EQ(Rest(walk), all);
  walk->CreateKey("late");
  EXPECT_EQ(Rest(walk), "6late:10000 ");
  walk->Release();
}

TEST_F(EnumPrefsTest, TheEntryItStandsOnIsReadWrittenAndRemoved) {
  CEnumPrefs *const walk = UserPrefs()->GetEnum(0, 501, "Lists");
  for (char const *name : {"a", "b", "c"}) walk->WriteStr(name, "0x20");
  walk->Next();
  int32_t number = 0;
  walk->ReadNum(&number, 0);
  EXPECT_EQ(number, 32);
  walk->RemoveValue();
  walk->Next();  // the second of those left
  walk->WriteBool(1);
  EXPECT_EQ(Read(UserPrefs(), "c", 0, 501), "Yes");
  walk->Reset();
  EXPECT_EQ(Rest(walk), "1b:1 2c:1 ");
  walk->Release();
}

TEST_F(EnumPrefsTest, SectionsStayRegisteredAsTheyWere) {
  UserPrefs()->SetStr(kSection, "n", "v");
  Section const *const standard = GetUserPrefs()->GetSectionFromID(kGeneral);
  CEnumPrefs *const first = UserPrefs()->GetEnum(0, kGeneral, "General");
  CEnumPrefs *const second = UserPrefs()->GetEnum(0, kGeneral, "General");
  second->Release();
  EXPECT_EQ(Rest(first), "1n:1 ");
  first->Release();
  EXPECT_EQ(GetUserPrefs()->GetSectionFromID(kGeneral), standard);
  EXPECT_EQ(Read(UserPrefs(), "n"), "v");

  CEnumPrefs *const orphan = UserPrefs()->GetEnum(12345, 501, "Orphan");
  EXPECT_EQ(orphan->Next(), -1);
  EXPECT_EQ(orphan->CreateKey("k"), 0);
  orphan->Release();
  EXPECT_EQ(GetUserPrefs()->GetSectionFromID(501), nullptr);
}

TEST_F(EnumPrefsTest, ChildrenOfOneWalkHaveIdsOfTheirOwn) {
  CEnumPrefs *const walk = UserPrefs()->GetEnum(0, kConferencing, "Conferencing");
  CEnumPrefs *children[2];
  for (CEnumPrefs *&child : children) {
    walk->Next();
    ASSERT_EQ(walk->ReadEnum(&child), 1);
  }
  for (CEnumPrefs *child : children) child->WriteStr("mark", "m");
  for (char const *name : {"Conference", "Point2Point"})
    EXPECT_EQ(InUserTree(std::string("Conferencing\\") + name, "mark"), "m");
  for (CEnumPrefs *each : {children[0], children[1], walk}) each->Release();
}

}  // namespace
}  // namespace zolt::testing
