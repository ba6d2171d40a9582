#include "zolt41/interchange/card_text_check.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <string>
#include <string_view>

#include "zolt41/cards/blob_format.h"
#include "zolt41/cards/property_format.h"
#include "zolt41/cards/property_storage.h"
#include "zolt41/foundation/az_compare.h"
#include "zolt41/foundation/text_coding.h"
#include "zolt41/interchange/card_text_format.h"
#include "zolt41/interchange/card_text_import.h"
#include "zolt41/interchange/card_text_reader.h"
#include "zolt41/interchange/legacy_names.h"
#include "zolt41/platform/system/ascii_case.h"
#include "zolt41/prefs/stores.h"

namespace zolt {
namespace {

// The two lines before the first section.
constexpr uint32_t kHeadLines = 2;

bool EndsSearch(char byte) {
  return static_cast<unsigned char>(byte) < '\n';
}

bool EndsValue(char byte) {
  return static_cast<signed char>(byte) <= '\r';
}

bool HasBrokenEscape(std::string_view text) {
  for (size_t at = text.find('='); at != text.npos; at = text.find('=', at + 1)) {
    if (text.size() - at < 3 || !IsHexDigit(text[at + 1]) || !IsHexDigit(text[at + 2])) return true;
  }
  return false;
}

bool IsFlag(std::string_view name) {
  return std::ranges::any_of(kPropertyFlagNames, [&](std::string_view known) {
    return !known.empty() && AZStrEqual(known.data(), std::string(name).c_str()) != 0;
  });
}

bool HasUnknownFlag(std::string_view names) {
  while (!names.empty()) {
    size_t const end = std::min(names.find(','), names.size());
    if (!IsFlag(names.substr(0, end))) return true;
    names.remove_prefix(std::min(end + 1, names.size()));
  }
  return false;
}

// "=TYPE:FLAGS:VALUE" behind a name, of a line whose head was read.
struct LineParts {
  explicit LineParts(std::string_view line) {
    size_t const type = line.find(':', line.find('='));
    size_t const flagsEnd = line.find(':', type + 1);
    flags = line.substr(type + 1, flagsEnd - type - 1);
    value = line.substr(flagsEnd + 1);
  }
  std::string_view flags;
  std::string_view value;
};

std::string RestOf(FBasicRead *reader) {
  std::string rest;
  for (char byte = reader->GetByte(); byte != '\0'; byte = reader->GetByte()) {
    if (byte != '\r' && byte != '\n') rest += byte;
  }
  return rest;
}

// Whether the first two lines lead a reader on to a section.
bool HasSections(std::string_view text) {
  FMemoryRead reader(text.data(), static_cast<int32_t>(text.size()));
  ReadUpTo(&reader, ' ' - 1, 0);
  reader.GetByte();
  ReadUpTo(&reader, '0' - 1, 0);
  std::string name;
  return ReadSectionName(&reader, &name);
}

class CardTextCheck {
 public:
  CardTextCheck(std::string_view text, void (*tell)(void *, CardTextFinding const &), void *context)
      : text_(text), tell_(tell), context_(context) {}

  bool Run();

 private:
  enum class Place { between, properties, preferences };

  bool NextLine();
  void Tell(char const *what, bool lost);
  void TakeLine();
  void TakeSection();
  void TakeProperty();
  void CheckValue(PropertyHead const &head, CardValue kind, std::string const &rest);
  void CheckName(PropertyHead const &head, bool isText);
  void TakePreference();
  void EndSection(char const *why);
  void End(char const *why);
  bool IsKnown(std::string const &section) const;

