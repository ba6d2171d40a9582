#ifndef ZOLT41_TESTS_PREFS_PREFS_FIXTURE_H_
#define ZOLT41_TESTS_PREFS_PREFS_FIXTURE_H_

#include <gtest/gtest.h>

#include "tests/support/temp_home.h"
#include "zolt41/library/library.h"
#include "zolt41/prefs/pref_sections.h"
#include "zolt41/prefs/section_name_hash.h"
#include "zolt41/prefs/stores.h"

namespace zolt::testing {

inline constexpr int32_t kGeneral = SectionLetters("GNRL");
inline constexpr int32_t kAudio = SectionLetters("AUDI");
inline constexpr int32_t kConferencing = SectionLetters("gONG");
inline constexpr uint32_t kSection = static_cast<uint32_t>(kGeneral);

// What a read along the chain gives, or "-" if no store has the value.
inline std::string Read(TYPrefs *store, char const *name, int32_t parentFirst = 0,
                        uint32_t section = kSection) {
  char buffer[256];
  return store->ReadStr(section, name, buffer, "-", parentFirst) != 0 ? buffer : "-";
}

// The text of a value below a root, or "no key" or "no value".
inline std::string Raw(HKEY root, std::string const &path, char const *name) {
  HKEY key = 0;
  if (RegOpenKeyA(root, path.c_str(), &key) != ERROR_SUCCESS) return "no key";
  char text[256];
  uint32_t size = sizeof text;
  int32_t const result = ZOLTQueryText(key, name, text, &size);
  RegCloseKey(key);
  return result == ERROR_SUCCESS ? text : "no value";
}

inline std::string InUserTree(std::string const &section, char const *name) {
  return Raw(HKEY_CURRENT_USER, "Software\\Veltrane\\Tessaly\\5.0\\" + section, name);
}

// A started library in a home of its own.
class PrefsTest : public ::testing::Test {
 protected:
  PrefsTest() {
    InitZOLT();
    InitPrefs(nullptr);
  }
  ~PrefsTest() override { DisposeZOLT(); }

 private:
  TempHome home_;
};

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_PREFS_PREFS_FIXTURE_H_
