#include "zolt41/comserver/self_register.h"

#include <utility>

#include "tests/prefs/prefs_fixture.h"
#include "tests/support/key.h"
#include "zolt41/comserver/server_exports.h"
#include "zolt41/platform/registry/hive_status.h"

namespace zolt::testing {
namespace {

using Texts = std::vector<std::string>;

// Keys that are empty would show too.
Texts const kNothing(10, "no key");

// What stands at the ten places.
Texts EnteredIn(HKEY root) {
  std::string const id = "CLSID\\{5ED2DD58-7638-11D3-8FD3-00A02459FA0F}";
  std::string const name = "Brindle.PrefManager";
  std::pair<std::string, char const *> const places[] = {
      {id, ""},
      {id + "\\InprocServer32", ""},
      {id + "\\InprocServer32", "ThreadingModel"},
      {id + "\\ProgID", ""},
      {id + "\\VersionIndependentProgID", ""},
      {name + ".1", ""},
      {name + ".1\\CLSID", ""},
      {name + ".1\\CurVer", ""},
      {name, ""},
      {name + "\\CLSID", ""}};
  Texts texts;
  for (auto const &[path, value] : places)
    texts.push_back(Raw(root, "Software\\Classes\\" + path, value));
  return texts;
}

Texts Expected() {
  std::string const tool = ZOLT_TOOL;
  std::string const self = tool.substr(0, tool.rfind('/')) + "/test_comserver";
  std::string const id = "{5ED2DD58-7638-11D3-8FD3-00A02459FA0F}";
  return {"Preference Manager",
          self,
          "Apartment",
          "Brindle.PrefManager",
          "Brindle.PrefManager.1",
          "Preference Manager",
          id,
          "Brindle.PrefManager",
          "Preference Manager",
          id};
}

TEST(SelfRegister, EntersTheTenTextsOfAUserAndTakesThemAway) {
  TempHome home;
  EXPECT_EQ(DllUnregisterServer(), S_OK) << "with nothing there";
  EXPECT_EQ(DllRegisterServer(), S_OK);
  EXPECT_EQ(EnteredIn(HKEY_CURRENT_USER), Expected());
  Key(Key(HKEY_CLASSES_ROOT, "Brindle.PrefManager").handle, "Left").Set("by", "somebody");
  EXPECT_EQ(DllRegisterServer(), S_OK);
  EXPECT_EQ(EnteredIn(HKEY_CURRENT_USER), Expected());
  EXPECT_EQ(Raw(HKEY_CURRENT_USER, "Software\\Classes\\Brindle.PrefManager\\Left", "by"), "no key");
  EXPECT_EQ(EnteredIn(HKEY_LOCAL_MACHINE), kNothing);
  EXPECT_EQ(ZOLTRegisterServer(1), S_OK);
  EXPECT_EQ(DllUnregisterServer(), S_OK);
  EXPECT_EQ(EnteredIn(HKEY_CURRENT_USER), kNothing);
  EXPECT_EQ(EnteredIn(HKEY_LOCAL_MACHINE), Expected()) << "the user's are none of the machine's";
  EXPECT_EQ(ZOLTUnregisterServer(1), S_OK);
  EXPECT_EQ(EnteredIn(HKEY_LOCAL_MACHINE), kNothing);
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
  EXPECT_EQ(EnteredIn(HKEY_CURRENT_USER), kNothing);
}

}  // namespace
}  // namespace zolt::testing
