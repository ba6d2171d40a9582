#ifndef ZOLT41_INTERCHANGE_VCARD_CLASSIC_H_
#define ZOLT41_INTERCHANGE_VCARD_CLASSIC_H_

#include <string>

#include "zolt41/cards/property_storage.h"

namespace zolt {

// The vCard that has no version.
std::string ClassicVCard(PCardStorage *card);

}  // namespace zolt

#endif  // ZOLT41_INTERCHANGE_VCARD_CLASSIC_H_
