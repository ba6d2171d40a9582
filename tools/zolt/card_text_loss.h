#ifndef ZOLT41_TOOLS_ZOLT_CARD_TEXT_LOSS_H_
#define ZOLT41_TOOLS_ZOLT_CARD_TEXT_LOSS_H_

#include <string>
#include <vector>

#include "tools/zolt/card_property.h"
#include "tools/zolt/settings.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

// As it should come back from text: text of every type as 16-bit text, and bytes of no known type
// as DATA.
CardProperty AsFromText(CardProperty property);

// What would not come back of a card that is written as text: names of properties, and sections and
// names of preferences, in UTF-8. What AsFromText does is no loss here. The library must be
// started.
std::vector<std::string> LostInText(CallCard *card);

// Gets a yes if there is any.
void ConfirmLossInText(CallCard *card, Settings const &settings);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_CARD_TEXT_LOSS_H_
