#include "zolt41/comserver/self_register.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/prefs/prefs_fixture.h"
#include "tests/support/key.h"
#include "tests/support/temp_home.h"
#include "zolt41/comserver/server_exports.h"
#include "zolt41/platform/registry/hive_status.h"

namespace zolt::testing {
namespace {

constexpr char kId[] = "{5ED2DD58-7638-11D3-8FD3-00A02459FA0F}";

struct Entry {
  std::string path;
  char const *name;
  std::string text;
};

std::vector<Entry> Entries() {
  std::string const tool = ZOLT_TOOL;
  std::string const self = tool.substr(0, tool.rfind('/')) + "/test_comserver";
  std::string const key = std::string("CLSID\\") + kId;
  return {{key, "", "Preference Manager"},
          {key + "\\InprocServer32", "", self},
          {key + "\\InprocServer32", "ThreadingModel", "Apartment"},
          {key + "\\ProgID", "", "Brindle.PrefManager"},
          {key + "\\VersionIndependentProgID", "", "Brindle.PrefManager.1"},
          {"Brindle.PrefManager.1", "", "Preference Manager"},
          {"Brindle.PrefManager.1\\CLSID", "", kId},
          {"Brindle.PrefManager.1\\CurVer", "", "Brindle.PrefManager"},
          {"Brindle.PrefManager", "", "Preference Manager"},
          {"Brindle.PrefManager\\CLSID", "", kId}};
}

std::string In(HKEY root, std::string const &path, char const *name) {
  return Raw(root, "Software\\Classes\\" + path, name);
}

// How many of the ten are there.
size_t Entered(HKEY root) {
  std::vector<Entry> const entries = Entries();
  return static_cast<size_t>(std::ranges::count_if(
      entries, [&](Entry const &entry) { return In(root, entry.path, entry.name) == entry.text; }));
}

// Keys that are empty count too.
bool AnythingIn(HKEY root) {
  std::vector<Entry> const entries = Entries();
  return std::ranges::any_of(
      entries, [&](Entry const &entry) { return In(root, entry.path, entry.name) != "no key"; });
}

TEST(SelfRegister, EntersTheTenTextsOfAUserAndTakesThemAway) {
  TempHome home;
  EXPECT_EQ(DllUnregisterServer(), S_OK) << "with nothing there";
  EXPECT_EQ(DllRegisterServer(), S_OK);
  EXPECT_EQ(Entered(HKEY_CURRENT_USER), 10U);
  HKEY key = 0;
  ASSERT_EQ(RegOpenKeyA(HKEY_CLASSES_ROOT, "Brindle.PrefManager", &key), ERROR_SUCCESS);
  Key(key, "Left").Set("by", "somebody");
  RegCloseKey(key);
  EXPECT_EQ(DllRegisterServer(), S_OK);
  EXPECT_EQ(Entered(HKEY_CURRENT_USER), 10U);
  EXPECT_EQ(In(HKEY_CURRENT_USER, "Brindle.PrefManager\\Left", "by"), "no key");
  EXPECT_FALSE(AnythingIn(HKEY_LOCAL_MACHINE));
  EXPECT_EQ(ZOLTRegisterServer(1), S_OK);
  EXPECT_EQ(DllUnregisterServer(), S_OK);
  EXPECT_FALSE(AnythingIn(HKEY_CURRENT_USER));
  EXPECT_EQ(Entered(HKEY_LOCAL_MACHINE), 10U) << "the user's are none of the machine's";
  EXPECT_EQ(ZOLTUnregisterServer(1), S_OK);
  EXPECT_FALSE(AnythingIn(HKEY_LOCAL_MACHINE));
}

TEST(SelfRegister, TellsThatItCouldNot) {
  TempHome home;
  {
    Key const key(HKEY_CURRENT_USER);
    HiveTransaction busy(HKEY_CURRENT_USER);
    ASSERT_EQ(busy.Begin(), ERROR_SUCCESS);
    EXPECT_NE(ZOLTRegisterServer(0), S_OK) << "in a transaction of this thread";
    EXPECT_EQ(DllRegisterServer(), S_OK) << "which tells nothing";
  }
  EXPECT_FALSE(AnythingIn(HKEY_CURRENT_USER));
}

}  // namespace
}  // namespace zolt::testing
