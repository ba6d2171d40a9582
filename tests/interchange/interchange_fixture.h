#ifndef ZOLT41_TESTS_INTERCHANGE_INTERCHANGE_FIXTURE_H_
#define ZOLT41_TESTS_INTERCHANGE_INTERCHANGE_FIXTURE_H_

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "tests/support/child.h"
#include "tests/support/files.h"
#include "tests/support/format_page.h"
#include "tests/support/full_disk.h"
#include "zolt41/cards/card_prefs.h"
#include "zolt41/cards/property_format.h"
#include "zolt41/cards/property_storage.h"
#include "zolt41/foundation/mem_block.h"
#include "zolt41/interchange/card_text_export.h"
#include "zolt41/library/library.h"
#include "zolt41/platform/system/global_block.h"
#include "zolt41/prefs/stores.h"

namespace zolt::testing {

inline void Add(PCardStorage *card, char const *name, uint32_t type, uint32_t flags,
                std::string_view value) {
  card->AddProp(name, type, flags, value.data(), static_cast<int32_t>(value.size()));
}

inline void AddText(PCardStorage *card, char const *name, uint32_t flags, std::string const &text) {
  Add(card, name, PropertyAscii, flags, {text.c_str(), text.size() + 1});
}

inline void AddWide(PCardStorage *card, char const *name, uint32_t flags,
                    std::u16string const &text) {
  Add(card, name, PropertyUnicode, flags,
      {reinterpret_cast<char const *>(text.c_str()), 2 * (text.size() + 1)});
}

inline void AddPrefs(PCardStorage *card, TYUserPrefs *prefs) {
  char *const blob = prefs->GetData();
  Add(card, kCardPrefsProperty, PropertyData, PropertyLocal, {blob, GetMemSize(blob)});
  _DisposeMem(blob);
}

inline std::string TextOf(PCardStorage *card) {
  uint32_t size = 0;
  void *const block = ExportCard(card, &size);
  EXPECT_EQ(GlobalSize(block), size);
  std::string text(static_cast<char const *>(GlobalLock(block)), size);
  GlobalFree(block);
  return text;
}

inline std::string WithLineEnds(std::string const &lines) {
  std::string text;
  for (char const c : lines) c == '\n' ? text += "\r\n" : text += c;
  return text;
}

// A started library in a home of its own, which also has the directory for scratch files.
class InterchangeTest : public FileTest {
 protected:
  InterchangeTest() {
    setenv("XDG_RUNTIME_DIR", home_.path().c_str(), 1);
    InitZOLT();
    InitPrefs(nullptr);
  }
  ~InterchangeTest() override { DisposeZOLT(); }

  std::string Scratch() const {
    std::string const directory = Path("zolt41-" + std::to_string(geteuid()));
    std::filesystem::create_directory(directory);
    std::filesystem::permissions(directory, std::filesystem::perms::owner_all);
    return directory + "/qwe.ini";
  }

  // Whether all of `run` holds in a process whose files have no room for more than 4,096 bytes.
  static bool HoldsOnAFullDisk(std::function<bool()> const &run) {
    Child full([&](Child::Pipe &) {
      FullDisk const limit;
      return run() ? 0 : 1;
    });
    return full.Wait() == 0;
  }
};

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_INTERCHANGE_INTERCHANGE_FIXTURE_H_
