#include "zolt41/platform/registry/classes_root.h"

#include <gtest/gtest.h>

#include "tests/support/key.h"
#include "tests/support/temp_home.h"
#include "zolt41/platform/registry/hive_status.h"

namespace zolt::testing {
namespace {

// Opens a key, and gives its unnamed value, or "!" and the number of the failure.
std::string Default(HKEY root, char const *name, uint32_t access = KEY_READ) {
  HKEY key = 0;
  int32_t const opened = RegOpenKeyExA(root, name, 0, access, &key);
  if (opened != ERROR_SUCCESS) return "!" + std::to_string(opened);
  char text[64];
  uint32_t size = sizeof text;
  int32_t const result = ZOLTQueryText(key, "", text, &size);
  RegCloseKey(key);
  return result == ERROR_SUCCESS ? text : "!" + std::to_string(result);
}

void Make(HKEY root, char const *name, char const *text) {
  HKEY classes = 0;
  ASSERT_EQ(MakeClasses(root, &classes), ERROR_SUCCESS);
  Key(classes, name).Set("", text);
  RegCloseKey(classes);
}

TEST(ClassesRoot, ReadsTheUsersClassesFirstAndWritesThoseAlone) {
  TempHome home;
  EXPECT_EQ(Default(HKEY_CLASSES_ROOT, "Both"), "!2");
  EXPECT_EQ(RegDeleteKeyA(HKEY_CLASSES_ROOT, "Both"), ERROR_FILE_NOT_FOUND);
  Make(HKEY_LOCAL_MACHINE, "Both", "machine");
  EXPECT_EQ(Default(HKEY_CLASSES_ROOT, "Both"), "machine");
  EXPECT_EQ(Default(HKEY_CLASSES_ROOT, "Both", KEY_SET_VALUE), "!2");
  HKEY key = 0;
  ASSERT_EQ(RegCreateKeyA(HKEY_CLASSES_ROOT, "Both", &key), ERROR_SUCCESS);
  Key(key, "Below").Set("", "below");
  RegCloseKey(key);
  EXPECT_EQ(Default(HKEY_CURRENT_USER, "Software\\Classes\\Both\\Below"), "below");
  EXPECT_EQ(Default(HKEY_CLASSES_ROOT, "Both\\Below", KEY_ALL_ACCESS), "below");
  EXPECT_EQ(RegDeleteKeyA(HKEY_CLASSES_ROOT, "Both"), ERROR_ACCESS_DENIED) << "it has a subkey";
  Make(HKEY_CURRENT_USER, "Only", "user");
  EXPECT_EQ(RegDeleteKeyA(HKEY_CLASSES_ROOT, "Only"), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteKeyA(HKEY_CLASSES_ROOT, "Both"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(Default(HKEY_LOCAL_MACHINE, "Software\\Classes\\Both"), "machine");
  EXPECT_EQ(RegSetValueExA(HKEY_CLASSES_ROOT, "v", 0, REG_SZ, nullptr, 0), ERROR_INVALID_HANDLE);
}

TEST(QueryInfo, CountsAndMeasuresNames) {
  TempHome home;
  Key const key(HKEY_CURRENT_USER);
  uint32_t subkeys = 9;
  uint32_t longestKey = 9;
  uint32_t values = 9;
  uint32_t longestValue = 9;
  auto const query = [&](HKEY handle) {
    return RegQueryInfoKeyA(handle, nullptr, nullptr, nullptr, &subkeys, &longestKey, nullptr,
                            &values, &longestValue, nullptr, nullptr, nullptr);
  };
  EXPECT_EQ(query(key.handle), ERROR_SUCCESS);
  EXPECT_EQ(subkeys + longestKey + values + longestValue, 0U);
  {
    HiveTransaction all(HKEY_CURRENT_USER);
    ASSERT_EQ(all.Begin(), ERROR_SUCCESS);
    for (int i = 0; i < 20000; i++) key.Set("value" + std::to_string(i), "");
    key.Set("", "unnamed");
    key.Set(std::string(300, '\xE9'), "");
    EXPECT_EQ(query(key.handle), ERROR_SUCCESS);
    EXPECT_EQ(values, 20002U) << "more than one stretch, in a transaction";
    ASSERT_EQ(all.Commit(), ERROR_SUCCESS);
  }
  Key const below(key.handle, "B\xFCro");
  EXPECT_EQ(query(key.handle), ERROR_SUCCESS);
  EXPECT_EQ(subkeys, 1U);
  EXPECT_EQ(longestKey, 4U);
  EXPECT_EQ(values, 20002U);
  EXPECT_EQ(longestValue, 300U);
  EXPECT_EQ(query(12345), ERROR_INVALID_HANDLE);
}

TEST(OpenOneKey, TakesABackslashAsALetter) {
  TempHome home;
  Key const above(HKEY_CURRENT_USER, "A");
  Key const below(above.handle, "B");
  HKEY key = 0;
  EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "A\\B", 0, KEY_READ, &key), ERROR_SUCCESS);
  EXPECT_EQ(RegSetValueExA(key, "v", 0, REG_SZ, nullptr, 0), ERROR_ACCESS_DENIED)
      << "opened for reading";
  RegCloseKey(key);
  EXPECT_EQ(OpenOneKey(HKEY_CURRENT_USER, "A\\B", KEY_READ, &key), ERROR_FILE_NOT_FOUND);
  Key const odd(HKEY_CURRENT_USER, "A\\B");
  EXPECT_EQ(OpenOneKey(HKEY_CURRENT_USER, "A\\B", KEY_ALL_ACCESS, &key), ERROR_SUCCESS);
  RegCloseKey(key);
}

}  // namespace
}  // namespace zolt::testing
