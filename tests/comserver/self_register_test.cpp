#include "zolt41/comserver/self_register.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/key.h"
#include "tests/support/temp_home.h"
#include "zolt41/comserver/server_exports.h"
#include "zolt41/platform/registry/hive_status.h"

namespace zolt::testing {
namespace {

// All that lies below a key: "path|value name|text".
void List(HKEY key, std::string const &path, std::vector<std::string> *lines) {
  for (uint32_t index = 0;; index++) {
    char name[260];
    char text[512];
    uint32_t length = sizeof name;
    uint32_t type = 0;
    uint32_t size = sizeof text;
    if (RegEnumValueA(key, index, name, &length, nullptr, &type, reinterpret_cast<uint8_t *>(text),
                      &size) != ERROR_SUCCESS) {
      break;
    }
    EXPECT_EQ(type, REG_SZ);
    EXPECT_EQ(text[size - 1], '\0');
    lines->push_back(path + "|" + name + "|" + text);
  }
  for (uint32_t index = 0;; index++) {
    char name[260];
    uint32_t length = sizeof name;
    if (RegEnumKeyExA(key, index, name, &length, nullptr, nullptr, nullptr, nullptr) != 0) return;
    HKEY below = 0;
    RegOpenKeyA(key, name, &below);
    List(below, path + "\\" + name, lines);
    RegCloseKey(below);
  }
}

std::vector<std::string> Classes(HKEY root) {
  std::vector<std::string> lines;
  HKEY key = 0;
  if (RegOpenKeyA(root, "Software\\Classes", &key) != ERROR_SUCCESS) return lines;
  List(key, "", &lines);
  RegCloseKey(key);
  return lines;
}

// The file that this very program was loaded from.
std::vector<std::string> Expected() {
  std::string const self =
      std::string(ZOLT_TOOL).substr(0, std::string(ZOLT_TOOL).rfind('/')) + "/test_comserver";
  std::string const id = "{5ED2DD58-7638-11D3-8FD3-00A02459FA0F}";
  std::string const key = "\\CLSID\\" + id;
  return {key + "||Preference Manager",
          key + "\\InprocServer32||" + self,
          key + "\\InprocServer32|ThreadingModel|Apartment",
          key + "\\ProgID||Brindle.PrefManager",
          key + "\\VersionIndependentProgID||Brindle.PrefManager.1",
          "\\Brindle.PrefManager.1||Preference Manager",
          "\\Brindle.PrefManager.1\\CLSID||" + id,
          "\\Brindle.PrefManager.1\\CurVer||Brindle.PrefManager",
          "\\Brindle.PrefManager||Preference Manager",
          "\\Brindle.PrefManager\\CLSID||" + id};
}

TEST(SelfRegister, EntersTheTenTextsOfAUserAndTakesThemAway) {
  TempHome home;
  EXPECT_EQ(DllUnregisterServer(), S_OK) << "with nothing there";
  EXPECT_EQ(DllRegisterServer(), S_OK);
  EXPECT_EQ(Classes(HKEY_CURRENT_USER), Expected());
  HKEY key = 0;
  ASSERT_EQ(RegOpenKeyA(HKEY_CLASSES_ROOT, "Brindle.PrefManager", &key), ERROR_SUCCESS);
  Key(key, "Left").Set("by", "somebody");
  RegCloseKey(key);
  EXPECT_EQ(DllRegisterServer(), S_OK);
  EXPECT_EQ(Classes(HKEY_CURRENT_USER), Expected()) << "in the place of what was there";
  EXPECT_TRUE(Classes(HKEY_LOCAL_MACHINE).empty());
  EXPECT_EQ(DllUnregisterServer(), S_OK);
  EXPECT_TRUE(Classes(HKEY_CURRENT_USER).empty());
}

TEST(SelfRegister, TheMachinesClassesAreAnotherTree) {
  TempHome home;
  EXPECT_EQ(ZOLTRegisterServer(1), S_OK);
  EXPECT_EQ(Classes(HKEY_LOCAL_MACHINE), Expected());
  EXPECT_EQ(DllUnregisterServer(), S_OK);
  EXPECT_EQ(Classes(HKEY_LOCAL_MACHINE), Expected()) << "the user's are none of the machine's";
  EXPECT_EQ(ZOLTUnregisterServer(1), S_OK);
  EXPECT_TRUE(Classes(HKEY_LOCAL_MACHINE).empty());
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
  EXPECT_TRUE(Classes(HKEY_CURRENT_USER).empty());
}

}  // namespace
}  // namespace zolt::testing
