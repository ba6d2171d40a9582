#ifndef ZOLT41_INTERCHANGE_CARD_TEXT_LOAD_H_
#define ZOLT41_INTERCHANGE_CARD_TEXT_LOAD_H_

#include <cstdint>

#include "zolt41/cards/property_storage.h"
#include "zolt41/interchange/basic_read.h"

namespace zolt {

// As ImportCard, of which this is the work. Throws std::bad_alloc.
bool AddCardText(PCardStorage *card, FBasicRead *reader);

inline constexpr int32_t kCardTextUnread = -1;

// As ImportCard into a card that is empty, but the first two lines make no property where they only
// repeat one of the card's, or say that there is none: so a card that is written and loaded again
// and again does not grow. Reads the open file from its beginning and closes it. kCardTextUnread,
// with ZOLTLastFailure set, if it cannot be read to its end, or without memory; then the card may
// have a part of it.
int32_t LoadCardText(PCardStorage *card, uint32_t file);

}  // namespace zolt

#endif  // ZOLT41_INTERCHANGE_CARD_TEXT_LOAD_H_
