#include "zolt41/interchange/vcard_profile.h"

#include <algorithm>
#include <array>
#include <deque>
#include <string_view>
#include <utility>
#include <vector>

#include "zolt41/cards/property_format.h"
#include "zolt41/foundation/text_coding.h"
#include "zolt41/interchange/media_type.h"
#include "zolt41/interchange/property_view.h"
#include "zolt41/interchange/vcard_text.h"
#include "zolt41/interchange/vcard_types.h"

namespace zolt {
namespace {

constexpr size_t kKeySize = 32;
constexpr uint32_t kPlaceFlags = PropertyHome | PropertyWork;

struct TextRow {
  char const *property;
  char const *line;
  uint32_t flags;  // those that the line can tell
  uint32_t added;  // those that each such property has besides its own
  VCardParts parts = VCardParts::one;
  char const *type3 = "";  // in 3.0 each such line has this type
};

constexpr TextRow kTextRows[] = {
    {"TEL", "TEL", kPhoneFlags, 0},
    {"FAX", "TEL", kPhoneFlags, PropertyFax},
    {"EMAIL", "EMAIL", kCommonFlags, 0, VCardParts::one, "internet"},
    {"URL", "URL", kCommonFlags, 0},
    {"TITLE", "TITLE", 0, 0},
    {"ORG", "ORG", 0, 0, VCardParts::several},
    {kAddressProperty, kAddressProperty, 0, 0},
    {kConferenceProperty, kConferenceProperty, 0, 0},
    {kTypeNameProperty, kTypeNameProperty, 0, 0},
};

constexpr char const *kMediaNames[] = {"PHOTO", "LOGO", "SOUND"};

// What stands in for a name that is missing, the first that there is.
constexpr char const *kNameSources[] = {kTypeNameProperty, "ORG", "EMAIL"};
constexpr char kUnknownName[] = "Unknown";

struct Text {
  uint32_t flags;
  std::string text;
};

std::string Trimmed(std::string const &text) {
  constexpr char kBlanks[] = " \t\n";
  size_t const first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

// Of a name of which only the whole is known the last word is the family's.
std::string NameParts(std::string const &whole) {
  std::string const name = Trimmed(whole);
  size_t const blank = name.rfind(' ');
  size_t const family = blank == std::string::npos ? 0 : blank + 1;
  std::string const given = Trimmed(name.substr(0, family));
  return EscapedVCardText(name.substr(family), VCardParts::one) + ';' +
         EscapedVCardText(given, VCardParts::one) + ";;;";
}

// All seven parts. A text that has none is taken for a street.
std::string AddressParts(std::string const &text) {
  auto const given = static_cast<size_t>(std::ranges::count(text, ';'));
  std::string const parts = EscapedVCardText(text, VCardParts::several);
  if (given == 0) return ";;" + parts + ";;;;";
  return parts + std::string(given < 6 ? 6 - given : 0, ';');
}

class Writer {
 public:
  Writer(PCardStorage *card, VCardProfile profile) : card_(card), profile_(profile) {}

  std::string Card(char const *key) {
    Add("BEGIN", "VCARD");
    Add("VERSION", Is4() ? "4.0" : "3.0");
    AddNames();
    for (TextRow const &row : kTextRows) AddTexts(row);
    if (Is4()) {
      AddAddressesWithLabels();
    } else {
      AddAddressesAndLabels();
    }
    for (char const *const name : kMediaNames) AddMedia(name);
    AddUid(key);
    Add("END", "VCARD");
    return std::move(text_);
  }

 private:
  bool Is4() const { return profile_ == VCard4; }
  std::vector<PropertyView> All(char const *name) const;
  std::vector<Text> AllTexts(char const *name) const;
  std::string NameInstead() const;
  void Add(std::string const &head, std::string_view value);
  void AddNames();
  void AddTexts(TextRow const &row);
  void AddAddressesAndLabels();
  void AddAddressesWithLabels();
  void AddAddress(uint32_t flags, std::string const &label, std::string const &parts);
  void AddMedia(char const *name);
  void AddInline(std::string const &name, std::string_view bytes);
  void AddUid(char const *key);

  PCardStorage *card_;
  VCardProfile profile_;
  std::string text_;
};

std::vector<PropertyView> Writer::All(char const *name) const {
  std::vector<PropertyView> all;
  uint32_t const count = card_->PropCount();
  for (uint32_t i = card_->FindProp(name, 0, 0, 0, nullptr); i < count;
       i = card_->FindProp(name, 0, 0, i + 1, nullptr)) {
    PropertyView const property = PropertyAt(card_, i);
    if ((property.flags & PropertyLocal) == 0) all.push_back(property);
  }
  return all;
}

// Those that are not blank.
std::vector<Text> Writer::AllTexts(char const *name) const {
  std::vector<Text> texts;
  for (PropertyView const &property : All(name)) {
    std::string text = VCardText(property);
    if (!Trimmed(text).empty()) texts.push_back({property.flags, std::move(text)});
  }
  return texts;
}

void Writer::Add(std::string const &head, std::string_view value) {
  std::string line = head + ':';
  line += value;
  AddFolded(line, &text_);
}

std::string Writer::NameInstead() const {
  for (char const *const source : kNameSources) {
    std::vector<Text> const texts = AllTexts(source);
    if (!texts.empty()) return texts.front().text;
  }
  return kUnknownName;
}

void Writer::AddNames() {
  std::vector<Text> names = AllTexts("FN");
  if (names.empty()) names.push_back({0, NameInstead()});
  std::vector<Text> const parts = AllTexts("N");
  Add("N", parts.empty() ? NameParts(names.front().text)
                         : EscapedVCardText(parts.front().text, VCardParts::several));
  for (Text const &name : names) Add("FN", EscapedVCardText(name.text, VCardParts::one));
}

void Writer::AddTexts(TextRow const &row) {
  for (Text const &text : AllTexts(row.property)) {
    uint32_t const flags = (text.flags | row.added) & row.flags;
    Add(row.line + VCardTypes(Is4() ? "" : row.type3, flags, profile_),
        EscapedVCardText(text.text, row.parts));
  }
}

void Writer::AddAddressesAndLabels() {
  for (Text const &address : AllTexts("ADR")) {
    AddAddress(address.flags, "", AddressParts(address.text));
  }
  for (Text const &label : AllTexts("LABEL")) {
    Add("LABEL" + VCardTypes("", label.flags & kPostFlags, profile_),
        EscapedVCardText(label.text, VCardParts::one));
  }
}

// A label belongs to an address of the same place. Where there is none, it is one of its own, of
// which the label is the street, too, for readers that know no such parameter.
void Writer::AddAddressesWithLabels() {
  std::array<std::deque<Text>, 4> labels;
  auto const place = [](uint32_t flags) { return (flags & kPlaceFlags) / PropertyHome; };
  for (Text &label : AllTexts("LABEL")) labels[place(label.flags)].push_back(std::move(label));
  for (Text const &address : AllTexts("ADR")) {
    std::deque<Text> &ofPlace = labels[place(address.flags)];
    std::string label;
    if (!ofPlace.empty()) {
      label = ofPlace.front().text;
      ofPlace.pop_front();
    }
    AddAddress(address.flags, label, AddressParts(address.text));
  }
  for (std::deque<Text> const &ofPlace : labels) {
    for (Text const &label : ofPlace) {
      std::string const street = EscapedVCardText(label.text, VCardParts::one);
      AddAddress(label.flags, label.text, ";;" + street + ";;;;");
    }
  }
}

void Writer::AddAddress(uint32_t flags, std::string const &label, std::string const &parts) {
  std::string head = "ADR" + VCardTypes("", flags & kPostFlags, profile_);
  if (!label.empty()) head += ";LABEL=" + QuotedVCardText(label);
  Add(head, parts);
}

// Text in such a property is the address of the thing.
void Writer::AddMedia(char const *name) {
  for (PropertyView const &property : All(name)) {
    std::string const address = VCardText(property);
    if (!address.empty()) {
      Add(Is4() ? name : std::string(name) + ";VALUE=uri",
          EscapedVCardText(address, VCardParts::one));
    } else if (!IsString(property.type) && !property.value.empty()) {
      AddInline(name, property.value);
    }
  }
}

void Writer::AddInline(std::string const &name, std::string_view bytes) {
  MediaType const *const type = MediaTypeOf(bytes);
  if (Is4()) {
    // The comma is escaped as in every value: readers cut the value there otherwise.
    std::string_view const media = type == nullptr ? "application/octet-stream" : type->name;
    return Add(name, "data:" + std::string(media) + ";base64\\," + Base64(bytes));
  }
  std::string const parameter = type == nullptr ? "" : ";TYPE=" + std::string(type->vcard3);
  Add(name + ";ENCODING=b" + parameter, Base64(bytes));
}

void Writer::AddUid(char const *key) {
  if (key == nullptr) return;
  std::string_view bytes(key, kKeySize);
  bytes = bytes.substr(0, bytes.find_last_not_of('\0') + 1);
  if (bytes.empty()) return;
  // Any byte may stand in a key.
  std::string digits;
  AppendHex(bytes, &digits);
  Add(Is4() ? "UID;VALUE=text" : "UID", digits);
}

}  // namespace

std::string ModernVCard(PCardStorage *card, VCardProfile profile, char const *key) {
  return Writer(card, profile).Card(key);
}

}  // namespace zolt
