#ifndef ZOLT41_INTERCHANGE_CARD_TEXT_IMPORT_H_
#define ZOLT41_INTERCHANGE_CARD_TEXT_IMPORT_H_

#include <cstdint>

#include "zolt41/cards/property_storage.h"
#include "zolt41/interchange/basic_read.h"
#include "zolt41/platform/system/api.h"

// Cards from text (docs/formats/card_text.md).
//
// An import adds to what the card holds: a value of text replaces those of its name with its flags,
// any other stands beside them. Preferences become one property more, with which the card's own
// Recalculate is called; of names that older cards used today's are stored. Names of sections are
// looked up in the system store: without one, only those preferences are kept that have an old
// name.
//
// 1, or 0 if the source is empty or cannot be read, if a value is not in hex whose type must be, or
// if the line of a preference lacks its end: then the properties before that are in the card, and
// no preferences. A line of no meaning ends its section; one of a value in hex that is none is
// passed over. What a text costs grows with its size, and for each name of text in it with the
// properties that the card had.
//
// 0, too, with 3 of ZOLTLastFailure, where memory or the 2 GiB of a list do not suffice: then the
// card may hold a part of the properties and of what they replace, and is not to be saved. Any
// other 0 of a text in memory leaves no failure.
ZOLT_API int32_t ImportCard(PCardStorage *card, FBasicRead &reader);
// From a file; ZOLTLastFailure tells why it cannot be opened.
ZOLT_API int32_t ImportCard(PCardStorage *card, char const *path);
// From `size` bytes at `data`, which stay the caller's.
ZOLT_API int32_t ImportCard(PCardStorage *card, void const *data, int32_t size);
// From the first `size` bytes of a global block, which stays the caller's, by way of a scratch file
// in the user's own temporary directory: 0, too, if that cannot be written, or if such a file is
// there already. One call at a time for each user.
ZOLT_API int32_t ImportCardData(PCardStorage *card, void *handle, uint32_t size);

#endif  // ZOLT41_INTERCHANGE_CARD_TEXT_IMPORT_H_
