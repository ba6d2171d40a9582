#ifndef ZOLT41_TOOLS_ZOLT_CARD_PREFERENCES_H_
#define ZOLT41_TOOLS_ZOLT_CARD_PREFERENCES_H_

#include <vector>

#include "tools/zolt/card_documents.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

// What the card itself carries, in its order.
std::vector<CardPreference> PreferencesOf(CallCard *card);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_CARD_PREFERENCES_H_
