#include "tools/zolt/card_property.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "tools/zolt/errors.h"
#include "tools/zolt/near_name.h"
#include "tools/zolt/text.h"
#include "tools/zolt/utf8.h"
#include "tools/zolt/value_type.h"

namespace zolt::tool {

namespace {

constexpr size_t kBriefBytes = 16;
constexpr size_t kBriefText = 60;

bool IsText(uint32_t type) {
  return IsString(type) || type == PropertyDateTime || type == PropertyLocation;
}

std::u16string Units(std::string const &bytes) {
  std::u16string units(bytes.size() / sizeof(char16_t), u'\0');
  std::memcpy(units.data(), bytes.data(), units.size() * sizeof(char16_t));
  return units.substr(0, units.find(u'\0'));
}

std::vector<std::string> Split(std::string_view text) {
  std::vector<std::string> words;
  while (true) {
    size_t const end = text.find(',');
    words.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return words;
    text.remove_prefix(end + 1);
  }
}

std::vector<std::string> KnownFlags() {
  std::vector<std::string> names;
  for (std::string_view const name : kPropertyFlagNames)
    if (!name.empty()) names.emplace_back(name);
  return names;
}

uint32_t FlagOf(std::string const &word) {
  for (size_t bit = 0; bit < kPropertyFlagNames.size(); bit++) {
    if (!word.empty() && SameName(kPropertyFlagNames[bit], word)) return 1U << bit;
  }
  uint32_t bits = 0;
  std::string_view const digits = std::string_view(word).substr(std::min<size_t>(2, word.size()));
  auto const end = std::from_chars(digits.data(), digits.data() + digits.size(), bits, 16);
  bool const number =
      word.starts_with("0x") && end.ec == std::errc() && end.ptr == digits.data() + digits.size();
  if (number) return bits;
  std::string const near = DidYouMean(word, KnownFlags());
  Refuse("--flags " + word, "no such flag", near.empty() ? "HOME, WORK, FAX, ..." : near);
}

}  // namespace

std::vector<CardProperty> PropertiesOf(PCardStorage *list) {
  std::vector<CardProperty> properties;
  properties.reserve(list->PropCount());
  for (uint32_t i = 0; i < list->PropCount(); i++) {
    CardProperty property;
    uint32_t length = 0;
    char *name = nullptr;
    char const *const value = list->GetPropA(i, &length, &property.type, &property.flags, &name);
    property.name = name;
    property.value.assign(value, length);
    properties.push_back(std::move(property));
  }
  return properties;
}

std::optional<std::string> TextOfProperty(CardProperty const &property) {
  if (IsUnicode(property.type)) return Utf8FromUtf16(Units(property.value));
  if (!IsText(property.type)) return std::nullopt;
  return ToUtf8(property.value.substr(0, property.value.find('\0')));
}

std::string ColumnOfProperty(CardProperty const &property, bool brief) {
  std::optional<std::string> const text = TextOfProperty(property);
  if (!text) return brief ? Hex(property.value, kBriefBytes) : Hex(property.value);
  return brief ? Clip(*text, kBriefText) : *text;
}

std::string TypeText(uint32_t type) {
  if (IsUnicode(type)) return std::string(kUnicodeTypeName);
  return type < kPropertyTypeNames.size() ? std::string(kPropertyTypeNames[type])
                                          : std::to_string(type);
}

std::vector<std::string> FlagNames(uint32_t flags) {
  std::vector<std::string> names;
  uint32_t nameless = 0;
  for (size_t bit = 0; bit < kPropertyFlagNames.size(); bit++) {
    if ((flags >> bit & 1) == 0) continue;
    std::string_view const name = kPropertyFlagNames[bit];
    if (name.empty()) nameless |= 1U << bit;
    if (!name.empty()) names.emplace_back(name);
  }
  if (nameless == 0) return names;
  char number[16] = "0x";
  *std::to_chars(number + 2, number + 15, nameless, 16).ptr = '\0';
  names.emplace_back(number);
  return names;
}

std::string FlagsText(uint32_t flags) {
  std::string text;
  for (std::string const &name : FlagNames(flags)) text += (text.empty() ? "" : ",") + name;
  return text;
}

std::optional<uint32_t> TypeOption(Arguments const &arguments) {
  if (!arguments.Has(OptionId::type)) return std::nullopt;
  std::string const word(arguments.Value(OptionId::type));
  if (SameName(word, kUnicodeTypeName)) return PropertyUnicode;
  std::vector<std::string> names = {std::string(kUnicodeTypeName)};
  for (uint32_t type = 0; type < kPropertyTypeNames.size(); type++) {
    if (SameName(word, kPropertyTypeNames[type])) return type;
    names.emplace_back(kPropertyTypeNames[type]);
  }
  std::string const near = DidYouMean(word, names);
  Refuse("--type " + word, "no such type",
         near.empty() ? "unicode, ascii, url, bitmap, ..." : near);
}

std::optional<uint32_t> FlagsOption(Arguments const &arguments) {
  if (!arguments.Has(OptionId::flags)) return std::nullopt;
  std::string_view const words = arguments.Value(OptionId::flags);
  uint32_t flags = 0;
  if (words.empty()) return flags;
  for (std::string const &word : Split(words)) flags |= FlagOf(word);
  return flags;
}

std::string PropertyName(std::string_view operand) {
  bool const ascii = std::ranges::all_of(operand, [](char c) { return c >= ' ' && c <= '~'; });
  if (operand.empty() || !ascii || operand.find('=') != std::string_view::npos) {
    Refuse(std::string(operand), "is no name of a property: they are ASCII, without =");
  }
  return std::string(operand);
}

std::string PropertyValue(uint32_t type, std::string_view operand) {
  if (IsUnicode(type)) {
    std::u16string const units = Utf16FromUtf8(operand);
    std::string bytes((units.size() + 1) * sizeof(char16_t), '\0');
    std::memcpy(bytes.data(), units.data(), units.size() * sizeof(char16_t));
    return bytes;
  }
  if (IsText(type)) return ToLocal(operand, "leave out --type") + '\0';
  return ParseValue(ValueType::bytes, operand).data;
}

}  // namespace zolt::tool
