#ifndef ZOLT41_INTERCHANGE_VCARD_EXPORT_H_
#define ZOLT41_INTERCHANGE_VCARD_EXPORT_H_

#include <cstdint>

#include "zolt41/cards/property_storage.h"
#include "zolt41/platform/system/api.h"

// The vCard to write; docs/formats/vcard.md describes them.
enum VCardProfile : int32_t {
  VCardClassic = 0,  // without a version, as old readers know it; 19 properties at most
  VCard3 = 1,        // 3.0, RFC 2426
  VCard4 = 2,        // 4.0, RFC 6350
};

// Both write the file `path` as a whole beside the old one, which it then replaces. 1, or 0, with
// the old file as it was; ZOLTLastFailure tells why. The card is taken as it stands in its list.

// The classic vCard.
ZOLT_API int32_t ExportVCard(PCardStorage *card, char const *path);

// The vCard of a profile; 0 for any other number. In 3.0 and 4.0 every property of a name goes out,
// in UTF-8, but none that is local, by its name or its flag. `key` is null or the 32 bytes of the
// card's key, which make the UID; 32 bytes of 0 count as none. The classic vCard has
// no UID.
ZOLT_API int32_t ExportVCardAs(PCardStorage *card, char const *path, VCardProfile profile,
                               char const *key);

#endif  // ZOLT41_INTERCHANGE_VCARD_EXPORT_H_
