#ifndef ZOLT41_TOOLS_ZOLT_CARD_CHANGES_H_
#define ZOLT41_TOOLS_ZOLT_CARD_CHANGES_H_

#include <optional>
#include <string>
#include <vector>

#include "tools/zolt/card_property.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

// A property before and after.
struct CardChange {
  std::optional<CardProperty> before;
  std::optional<CardProperty> after;

  bool changes() const { return before != after; }
};

// Says what was done, or would be. Gives the exit code.
int ReportCardChanges(std::vector<CardChange> const &changes, Call const &call);

// What leads from one list to the other: properties that have their like in both, in any order,
// are none, nor is text of another type, nor preferences that only lie otherwise in their property.
std::vector<CardChange> DifferenceOf(std::vector<CardProperty> const &from,
                                     std::vector<CardProperty> const &to);

// removed, modified or created.
char const *KindOf(CardChange const &change);

// "TEL HOME,VOICE"
std::string LabelOf(CardProperty const &property);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_CARD_CHANGES_H_
