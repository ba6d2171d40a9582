#include "zolt41/prefs/win_prefs.h"

#include <cstring>
#include <utility>

#include "tests/prefs/prefs_fixture.h"
#include "zolt41/prefs/enum_prefs.h"

namespace zolt::testing {
namespace {

class WinPrefsTest : public PrefsTest {
 protected:
  void Set(char const *name, uint32_t type, std::string const &bytes) {
    user->SetFree(kSection, name, type, reinterpret_cast<uint8_t const *>(bytes.data()),
                  static_cast<uint32_t>(bytes.size()));
  }
  uint32_t StoredSize(char const *name) {
    uint32_t size = 0;
    return user->GetFree(kSection, name, 0, nullptr, size) != 0 ? size : ~0U;
  }

  WinPrefs *const user = GetUserPrefs();
};

TEST_F(WinPrefsTest, ATextHasAtMost255Bytes) {
  std::string const longest(255, 'x');
  for (std::string const &end : {std::string(1, '\0'), std::string("x\0", 2), std::string("x")}) {
    Set("n", REG_SZ, longest + end);
    char buffer[257] = "untouched";
    buffer[256] = '#';
    bool const fits = end[0] == '\0';
    EXPECT_EQ(user->GetStr(kSection, "n", buffer), fits);
    EXPECT_EQ(buffer, fits ? longest : "untouched");
    EXPECT_EQ(buffer[256], '#');
  }
}

TEST_F(WinPrefsTest, AnEqualTextIsNotWritten) {
  Set("n", REG_SZ, "abc");  // without a NUL, so that a write shows in the size
  user->SetStr(kSection, "n", "abc");
  EXPECT_EQ(StoredSize("n"), 3U);
  user->SetStr(kSection, "n", "ABC");
  EXPECT_EQ(Read(user, "n"), "ABC");
  EXPECT_EQ(StoredSize("n"), 4U);
  user->SetStr(kSection, "long", std::string(2000, 'x').c_str());
  user->SetStr(kSection, "long", nullptr);  // too long to be read counts as empty
  EXPECT_EQ(StoredSize("long"), 2001U);
}

TEST_F(WinPrefsTest, BytesAreReadInTwoStepsAlongTheChain) {
  uint8_t const bytes[] = {0, 255, 7};
  EXPECT_EQ(user->WriteFree(kSection, "b", REG_BINARY, bytes, 3, PrefLevelSystem), 1);
  uint32_t size = 99;
  EXPECT_EQ(user->GetFree(kSection, "b", 0, nullptr, size), 0);
  EXPECT_EQ(user->ReadFree(kSection, "b", 0, nullptr, size, 0), 1);
  EXPECT_EQ(size, 3U);
  uint8_t data[4] = {1, 1, 1, 1};
  size = 0;  // no limit
  EXPECT_EQ(user->ReadFree(kSection, "b", 0, data, size, 1), 1);
  EXPECT_EQ(std::memcmp(data, "\x00\xFF\x07\x01", 4), 0);
}

TEST_F(WinPrefsTest, APathEndsAtItsFirstEmptyComponent) {
  // Key: empty: none.
  std::pair<std::string, std::string> const rows[] = {
      {"One:Two\\Three", "One\\Two\\Three"},
      {"One::Two", "One"},
      {"One:", "One"},
      {"", ""},
      {"\\One", ""},
      {std::string(300, 'p'), std::string(254, 'p')}};
  for (auto const &[path, key] : rows) {
    WinPrefs store(PrefLevelUser, path.c_str());
    store.SetStr(0, "n", path.substr(0, 9).c_str());
    EXPECT_EQ(store.SectionKey(0, 0) != 0, !key.empty()) << path;
    if (!key.empty()) {
      EXPECT_EQ(Raw(HKEY_CURRENT_USER, key, "n"), path.substr(0, 9));
    }
  }
}

TEST_F(WinPrefsTest, ClearLeavesAnEmptyKey) {
  uint32_t const conferencing = static_cast<uint32_t>(kConferencing);
  for (int i = 0; i < 5; ++i) user->SetStr(conferencing, std::to_string(i).c_str(), "v");
  user->RegisterSection("Deep", SectionNameHash("Chat"));
  user->Remove(conferencing, "Chat");  // has a subkey
  EXPECT_EQ(InUserTree("Conferencing\\Chat\\Deep", ""), "no value");
  SystemPrefs()->SetStr(conferencing, "n", "system");
  user->ClearSection(conferencing, 0);
  CEnumPrefs *const walk = user->GetEnum(0, kConferencing, "Conferencing");
  EXPECT_EQ(walk->Next(), -1);
  walk->Release();
  EXPECT_EQ(Read(user, "n", 0, conferencing), "system");
  ClearPrefSection(kConferencing, 0);
  EXPECT_EQ(Read(user, "n", 0, conferencing), "-");
}

}  // namespace
}  // namespace zolt::testing
