#include "tools/zolt/card_text_loss.h"

#include <algorithm>
#include <new>
#include <set>

#include "tools/zolt/card_blob.h"
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

// What may be lost.
struct Item {
  std::string content;  // the same in what comes back
  std::string label;
};

std::string Joined(std::vector<std::string> const &parts) {
  std::string joined;
  for (std::string const &part : parts) joined += std::to_string(part.size()) + ':' + part;
  return joined;
}

std::vector<Item> PropertyItems(CallCard *card, bool ofPreferences) {
  std::vector<Item> items;
  for (CardProperty const &property : ComparedProperties(card)) {
    if (HoldsPreferences(property) != ofPreferences) continue;
    CardProperty back = ofPreferences ? property : AsFromText(property);
    if (ofPreferences) back.value = Joined(CardBlob(property.value).Sayings());
    items.push_back(
        {Joined({back.name, std::to_string(back.type), std::to_string(back.flags), back.value}),
         LabelOf(property)});
  }
  return items;
}

// Of the property that counts, the first.
std::vector<Item> PreferenceItems(CallCard *card) {
  std::vector<CardProperty> const properties = PropertiesOf(card);
  auto const first = std::ranges::find_if(properties, HoldsPreferences);
  if (first == properties.end()) return {};
  std::vector<CardPreference> const shown = PreferencesOf(card);
  std::vector<std::string> const sayings = CardBlob(first->value).Sayings();
  std::vector<Item> items;
  for (size_t i = 0; i < sayings.size() && i < shown.size(); i++)
    items.push_back({sayings[i], shown[i].section + " " + ToUtf8(shown[i].name)});
  return items;
}

void AddLost(std::vector<Item> const &before, std::vector<Item> const &after,
             std::vector<std::string> *lost) {
  std::multiset<std::string> there;
  for (Item const &item : after) there.insert(item.content);
  for (Item const &item : before) {
    auto const found = there.find(item.content);
    if (found != there.end()) {
      there.erase(found);
    } else {
      lost->push_back(item.label);
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
  AddLost(PropertyItems(card, false), PropertyItems(&back, false), &lost);
  std::vector<std::string> preferences;
  AddLost(PreferenceItems(card), PreferenceItems(&back), &preferences);
  // Where each of them comes back there may be more such properties, of which none is shown.
  if (preferences.empty())
    AddLost(PropertyItems(card, true), PropertyItems(&back, true), &preferences);
  lost.insert(lost.end(), preferences.begin(), preferences.end());
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
