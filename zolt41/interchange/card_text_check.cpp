#include "zolt41/interchange/card_text_check.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zolt41/cards/blob_format.h"
#include "zolt41/cards/property_format.h"
#include "zolt41/cards/property_storage.h"
#include "zolt41/foundation/az_compare.h"
#include "zolt41/foundation/text_coding.h"
#include "zolt41/interchange/card_text_format.h"
#include "zolt41/interchange/card_text_load.h"
#include "zolt41/interchange/card_text_reader.h"
#include "zolt41/interchange/flag_sets.h"
#include "zolt41/interchange/legacy_names.h"
#include "zolt41/interchange/property_view.h"
#include "zolt41/platform/system/with_memory.h"
#include "zolt41/prefs/stores.h"

namespace zolt {
namespace {

// One of the two lines before the first section.
struct HeadLine {
  char const *property;
  std::string_view absent;
  char const *whatIsLost;
};

constexpr HeadLine kHeadLines[] = {
    {kAddressProperty, kNoAddress, "the address in it is not kept as it stands"},
    {kConferenceProperty, kNoConference, "the conference id in it is not kept as it stands"}};

bool EndsSearch(char byte) {
  return static_cast<unsigned char>(byte) < '\n';
}

bool EndsAddress(char byte) {
  return static_cast<signed char>(byte) < ' ';
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

struct Precedes {
  bool operator()(std::string const &a, std::string const &b) const {
    return AZStrCompare(a.c_str(), b.c_str()) < 0;
  }
};

// A line that is a property.
struct PropertyLine {
  uint32_t line;
  uint32_t flags;
  bool isText;
  bool isEmpty;  // makes none
  bool isBlank;  // nothing stands there
};

// Whether the card says the same, or more than a head line has room for.
bool Holds(PCardStorage *card, char const *name, std::string_view line) {
  for (uint32_t i = 0; i < card->PropCount(); i++) {
    PropertyView const property = PropertyAt(card, i);
    if (AZStrEqual(property.name, name) == 0 || !IsString(property.type)) continue;
    std::string const text = LocalText(property);
    std::string_view const shown = std::string_view(text).substr(0, kHeadValueSize);
    if (text == line || shown.substr(0, shown.find_first_of("\r\n")) == line) return true;
  }
  return false;
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
  explicit CardTextCheck(std::string_view text) : text_(text) {}

  // What is found, in the order of the lines. False if it is no card text.
  bool Run(std::vector<CardTextFinding> *findings);

 private:
  enum class Place { between, properties, preferences };

  bool NextLine();
  void Tell(char const *what, bool lost);
  void TakeHeadLine(PCardStorage *card);
  void TakeLine();
  void TakeSection();
  void TakeProperty();
  void CheckValue(PropertyHead const &head, CardValue kind, std::string const &rest);
  void CheckReplaced();
  void CheckReplaced(std::span<PropertyLine const> sameName);
  void TakePreference();
  void EndSection(char const *why);
  void End(char const *why);
  bool IsKnown() const;
  bool IsRepeated(std::string const &name);

  std::string_view text_;  // what is left of it
  std::vector<CardTextFinding> findings_;
  std::string_view line_;
  uint32_t number_ = 0;
  bool hasEnd_ = false;
  bool ended_ = false;  // nothing more is read
  bool toldOfGap_ = false;
  bool hasCard_ = false;
  bool hasSections_ = false;
  bool knowsSection_ = true;
  Place place_ = Place::between;
  std::string section_;
  int32_t sectionId_ = 0;
  std::map<std::string, std::vector<PropertyLine>, Precedes> properties_;  // by name
  FlagSets replacing_;  // of the name that is looked at
  std::map<uint32_t, std::set<std::string, Precedes>> preferences_;  // by section
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
  findings_.push_back({number_, what, lost});
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

bool CardTextCheck::Run(std::vector<CardTextFinding> *findings) {
  std::string_view const whole = text_;
  if (whole.find('\0') != whole.npos || !HasSections(whole)) return false;
  PCardStorage card;
  FMemoryRead reader(whole.data(), static_cast<int32_t>(whole.size()));
  bool const read = AddCardText(&card, &reader);
  while (!ended_ && NextLine()) {
    if (number_ > std::size(kHeadLines)) {
      TakeLine();
    } else {
      TakeHeadLine(&card);
    }
  }
  if (!hasCard_) return false;
  CheckReplaced();
  if (!read && findings_.empty()) Tell("the text is not read", true);
  *findings = std::move(findings_);
  return true;
}

void CardTextCheck::TakeHeadLine(PCardStorage *card) {
  if (number_ == 1 && std::ranges::any_of(line_, EndsAddress)) {
    return Tell("the address ends within it; the rest is taken for the conference id", true);
  }
  HeadLine const &head = kHeadLines[number_ - 1];
  if (line_.empty() || line_ == head.absent || Holds(card, head.property, line_)) return;
  Tell(head.whatIsLost, true);
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
  section_ = name;
  WinPrefs *const store = GetSystemPrefs();
  sectionId_ = store == nullptr ? 0 : store->SectionID(name.c_str(), 0);
  knowsSection_ = isCard || IsKnown();
}

// Values of sections without a name stand right below "[Preferences]".
bool CardTextCheck::IsKnown() const {
  return sectionId_ != -1 || AZStrEqual(section_.c_str(), kPreferencesSection) != 0 ||
         IsLegacySection(section_.c_str());
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
  if (kind == CardValue::unfit) return;
  bool const isText = kind == CardValue::text;
  bool const isEmpty = isText && (value.empty() || value.front() == '\0');
  bool const isBlank = isEmpty && LineParts(line_).value.empty();
  properties_[head.name].push_back({number_, head.flags, isText, isEmpty, isBlank});
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
  } else if (!isHex && parts.value.find("=00") != parts.value.npos) {
    Tell("an escape in it stands for a NUL; what is behind it is not read", true);
  } else if (!hasEnd_) {
    Tell("has no line end: it may be cut", false);
  }
  if (HasUnknownFlag(parts.flags)) Tell("has a flag of no known name", true);
}

// Text takes the place of all before it that have its flags, whatever their type; bytes stand
// beside them. So each goes for the next text whose flags are all among its own.
void CardTextCheck::CheckReplaced(std::span<PropertyLine const> sameName) {
  std::vector<bool> replaces(sameName.size());
  replacing_.Clear();
  for (size_t i = sameName.size(); i-- > 0;) {
    PropertyLine const &property = sameName[i];
    uint32_t const next = replacing_.LowestWithin(property.flags);
    if (!property.isEmpty && next != FlagSets::kNone) replaces[next] = true;
    if (property.isText) replacing_.Add(property.flags, static_cast<uint32_t>(i));
  }
  for (size_t i = 0; i < sameName.size(); i++) {
    uint32_t const line = sameName[i].line;
    if (replaces[i]) {
      findings_.push_back(
          {line, "takes the place of one of its name before it that has all its flags", true});
    } else if (sameName[i].isBlank) {
      findings_.push_back({line, "is empty, and makes no property", false});
    }
  }
}

void CardTextCheck::CheckReplaced() {
  for (auto const &[name, lines] : properties_) CheckReplaced(lines);
  std::ranges::stable_sort(findings_, {}, &CardTextFinding::line);
}

// Whether one before it, also under an old name, is the same preference.
bool CardTextCheck::IsRepeated(std::string const &name) {
  LegacyName const *const legacy = FindLegacyName(name.c_str(), section_.c_str());
  if (legacy != nullptr) return !preferences_[legacy->newSection].insert(legacy->newName).second;
  if (GetSystemPrefs() == nullptr) return false;
  return !preferences_[static_cast<uint32_t>(sectionId_)].insert(name).second;
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
  if (IsRepeated(name)) Tell("takes the place of the preference of its name before it", true);
  size_t const room = line_.size() - name.size() - 1;
  if (name.size() >= kSlotNameSize) Tell("its name is cut to 31 bytes", true);
  if (ReadPreference(&reader).size() < room) Tell("only a part of its value is read", true);
}

}  // namespace

int32_t CheckCardText(void const *data, int32_t size,
                      void (*tell)(void *context, CardTextFinding const &finding), void *context) {
  if (data == nullptr || size <= 0) return 0;
  std::vector<CardTextFinding> findings;
  int32_t const isCard = WithMemory(-1, [&] {
    CardTextCheck check({static_cast<char const *>(data), static_cast<size_t>(size)});
    return int32_t{check.Run(&findings)};
  });
  for (CardTextFinding const &finding : findings) tell(context, finding);
  return isCard;
}

}  // namespace zolt
