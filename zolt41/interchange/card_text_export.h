#ifndef ZOLT41_INTERCHANGE_CARD_TEXT_EXPORT_H_
#define ZOLT41_INTERCHANGE_CARD_TEXT_EXPORT_H_

#include <cstdint>

#include "zolt41/cards/property_storage.h"
#include "zolt41/platform/system/api.h"

// Cards as text (docs/formats/card_text.md). What is written is the property list as it stands: a
// CallCard puts its store into it by SavePrefs. Names of preference sections are those of the
// system store; without it, or where it does not know a section, values follow under the section
// before. Of a preference 1,023 bytes are written.

// Writes the file `path` as a whole beside the old one, which it then replaces. Gives the bytes
// written, or -1, with the old file as it was; ZOLTLastFailure tells why.
ZOLT_API int32_t ExportCard(PCardStorage *card, char const *path);
// Gives the text as a global block of exactly its size, which the caller frees, and stores the
// size; null, with 0 as the size, without memory.
ZOLT_API void *ExportCard(PCardStorage *card, uint32_t *size);
// The same by way of a scratch file in the user's own temporary directory; null, too, if that
// cannot be written and read. One call at a time for each user.
ZOLT_API void *ExportCardData(PCardStorage *card, uint32_t *size);

#endif  // ZOLT41_INTERCHANGE_CARD_TEXT_EXPORT_H_
