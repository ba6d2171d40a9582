#ifndef ZOLT41_TOOLS_ZOLT_CARD_PROPERTY_H_
#define ZOLT41_TOOLS_ZOLT_CARD_PROPERTY_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/zolt/arguments.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

// A property of a card, away from its list.
struct CardProperty {
  std::string name;  // ASCII; other bytes stand for local text
  uint32_t type = PropertyUnicode;
  uint32_t flags = 0;
  std::string value;  // as it is stored

  bool operator==(CardProperty const &) const = default;
};

// Those of a list, in its order.
std::vector<CardProperty> PropertiesOf(PCardStorage *list);

// The text of a property of 16-bit, local or plain text, in UTF-8; nothing of another.
std::optional<std::string> TextOfProperty(CardProperty const &property);
// The same, or bytes as 0x and digits; `brief` cuts those that would not fit a terminal.
std::string ColumnOfProperty(CardProperty const &property, bool brief);

// The names of the type, and of the flags with commas between; bits without a name as a number.
std::string TypeText(uint32_t type);
std::string FlagsText(uint32_t flags);
std::vector<std::string> FlagNames(uint32_t flags);

// What --type and --flags say; nothing if they are not given. Throw a usage error.
std::optional<uint32_t> TypeOption(Arguments const &arguments);
std::optional<uint32_t> FlagsOption(Arguments const &arguments);

// A name that an operand gives. Throws a usage error for one that is empty or not ASCII.
std::string PropertyName(std::string_view operand);

// The bytes of a value of that type that an operand gives: text, or for types of bytes @FILE, - or
// digits behind 0x. Throws a usage error.
std::string PropertyValue(uint32_t type, std::string_view operand);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_CARD_PROPERTY_H_
