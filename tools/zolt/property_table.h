#ifndef ZOLT41_TOOLS_ZOLT_PROPERTY_TABLE_H_
#define ZOLT41_TOOLS_ZOLT_PROPERTY_TABLE_H_

#include <vector>

#include "tools/zolt/card_property.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

// A row for each: name, value, type and flags; without the preferences that a card carries.
void WriteProperties(std::vector<CardProperty> const &properties, Call const &call);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_PROPERTY_TABLE_H_
