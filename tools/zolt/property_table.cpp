#include "tools/zolt/property_table.h"

#include "tools/zolt/table.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

void WriteProperties(std::vector<CardProperty> const &properties, Call const &call) {
  Table table(call.settings, call.out, 1);
  for (CardProperty const &property : properties) {
    if (property.name == kCardPrefsProperty) continue;
    table.Add({ToUtf8(property.name), ColumnOfProperty(property, call.out.terminal()),
               TypeText(property.type), FlagsText(property.flags)});
  }
  table.Finish();
}

}  // namespace zolt::tool
