#include "zolt41/interchange/property_view.h"

#include <algorithm>
#include <cstring>

#include "zolt41/cards/property_format.h"
#include "zolt41/foundation/u_convert.h"

namespace zolt {

PropertyView PropertyAt(PCardStorage *card, uint32_t index) {
  PropertyView property;
  uint32_t length = 0;
  char *name = nullptr;
  char const *const value = card->GetPropA(index, &length, &property.type, &property.flags, &name);
  property.name = name;
  property.value = {value, length};
  return property;
}

std::string_view ByteText(std::string_view value) {
  return value.substr(0, value.find('\0'));
}

std::u16string WideText(std::string_view value) {
  // It lies at any address.
  std::u16string wide(value.size() / sizeof(char16_t), u'\0');
  std::memcpy(wide.data(), value.data(), wide.size() * sizeof(char16_t));
  wide.resize(std::min(wide.find(u'\0'), wide.size()));
  return wide;
}

std::string LocalText(PropertyView const &property) {
  if (!IsUnicode(property.type)) return std::string(ByteText(property.value));
  std::u16string const wide = WideText(property.value);
  std::string text(wide.size(), '\0');
  ConvertUnicodeToLocal(wide.data(), text.data(), static_cast<int32_t>(text.size()), '?');
  return text;
}

}  // namespace zolt
