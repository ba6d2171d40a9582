#ifndef ZOLT41_INTERCHANGE_VCARD_PROFILE_H_
#define ZOLT41_INTERCHANGE_VCARD_PROFILE_H_

#include <string>

#include "zolt41/interchange/vcard_export.h"

namespace zolt {

inline constexpr char kTypeNameProperty[] = "X-BRNDL-TYNAME";

// The vCard of a profile other than the classic one; `key` is as in ExportVCardAs.
std::string ModernVCard(PCardStorage *card, VCardProfile profile, char const *key);

}  // namespace zolt

#endif  // ZOLT41_INTERCHANGE_VCARD_PROFILE_H_
