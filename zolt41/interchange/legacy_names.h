#ifndef ZOLT41_INTERCHANGE_LEGACY_NAMES_H_
#define ZOLT41_INTERCHANGE_LEGACY_NAMES_H_

#include <cstdint>
#include <string>

namespace zolt {

// A preference that older cards keep under another name and section. Both names compare as
// AZStrEqual does.
struct LegacyName {
  char const *name;
  char const *section;
  char const *newName;
  uint32_t newSection;
  bool isEncodingMethod;  // its value is to go through CodecOfEncodingMethod
};

// Null if it is none of them.
LegacyName const *FindLegacyName(char const *name, char const *section);

// Whether any of them stands in a section of that name.
bool IsLegacySection(char const *section);

// The number, as text, of the codec that was told by a name; of a name that is not known the first
// character.
std::string CodecOfEncodingMethod(std::string const &method);

}  // namespace zolt

#endif  // ZOLT41_INTERCHANGE_LEGACY_NAMES_H_
