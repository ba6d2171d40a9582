#ifndef ZOLT41_TOOLS_ZOLT_CARD_BLOB_H_
#define ZOLT41_TOOLS_ZOLT_CARD_BLOB_H_

#include <string>
#include <vector>

#include "tools/zolt/card_property.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

// The preferences in the value of a card's property, as they are read.
class CardBlob : public TYUserPrefs {
 public:
  explicit CardBlob(std::string const &blob);

  // Those that have a value.
  void CopyTo(CardBlob *other);

  // For each preference, in their order, what it says: the same bytes for the same section, name
  // and value.
  std::vector<std::string> Sayings();
};

bool HoldsPreferences(CardProperty const &property);

// Both hold preferences, and say the same.
bool SamePreferences(CardProperty const &a, CardProperty const &b);

// The properties by which a card is compared: without those for preferences, if there are none in
// them.
std::vector<CardProperty> ComparedProperties(PCardStorage *list);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_CARD_BLOB_H_
