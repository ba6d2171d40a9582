#ifndef ZOLT41_INTERCHANGE_VCARD_TYPES_H_
#define ZOLT41_INTERCHANGE_VCARD_TYPES_H_

#include <cstdint>
#include <string>

#include "zolt41/cards/property_format.h"
#include "zolt41/interchange/vcard_export.h"

namespace zolt {

// Flags that mean something on a line of such a kind.
inline constexpr uint32_t kCommonFlags = PropertyHome | PropertyWork | PropertyPref;
inline constexpr uint32_t kPhoneFlags = kCommonFlags | PropertyVoice | PropertyFax | PropertyMsg |
                                        PropertyCell | PropertyPager | PropertyBbs | PropertyModem |
                                        PropertyCar | PropertyIsdn | PropertyVideo;
inline constexpr uint32_t kPostFlags =
    kCommonFlags | PropertyDom | PropertyIntl | PropertyPostal | PropertyParcel;

// The parameters of a line, each with a semicolon before it, that tell its types: `first`, if it is
// not empty, and these flags as far as the profile knows them. "" if there are none.
std::string VCardTypes(std::string first, uint32_t flags, VCardProfile profile);

}  // namespace zolt

#endif  // ZOLT41_INTERCHANGE_VCARD_TYPES_H_
