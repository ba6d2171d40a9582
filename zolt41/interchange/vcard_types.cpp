#include "zolt41/interchange/vcard_types.h"

#include <utility>

namespace zolt {
namespace {

struct TypeRow {
  uint32_t flag;
  char const *name;
  bool in4;
};

constexpr TypeRow kTypes[] = {
    {PropertyDom, "dom", false},       {PropertyIntl, "intl", false},
    {PropertyPostal, "postal", false}, {PropertyParcel, "parcel", false},
    {PropertyHome, "home", true},      {PropertyWork, "work", true},
    {PropertyVoice, "voice", true},    {PropertyFax, "fax", true},
    {PropertyMsg, "msg", false},       {PropertyCell, "cell", true},
    {PropertyPager, "pager", true},    {PropertyBbs, "bbs", false},
    {PropertyModem, "modem", false},   {PropertyCar, "car", false},
    {PropertyIsdn, "isdn", false},     {PropertyVideo, "video", true},
    {PropertyPref, "pref", false},
};

}  // namespace

std::string VCardTypes(std::string first, uint32_t flags, VCardProfile profile) {
  std::string types = std::move(first);
  for (TypeRow const &row : kTypes) {
    if ((flags & row.flag) == 0 || (profile == VCard4 && !row.in4)) continue;
    if (!types.empty()) types += ',';
    types += row.name;
  }
  if (!types.empty()) types.insert(0, ";TYPE=");
  // There the one to prefer has a parameter of its own.
  bool const isPreferred = profile == VCard4 && (flags & PropertyPref) != 0;
  return isPreferred ? types + ";PREF=1" : types;
}

}  // namespace zolt
