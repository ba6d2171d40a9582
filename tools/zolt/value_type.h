#ifndef ZOLT41_TOOLS_ZOLT_VALUE_TYPE_H_
#define ZOLT41_TOOLS_ZOLT_VALUE_TYPE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tools/zolt/arguments.h"
#include "tools/zolt/stored_value.h"

namespace zolt::tool {

// What -t says: how a value is written on the command line, and what is checked.
enum class ValueType { text, number, boolean, bytes };

// Throws a usage error.
ValueType TypeFrom(Arguments const &arguments);

// The value that an operand stands for, as it is to be stored: a number in decimal, a boolean as
// Yes or No; bytes are @FILE, - or digits behind 0x. Throws a usage error.
StoredValue ParseValue(ValueType type, std::string_view operand);

// The value that a whole file holds; a text, number or boolean without one line end at its end.
StoredValue ValueOfFile(ValueType type, std::string_view path);

// A text as a client reads it: a number, also octal behind 0, if the whole text is one and fits 32
// bits; and a boolean.
std::optional<int32_t> ClientNumber(std::string_view text);
bool ClientBoolean(std::string_view text);

char const *BooleanText(bool value);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_VALUE_TYPE_H_
