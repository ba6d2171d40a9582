#ifndef ZOLT41_INTERCHANGE_CARD_TEXT_FORMAT_H_
#define ZOLT41_INTERCHANGE_CARD_TEXT_FORMAT_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "zolt41/cards/property_format.h"

namespace zolt {

// Card text; docs/formats/card_text.md describes it.

inline constexpr std::string_view kLineEnd = "\r\n";
inline constexpr char kCardSection[] = "Card Infos";
inline constexpr char kPreferencesSection[] = "Preferences";
inline constexpr char kNoAddress[] = "0.0.0.0";
inline constexpr char kNoConference[] = "0";

// What the first two lines hold of their properties, in bytes.
inline constexpr int32_t kHeadValueSize = 64;

// What a reader takes, in bytes.
inline constexpr size_t kLongestHeadLine = 255;
inline constexpr size_t kLongestSectionName = 64;
inline constexpr size_t kLongestToken = 63;
inline constexpr size_t kLongestPreference = 1023;

// Whether the value of a property that is not Unicode is written as text, not in hex.
constexpr bool IsTextInCard(uint32_t type) {
  return type == PropertyAscii || type == PropertyDateTime || type == PropertyUrl ||
         type == PropertyLocation;
}

}  // namespace zolt

#endif  // ZOLT41_INTERCHANGE_CARD_TEXT_FORMAT_H_
