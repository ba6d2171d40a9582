#ifndef ZOLT41_CARDS_PROPERTY_FORMAT_H_
#define ZOLT41_CARDS_PROPERTY_FORMAT_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

// What stands in a property list; docs/formats/property_list.md describes it.

enum PropertyType : uint32_t {
  PropertyAscii = 0,
  PropertySound = 1,
  PropertyBitmap = 2,
  PropertyDateTime = 3,
  PropertyTimeZone = 4,
  PropertyUrl = 5,
  PropertyLocation = 6,
  PropertyTemplate = 7,
  PropertyData = 8,
  PropertyUnicode = 0x80000000,  // its high bit alone decides
};

// Bits of a property's flags.
enum PropertyFlag : uint32_t {
  PropertyDom = 0x1,
  PropertyIntl = 0x2,
  PropertyPostal = 0x4,
  PropertyParcel = 0x8,
  PropertyHome = 0x10,
  PropertyWork = 0x20,
  PropertyPref = 0x40,
  PropertyVoice = 0x80,
  PropertyFax = 0x100,
  PropertyMsg = 0x200,
  PropertyCell = 0x400,
  PropertyPager = 0x800,
  PropertyBbs = 0x1000,
  PropertyModem = 0x2000,
  PropertyCar = 0x4000,
  PropertyIsdn = 0x8000,
  PropertyVideo = 0x10000,
  PropertyLocal = 0x80000000,
};

namespace zolt {

// By type, and by bit; empty where a bit has no name.
inline constexpr std::array<std::string_view, 9> kPropertyTypeNames = {
    "ASCII", "SOUND", "BITMAP", "DATETIME", "TIMEZONE", "URL", "LOCATION", "TEMPLATE", "DATA"};
inline constexpr std::string_view kUnicodeTypeName = "UNICODE";
inline constexpr std::array<std::string_view, 32> kPropertyFlagNames = {
    "DOM",   "INTL", "POSTAL", "PARCEL", "HOME", "WORK",  "PREF", "VOICE", "FAX", "MSG",   "CELL",
    "PAGER", "BBS",  "MODEM",  "CAR",    "ISDN", "VIDEO", "",     "",      "",    "",      "",
    "",      "",     "",       "",       "",     "",      "",     "",      "",    "_local"};

inline constexpr char kCardPrefsProperty[] = "L-BRNDL-TYPREFS";
inline constexpr char kAddressProperty[] = "X-BRNDL-IP";
inline constexpr char kConferenceProperty[] = "X-BRNDL-CONFID";
inline constexpr char kLocalPrefix[] = "L-";

// Sizes and offsets in bytes. A list is its count and the records, one behind the other.
inline constexpr uint32_t kListHead = 4;
inline constexpr uint32_t kRecordHead = 12;  // type, flags, length of the value
inline constexpr uint32_t kTypeOffset = 0;
inline constexpr uint32_t kFlagsOffset = 4;
inline constexpr uint32_t kLengthOffset = 8;
inline constexpr uint32_t kLongestPropertyName = 65531;
inline constexpr uint32_t kSmallestRecord = 16;
// In characters, of a text whose 16-bit form has no more bytes than a length can tell.
inline constexpr size_t kLongestText = (0x7FFFFFFF - 2) / 2;

// What a name takes with its NUL and padding, and a record with such a name.
constexpr uint32_t NameArea(uint32_t nameLength) {
  return (nameLength + 4) & 0xFFFC;
}
constexpr uint64_t RecordSize(uint32_t nameArea, uint32_t length) {
  return (uint64_t{nameArea} + length + 15) & ~uint64_t{3};
}

constexpr bool IsUnicode(uint32_t type) {
  return (type & PropertyUnicode) != 0;
}
constexpr bool IsString(uint32_t type) {
  return IsUnicode(type) || type == PropertyAscii || type == PropertyUrl;
}

}  // namespace zolt

#endif  // ZOLT41_CARDS_PROPERTY_FORMAT_H_
