#include "zolt41/interchange/card_text_export.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

#include "zolt41/cards/card_prefs.h"
#include "zolt41/cards/property_format.h"
#include "zolt41/foundation/az_compare.h"
#include "zolt41/foundation/text_coding.h"
#include "zolt41/foundation/u_convert.h"
#include "zolt41/interchange/card_text_format.h"
#include "zolt41/interchange/property_view.h"
#include "zolt41/interchange/scratch_file.h"
#include "zolt41/platform/system/file_replacement.h"
#include "zolt41/platform/system/global_block.h"
#include "zolt41/platform/system/with_memory.h"
#include "zolt41/prefs/stores.h"

namespace {

using zolt::kLineEnd;

void AddEscaped(std::string_view value, std::string *text) {
  for (char const &byte : value) {
    auto const number = static_cast<unsigned char>(byte);
    if (number >= 0x20 && number < 0x80 && byte != '=') {
      *text += byte;
    } else {
      *text += '=';
      zolt::AppendHex({&byte, 1}, text);
    }
  }
}

void AddFlagNames(uint32_t flags, std::string *text) {
  size_t const start = text->size();
  for (; flags != 0; flags &= flags - 1) {
    std::string_view const name =
        zolt::kPropertyFlagNames[static_cast<size_t>(std::countr_zero(flags))];
    if (name.empty()) continue;
    if (text->size() > start) *text += ',';
    *text += name;
  }
}

void AddHex(std::string_view bytes, std::string *text) {
  *text += '<';
  zolt::AppendHex(bytes, text);
  *text += '>';
}

// What a person can read of 16-bit text.
std::string PlainText(std::string_view value) {
  std::u16string const wide = zolt::WideText(value);
  std::string plain(wide.size(), '\0');
  ConvertUnicodeToAscii(wide.data(), plain.data(), static_cast<int32_t>(plain.size()), '?');
  return plain;
}

void AddValue(zolt::PropertyView const &property, std::string *text) {
  if (zolt::IsTextInCard(property.type)) return AddEscaped(zolt::ByteText(property.value), text);
  AddHex(property.value, text);
  if (zolt::IsUnicode(property.type)) AddEscaped(PlainText(property.value), text);
}

std::string_view TypeName(uint32_t type) {
  if (zolt::IsUnicode(type)) return zolt::kUnicodeTypeName;
  // A type that has no name is one of bytes.
  return zolt::kPropertyTypeNames[type < zolt::kPropertyTypeNames.size() ? type : PropertyData];
}

void AddProperty(zolt::PropertyView const &property, std::string *text) {
  *text += property.name;
  *text += '=';
  *text += TypeName(property.type);
  *text += ':';
  AddFlagNames(property.flags, text);
  *text += ':';
  AddValue(property, text);
  *text += kLineEnd;
}

void AddHeadLine(PCardStorage *card, char const *name, char const *absent, std::string *text) {
  char value[zolt::kHeadValueSize + 1];
  card->GetStrProp(name, 0, 0, absent, value, zolt::kHeadValueSize);
  *text += value;
  *text += kLineEnd;
}

void AddSectionHead(char const *name, std::string *text) {
  *text += kLineEnd;
  *text += '[';
  *text += name;
  *text += ']';
  *text += kLineEnd;
}

// Of a level that no read goes beyond.
class PreferencesToWrite : public TYUserPrefs {
 public:
  explicit PreferencesToWrite(std::string_view blob)
      : TYUserPrefs(PrefLevelSystem, blob.data(), static_cast<uint32_t>(blob.size())) {}

  // As far as a reader takes it: many values of a foreign blob may share its bytes.
  std::string TextOf(uint32_t section, char const *name) {
    uint32_t size = 0;
    char const *const value = GetPropData(section, name, &size);
    if (value == nullptr) return "";
    return zolt::LocalText({name, PropertyUnicode, 0, {value, std::min(size, 2 * kLongest)}});
  }

 private:
  static constexpr uint32_t kLongest = zolt::kLongestPreference;
};

void AddPreferences(std::string_view blob, std::string *text) {
  PreferencesToWrite store(blob);
  WinPrefs *const names = GetSystemPrefs();
  uint32_t last = 0;
  for (int32_t i = 0; i < store.Count(); i++) {
    uint32_t section = 0;
    char const *const name = store.GetIndexedName(i, &section);
    bool const isNew = i == 0 || section != last;
    char const *const head =
        isNew && names != nullptr ? names->SectionName(static_cast<int32_t>(section), 0) : nullptr;
    if (head != nullptr) AddSectionHead(head, text);
    last = section;
    *text += name;
    *text += '=';
    *text += store.TextOf(section, name);
    *text += kLineEnd;
  }
}

std::string CardText(PCardStorage *card) {
  std::string text;
  AddHeadLine(card, zolt::kAddressProperty, zolt::kNoAddress, &text);
  AddHeadLine(card, zolt::kConferenceProperty, zolt::kNoConference, &text);
  AddSectionHead(zolt::kCardSection, &text);
  zolt::PropertyView preferences;
  for (uint32_t i = 0; i < card->PropCount(); i++) {
    zolt::PropertyView const property = zolt::PropertyAt(card, i);
    if (AZStrEqual(property.name, zolt::kCardPrefsProperty) != 0) {
      preferences = property;
    } else {
      AddProperty(property, &text);
    }
  }
  if (preferences.name == nullptr) return text;
  AddSectionHead(zolt::kPreferencesSection, &text);
  AddPreferences(preferences.value, &text);
  return text;
}

}  // namespace

int32_t ExportCard(PCardStorage *card, char const *path) {
  return zolt::WithMemory(-1, [&] {
    std::string const text = CardText(card);
    if (text.size() > std::numeric_limits<int32_t>::max()) return -1;
    zolt::FileReplacement file(path);
    file.Write(text);
    return file.Commit() ? static_cast<int32_t>(text.size()) : -1;
  });
}

void *ExportCard(PCardStorage *card, uint32_t *size) {
  *size = 0;
  return zolt::WithMemory<void *>(nullptr, [&]() -> void * {
    std::string const text = CardText(card);
    if (text.size() > std::numeric_limits<uint32_t>::max()) return nullptr;
    void *const block = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, text.size());
    if (block == nullptr) return nullptr;
    std::memcpy(GlobalLock(block), text.data(), text.size());
    GlobalUnlock(block);
    *size = static_cast<uint32_t>(text.size());
    return block;
  });
}

void *ExportCardData(PCardStorage *card, uint32_t *size) {
  *size = 0;
  return zolt::WithMemory<void *>(nullptr, [&]() -> void * {
    std::string const text = CardText(card);
    if (text.size() > std::numeric_limits<int32_t>::max()) return nullptr;
    auto const length = static_cast<uint32_t>(text.size());
    zolt::ScratchFile scratch(zolt::ScratchFile::Stale::removed);
    if (!scratch.good() || !scratch.Write(text.data(), length)) return nullptr;
    void *const block = GlobalAlloc(GMEM_MOVEABLE, length);
    if (block == nullptr) return nullptr;
    bool const read = scratch.Read(GlobalLock(block), length);
    GlobalUnlock(block);
    if (!read) return GlobalFree(block);
    *size = length;
    return block;
  });
}
