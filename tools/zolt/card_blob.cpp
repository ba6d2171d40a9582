#include "tools/zolt/card_blob.h"

#include <algorithm>

#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

// Of a value of 16-bit text what stands before its end, which may be missing.
std::string_view BeforeEnd(std::string_view value) {
  for (size_t i = 0; i + 1 < value.size(); i += 2) {
    if (value[i] == '\0' && value[i + 1] == '\0') return value.substr(0, i);
  }
  return value.substr(0, value.size() / 2 * 2);
}

}  // namespace

CardBlob::CardBlob(std::string const &blob)
    : TYUserPrefs(PrefLevelCard, blob.data(), static_cast<uint32_t>(blob.size())) {}

void CardBlob::CopyTo(CardBlob *other) {
  for (int32_t i = 0; i < Count(); i++) {
    uint32_t section = 0;
    uint32_t size = 0;
    std::string const name = GetIndexedName(i, &section);
    char const *const value = GetPropData(section, name.c_str(), &size);
    if (value != nullptr) other->SetPropData(section, name.c_str(), value, size);
  }
}

std::vector<std::string> CardBlob::Sayings() {
  std::vector<std::string> sayings;
  for (int32_t i = 0; i < Count(); i++) {
    uint32_t section = 0;
    uint32_t size = 0;
    std::string const name = GetIndexedName(i, &section);
    char const *const value = GetPropData(section, name.c_str(), &size);
    std::string saying = std::to_string(section) + ' ' + name;
    // An empty value is not none.
    if (value != nullptr) (saying += '\0') += BeforeEnd({value, size});
    sayings.push_back(std::move(saying));
  }
  return sayings;
}

bool HoldsPreferences(CardProperty const &property) {
  return SameName(property.name, kCardPrefsProperty) && !TextOfProperty(property);
}

bool SamePreferences(CardProperty const &a, CardProperty const &b) {
  return HoldsPreferences(a) && HoldsPreferences(b) &&
         CardBlob(a.value).Sayings() == CardBlob(b.value).Sayings();
}

std::vector<CardProperty> ComparedProperties(PCardStorage *list) {
  std::vector<CardProperty> properties = PropertiesOf(list);
  bool const any = std::ranges::any_of(properties, [](CardProperty const &property) {
    return HoldsPreferences(property) && CardBlob(property.value).Count() > 0;
  });
  if (!any) std::erase_if(properties, HoldsPreferences);
  return properties;
}

}  // namespace zolt::tool
