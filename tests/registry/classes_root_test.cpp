#include "zolt41/platform/registry/classes_root.h"

#include <gtest/gtest.h>

#include "tests/support/key.h"
#include "tests/support/temp_home.h"

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

}  // namespace
}  // namespace zolt::testing
