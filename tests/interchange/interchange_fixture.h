#ifndef ZOLT41_TESTS_INTERCHANGE_INTERCHANGE_FIXTURE_H_
#define ZOLT41_TESTS_INTERCHANGE_INTERCHANGE_FIXTURE_H_

#include <string_view>

#include "tests/support/format_page.h"
#include "tests/support/full_disk.h"
#include "tests/support/mem_bytes.h"
#include "zolt41/cards/card_prefs.h"
#include "zolt41/cards/property_format.h"
#include "zolt41/cards/property_storage.h"
#include "zolt41/interchange/card_text_export.h"
#include "zolt41/interchange/card_text_import.h"
#include "zolt41/library/library.h"
#include "zolt41/platform/system/global_block.h"
#include "zolt41/prefs/section_name_hash.h"
#include "zolt41/prefs/stores.h"

namespace zolt::testing {

inline constexpr auto kGeneral = static_cast<uint32_t>(SectionLetters("GNRL"));
inline constexpr auto kAudio = static_cast<uint32_t>(SectionLetters("AUDI"));

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
  Add(card, kCardPrefsProperty, PropertyData, PropertyLocal, Taken(prefs->GetData()));
}

inline std::string TextOf(PCardStorage *card) {
  uint32_t size = 0;
  void *const block = ExportCard(card, &size);
  EXPECT_EQ(GlobalSize(block), size);
  std::string text(static_cast<char const *>(GlobalLock(block)), size);
  GlobalFree(block);
  return text;
}

inline int32_t Import(PCardStorage *card, std::string const &text) {
  return ImportCard(card, text.data(), static_cast<int32_t>(text.size()));
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
};

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_INTERCHANGE_INTERCHANGE_FIXTURE_H_
