#ifndef ZOLT41_INTERCHANGE_VCARD_TEXT_H_
#define ZOLT41_INTERCHANGE_VCARD_TEXT_H_

#include <string>
#include <string_view>

#include "zolt41/interchange/property_view.h"

namespace zolt {

// The text of a string property in UTF-8; U+FFFD stands for a lone surrogate. A line break of any
// kind is one LF; other control characters but tabs are left out. Empty if it is no string.
std::string VCardText(PropertyView const &property);

// Such a text as a value. In one of several parts a semicolon ends a part; else it is escaped.
enum class VCardParts { one, several };
std::string EscapedVCardText(std::string_view text, VCardParts parts);

// Such a text as the value of a parameter, in quotes.
std::string QuotedVCardText(std::string_view text);

// Adds a line with its end, folded between characters so that no line has more than 75 bytes.
void AddFolded(std::string_view line, std::string *card);

}  // namespace zolt

#endif  // ZOLT41_INTERCHANGE_VCARD_TEXT_H_
