#ifndef ZOLT41_TOOLS_ZOLT_CARD_DOCUMENTS_H_
#define ZOLT41_TOOLS_ZOLT_CARD_DOCUMENTS_H_

#include <string>
#include <vector>

#include "tools/zolt/card_changes.h"
#include "tools/zolt/card_damage.h"
#include "tools/zolt/card_property.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

// The JSON documents about cards, each ended by a line end.

// A preference that a card carries.
struct CardPreference {
  std::string section;  // a path, or an id behind 0x
  std::string name;     // local text, like the next
  std::string value;
};

std::string CardDocument(CallCard *card, std::vector<CardPreference> const &preferences);
// Without a line end.
std::string PropertiesDocument(std::vector<CardProperty> const &properties);
std::string JsonText(std::string const &utf8);

std::string PropertyDocument(CardProperty const &property);
std::string CardChangesDocument(std::vector<CardChange> const &changes);
std::string PreferencesDocument(std::vector<CardPreference> const &preferences);
std::string DamageDocument(std::string const &path, std::vector<CardDamage> const &damage);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_CARD_DOCUMENTS_H_
