#include "tools/zolt/card_text_loss.h"

#include <cstring>
#include <new>
#include <set>

#include "tools/zolt/card_changes.h"
#include "tools/zolt/card_preferences.h"
#include "tools/zolt/confirm.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

constexpr size_t kMostNamed = 5;
constexpr uint32_t kFirstSectionLine = 4;

std::string TextOf(CallCard *card) {
  uint32_t size = 0;
  void *const block = ExportCard(card, &size);
  if (block == nullptr) throw std::bad_alloc();
  std::string text(static_cast<char const *>(GlobalLock(block)), size);
  GlobalFree(block);
  return text;
}

std::string Wide(std::string const &local) {
  std::u16string wide(local.size() + 1, u'\0');
  ConvertLocalToUnicode(local.data(), wide.data(), static_cast<int32_t>(local.size()));
  return {reinterpret_cast<char const *>(wide.data()), 2 * wide.size()};
}

std::string Returning(CardProperty const &property) {
  CardProperty const back = AsFromText(property);
  return back.name + '\0' + std::to_string(back.type) + '\0' + std::to_string(back.flags) + '\0' +
         back.value;
}

std::string Returning(CardPreference const &preference) {
  return preference.section + '\0' + preference.name + '\0' + preference.value;
}

std::string NameOf(CardProperty const &property) {
  return LabelOf(property);
}

std::string NameOf(CardPreference const &preference) {
  return preference.section + " " + ToUtf8(preference.name);
}

bool IsShown(CardProperty const &property) {
  return !SameName(property.name, kCardPrefsProperty);
}

bool IsShown(CardPreference const &) {
  return true;
}

template <typename Item>
void AddLost(std::vector<Item> const &before, std::vector<Item> const &after,
             std::vector<std::string> *lost) {
  std::multiset<std::string> there;
  for (Item const &item : after) there.insert(Returning(item));
  for (Item const &item : before) {
    auto const found = there.find(Returning(item));
    if (found != there.end()) {
      there.erase(found);
    } else if (IsShown(item)) {
      lost->push_back(NameOf(item));
    }
  }
}

// Whether the lines above the sections would be read as something else.
bool HasBrokenHead(std::string const &text) {
  bool broken = false;
  auto const tell = [](void *context, CardTextFinding const &finding) {
    if (finding.line < kFirstSectionLine) *static_cast<bool *>(context) = true;
  };
  if (CheckCardText(text.data(), static_cast<int32_t>(text.size()), tell, &broken) < 0)
    throw std::bad_alloc();
  return broken;
}

}  // namespace

CardProperty AsFromText(CardProperty property) {
  if (IsUnicode(property.type)) return property;
  if (TextOfProperty(property)) {
    property.type = PropertyUnicode;
    property.value = Wide(property.value.substr(0, property.value.find('\0')));
  } else if (property.type >= kPropertyTypeNames.size()) {
    property.type = PropertyData;
  }
  return property;
}

std::vector<std::string> LostInText(CallCard *card) {
  constexpr int32_t kNoMemory = 3;
  card->SavePrefs();
  std::string const text = TextOf(card);
  CallCard back(CardFormatNone);
  if (ImportCard(&back, text.data(), static_cast<int32_t>(text.size())) == 0 &&
      ZOLTLastFailure(nullptr, 0) == kNoMemory) {
    throw std::bad_alloc();
  }
  std::vector<std::string> lost;
  AddLost(PropertiesOf(card), PropertiesOf(&back), &lost);
  AddLost(PreferencesOf(card), PreferencesOf(&back), &lost);
  if (lost.empty() && HasBrokenHead(text)) lost.emplace_back(kAddressProperty);
  return lost;
}

void ConfirmLossInText(CallCard *card, Settings const &settings) {
  std::vector<std::string> const lost = LostInText(card);
  if (lost.empty()) return;
  std::string names;
  for (size_t i = 0; i < lost.size() && i < kMostNamed; i++)
    names += (i == 0 ? "" : ", ") + lost[i];
  if (lost.size() > kMostNamed)
    names += " and " + std::to_string(lost.size() - kMostNamed) + " more";
  Confirm("write card text, which cannot hold all of it and loses " + names, settings);
}

}  // namespace zolt::tool
