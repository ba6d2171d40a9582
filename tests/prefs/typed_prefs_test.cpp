#include "zolt41/prefs/typed_prefs.h"

#include <tuple>
#include <utility>

#include "tests/prefs/prefs_fixture.h"

namespace zolt::testing {
namespace {

class TypedPrefsTest : public PrefsTest {
 protected:
  TYPrefs *const stores[5] = {nullptr, SharedSystemPrefs(), SharedUserPrefs(), SystemPrefs(),
                              UserPrefs()};
  TYPrefs card;
};

TEST_F(TypedPrefsTest, ReadsFollowTheChainsWhichNeverJoin) {
  char const *const names[] = {"", "1", "2", "3", "4"};
  for (int level = 1; level <= 4; ++level)
    for (char const *name : {"all", names[level]})
      stores[level]->SetStr(kSection, name, names[level]);
  // A store, what "all" gives, what it gives with the parents first, the levels that it sees.
  std::tuple<TYPrefs *, char const *, char const *, char const *> const rows[] = {
      {&card, "4", "4", "--34"},
      {stores[4], "4", "3", "--34"},
      {stores[3], "3", "3", "--3-"},
      {stores[2], "2", "1", "12--"},
      {stores[1], "1", "1", "1---"}};
  for (auto const &[store, own, general, levels] : rows)
    for (int32_t const parentFirst : {0, 1}) {
      EXPECT_EQ(Read(store, "all", parentFirst), parentFirst != 0 ? general : own);
      std::string seen;
      for (int level = 1; level <= 4; ++level) seen += Read(store, names[level], parentFirst);
      EXPECT_EQ(seen, levels);
    }
}

TEST_F(TypedPrefsTest, WritesGoToTheStoreOfTheLevelOrNowhere) {
  // The taker 0 is none.
  std::tuple<TYPrefs *, int32_t, int32_t> const rows[] = {
      {stores[4], 0, 4}, {stores[4], 4, 4}, {stores[4], 3, 3}, {stores[4], 1, 0},
      {stores[4], 2, 0}, {stores[4], 5, 0}, {stores[4], 6, 0}, {stores[2], 4, 0},
      {stores[2], 1, 1}, {stores[2], 0, 2}, {&card, 4, 4},     {&card, 3, 3},
      {&card, 2, 0},     {stores[3], 4, 0}, {stores[3], 99, 0}};
  for (auto const &[store, asked, taker] : rows) {
    EXPECT_EQ(store->WriteBool(kSection, "n", 7, static_cast<PrefLevel>(asked)), taker != 0);
    for (int level = 1; level <= 4; ++level) {
      EXPECT_EQ(stores[level]->Exists(kSection, "n"), level == taker) << asked;
      stores[level]->RemoveValue(kSection, "n");
    }
  }
}

TEST_F(TypedPrefsTest, NumbersAndBooleansAreTexts) {
  constexpr int32_t kNone = -77;
  std::pair<char const *, int32_t> const rows[] = {{" \t\n+7 rest", 7},
                                                   {"-0x10", -16},
                                                   {"0XfFg", 255},
                                                   {"010", 8},
                                                   {"08", 0},
                                                   {"2147483648", INT32_MIN},
                                                   {"0xFFFFFFFF", -1},
                                                   {"+-5", kNone},
                                                   {"yes", kNone},
                                                   {"True", kNone},
                                                   {" Yes", kNone},
                                                   {"", kNone},
                                                   {"99999999999999999999", -1},
                                                   {"-99999999999999999999", 0}};
  for (auto const &[text, number] : rows) {
    bool const flag = text[0] == 'y' || text[0] == 'T';
    UserPrefs()->SetStr(kSection, "n", text);
    int32_t value = 0;
    EXPECT_EQ(UserPrefs()->ReadBool(kSection, "n", &value, 1, 0), 1);
    EXPECT_EQ(value, flag) << text;
    EXPECT_EQ(UserPrefs()->ReadNum(kSection, "n", &value, kNone, 0), 1);  // found, number or not
    EXPECT_EQ(value, number) << text;
  }
}

TEST_F(TypedPrefsTest, DiffWritesOnlyWhatDiffersAlongTheChain) {
  TYPrefs *const user = UserPrefs();
  SystemPrefs()->SetStr(kSection, "text", "Value");
  EXPECT_EQ(user->DiffWriteStr(kSection, "text", "VALUE", "", PrefLevelUser), 1);
  EXPECT_EQ(user->DiffWriteNum(kSection, "number", 3, 3, PrefLevelUser), 1);
  EXPECT_EQ(user->DiffWriteBool(kSection, "bool", 1, 1, PrefLevelUser), 1);
  for (char const *name : {"text", "number", "bool"}) EXPECT_EQ(user->Exists(kSection, name), 0);
  EXPECT_EQ(user->DiffWriteNum(kSection, "number", 4, 3, PrefLevelUser), 1);
  EXPECT_EQ(Read(user, "number"), "4");
  EXPECT_EQ(user->DiffWriteBool(kSection, "bool", 0, 1, PrefLevelSharedUser), 0);
  // A default may be longer than any text that can be read.
  std::string const longText(2000, 'x');
  EXPECT_EQ(user->IsDiffStr(kSection, "none", longText.c_str(), longText.c_str()), 0);
}

TEST_F(TypedPrefsTest, NullIsEmptyAndTheDefaultMayLieInTheBuffer) {
  UserPrefs()->WriteStr(kSection, nullptr, "unnamed", PrefLevelUser);
  EXPECT_EQ(Read(UserPrefs(), ""), "unnamed");
  UserPrefs()->WriteStr(kSection, "", nullptr, PrefLevelUser);
  EXPECT_EQ(Read(UserPrefs(), nullptr), "");
  char buffer[256] = "before";
  EXPECT_EQ(UserPrefs()->ReadStr(kSection, "none", buffer, buffer, 1), 0);
  EXPECT_STREQ(buffer, "before");
}

}  // namespace
}  // namespace zolt::testing
