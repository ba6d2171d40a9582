#ifndef ZOLT41_TOOLS_ZOLT_CARD_TEXT_LOSS_H_
#define ZOLT41_TOOLS_ZOLT_CARD_TEXT_LOSS_H_

#include <string>
#include <vector>

#include "tools/zolt/settings.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

// What would not come back of a card that is written as text: names of properties, and sections and
// names of preferences, in UTF-8. That text of every type comes back as 16-bit text, and bytes of
// no known type as DATA, is no loss here. The library must be started.
std::vector<std::string> LostInText(CallCard *card);

// Gets a yes if there is any.
void ConfirmLossInText(CallCard *card, Settings const &settings);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_CARD_TEXT_LOSS_H_
