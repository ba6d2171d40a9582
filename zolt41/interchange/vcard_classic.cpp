#include "zolt41/interchange/vcard_classic.h"

#include <string_view>

#include "zolt41/cards/property_format.h"
#include "zolt41/foundation/text_coding.h"
#include "zolt41/interchange/property_view.h"
#include "zolt41/interchange/vcard_profile.h"

namespace zolt {
namespace {

constexpr std::string_view kLineEnd = "\r\n";

struct ClassicRow {
  char const *name;
  uint32_t flags;
  char const *suffix;
};

// A title goes out twice: readers have come to expect the second place, too.
constexpr ClassicRow kClassicRows[] = {
    {"LABEL", PropertyHome, ";POSTAL;HOME"},
    {"LABEL", PropertyWork, ";POSTAL;WORK"},
    {"FN", 0, ""},
    {"TEL", PropertyHome, ";HOME"},
    {"TEL", PropertyWork, ";WORK"},
    {"FAX", PropertyHome, ";HOME"},
    {"FAX", PropertyWork, ";WORK"},
    {"TITLE", 0, ""},
    {"ORG", 0, ""},
    {"EMAIL", PropertyHome, ";INTERNET;HOME"},
    {"EMAIL", PropertyWork, ";INTERNET;WORK"},
    {"URL", PropertyHome, ";HOME"},
    {"URL", PropertyWork, ";WORK"},
    {"TITLE", 0, ""},
    {kAddressProperty, 0, ""},
    {kTypeNameProperty, 0, ""},
    {"LOGO", 0, ";TYPE=GIF"},
    {"PHOTO", 0, ";TYPE=GIF"},
    {"SOUND", 0, ";TYPE=WAVE"},
};

// What stands behind a line's name and suffix. The type of the property decides, not the row.
std::string ClassicValue(PropertyView const &property) {
  if (IsUnicode(property.type)) {
    return ";ENCODING=QUOTED-PRINTABLE;CHARSET=ISO-8859-1:" + QuotedPrintable(LocalText(property));
  }
  if (IsString(property.type)) return ":" + LocalText(property);
  if (property.type != PropertySound && property.type != PropertyBitmap) return "";
  std::string value = ";ENCODING=BASE64:";
  value += kLineEnd;
  value += Base64InLines(property.value);
  return value += kLineEnd;
}

}  // namespace

std::string ClassicVCard(PCardStorage *card) {
  std::string text = "BEGIN:VCARD\r\n";
  for (ClassicRow const &row : kClassicRows) {
    uint32_t const index = card->FindProp(row.name, row.flags, row.flags, 0, nullptr);
    if (index >= card->PropCount()) continue;
    text += row.name;
    text += row.suffix;
    text += ClassicValue(PropertyAt(card, index));
    text += kLineEnd;
  }
  return text += "END:VCARD\r\n";
}

}  // namespace zolt