  std::string_view text_;  // what is left of it
  void (*tell_)(void *, CardTextFinding const &);
  void *context_;
  std::string_view line_;
  uint32_t number_ = 0;
  bool hasEnd_ = false;
  bool ended_ = false;  // nothing more is read
  bool told_ = false;
  bool toldOfGap_ = false;
  bool hasCard_ = false;
  bool hasSections_ = false;
  bool knowsSection_ = true;
  Place place_ = Place::between;
  std::set<std::string> names_;  // with their flags, of properties
};

bool CardTextCheck::NextLine() {
  if (text_.empty()) return false;
  size_t const end = std::min(text_.find_first_of("\r\n"), text_.size());
  line_ = text_.substr(0, end);
  hasEnd_ = end < text_.size();
  text_.remove_prefix(end);
  text_.remove_prefix(text_.starts_with("\r\n") ? 2 : text_.empty() ? 0 : 1);
  number_++;
  return true;
}

void CardTextCheck::Tell(char const *what, bool lost) {
  tell_(context_, {number_, what, lost});
  told_ = true;
}

void CardTextCheck::EndSection(char const *why) {
  Tell(why, true);
  place_ = Place::between;
  toldOfGap_ = true;
}

void CardTextCheck::End(char const *why) {
  Tell(why, true);
  ended_ = true;
}

bool CardTextCheck::Run() {
  std::string_view const whole = text_;
  if (whole.find('\0') != whole.npos || !HasSections(whole)) return false;
  while (!ended_ && NextLine()) {
    if (number_ > kHeadLines) TakeLine();
  }
  if (!hasCard_) return false;
  PCardStorage card;
  bool const read = ImportCard(&card, whole.data(), static_cast<int32_t>(whole.size())) != 0;
  if (!read && !told_) Tell("the text is not read", true);
  return true;
}

void CardTextCheck::TakeLine() {
  bool const isHead = line_.starts_with('[');
  if (line_.empty() && place_ != Place::between) {
    place_ = Place::between;
    toldOfGap_ = false;
  } else if (place_ == Place::properties) {
    TakeProperty();
  } else if (isHead) {
    TakeSection();
  } else if (place_ == Place::preferences) {
    TakePreference();
  } else if (std::ranges::any_of(line_, EndsSearch)) {
    End("holds a control character; what is behind it is not read");
  } else if (!line_.empty() && !toldOfGap_) {
    Tell("stands in no section, and is not read", hasSections_);
    toldOfGap_ = true;
  }
}

void CardTextCheck::TakeSection() {
  size_t const end = line_.find(']');
  if (end == line_.npos || end > kLongestSectionName + 1) {
    return End("the name of a section has no end; what is behind it is not read");
  }
  if (std::ranges::any_of(line_, EndsSearch)) {
    return End("holds a control character; what is behind it is not read");
  }
  std::string const name(line_.substr(1, end - 1));
  bool const isCard = AZStrEqual(name.c_str(), kCardSection) != 0;
  place_ = isCard ? Place::properties : Place::preferences;
  hasCard_ = hasCard_ || isCard;
  hasSections_ = true;
  toldOfGap_ = false;
  knowsSection_ = isCard || IsKnown(name);
}

// Values of sections without a name stand right below "[Preferences]".
bool CardTextCheck::IsKnown(std::string const &section) const {
  WinPrefs *const store = GetSystemPrefs();
  return store == nullptr || store->SectionID(section.c_str(), 0) != -1 ||
         AZStrEqual(section.c_str(), kPreferencesSection) != 0 || IsLegacySection(section.c_str());
}

void CardTextCheck::TakeProperty() {
  std::string const line = "\n" + std::string(line_) + "\n";
  FMemoryRead reader(line.data(), static_cast<int32_t>(line.size()));
  PropertyHead head;
  if (!ReadPropertyHead(&reader, &head)) {
    return EndSection("is no property; the rest of the section is not read");
  }
  std::string value;
  CardValue const kind = ReadPropertyValue(&reader, head.type, &value);
  if (kind == CardValue::forbidden) {
    return End("bytes do not begin with <; nothing of the text is read");
  }
  CheckValue(head, kind, RestOf(&reader));
  CheckName(head, kind == CardValue::text);
}

void CardTextCheck::CheckValue(PropertyHead const &head, CardValue kind, std::string const &rest) {
  LineParts const parts(line_);
  bool const isHex = !IsTextInCard(head.type) && parts.value.starts_with('<');
  if (kind == CardValue::unfit) {
    Tell("its digits are damaged, and it is not read", true);
  } else if (!rest.empty() || std::ranges::any_of(parts.value, EndsValue)) {
    Tell("holds a byte at which it ends; what is behind it is not read", true);
  } else if (!isHex && HasBrokenEscape(parts.value)) {
    Tell("an escape in it is damaged", true);
  } else if (!hasEnd_) {
    Tell("has no line end: it may be cut", false);
  }
  if (HasUnknownFlag(parts.flags)) Tell("has a flag of no known name", true);
}

void CardTextCheck::CheckName(PropertyHead const &head, bool isText) {
  std::string key = head.name + '=' + std::to_string(head.flags);
  std::ranges::transform(key, key.begin(), FoldAscii);
  bool const isNew = names_.insert(std::move(key)).second;
  if (isText && !isNew) Tell("takes the place of the one of its name and flags before it", true);
}

void CardTextCheck::TakePreference() {
  std::string const line = std::string(line_) + "\n";
  FMemoryRead reader(line.data(), static_cast<int32_t>(line.size()));
  std::string name;
  if (!ReadToken(&reader, '=', &name)) {
    return EndSection("is no preference; the rest of the section is not read");
  }
  if (!hasEnd_) return End("has no line end, without which no preference of the text is read");
  if (!knowsSection_) Tell("stands in a section of no known name", false);
  knowsSection_ = true;
  size_t const room = line_.size() - name.size() - 1;
  if (name.size() >= kSlotNameSize) Tell("its name is cut to 31 bytes", true);
  if (ReadPreference(&reader).size() < room) Tell("only a part of its value is read", true);
}

}  // namespace

int32_t CheckCardText(void const *data, int32_t size,
                      void (*tell)(void *context, CardTextFinding const &finding), void *context) {
  if (data == nullptr || size <= 0) return 0;
  return CardTextCheck({static_cast<char const *>(data), static_cast<size_t>(size)}, tell, context)
      .Run();
}

}  // namespace zolt
