#include "zolt41/interchange/vcard_text.h"

#include "zolt41/cards/property_format.h"
#include "zolt41/platform/system/codepage.h"

namespace zolt {
namespace {

constexpr size_t kLongestLine = 75;
constexpr char32_t kReplacement = 0xFFFD;

bool IsSurrogate(char16_t unit) {
  return unit >= 0xD800 && unit < 0xE000;
}

// The character at `*place`, which moves behind it.
char32_t TakeCharacter(std::u16string_view text, size_t *place) {
  char16_t const unit = text[(*place)++];
  if (!IsSurrogate(unit)) return unit;
  bool const pair =
      unit < 0xDC00 && *place < text.size() && IsSurrogate(text[*place]) && text[*place] >= 0xDC00;
  if (!pair) return kReplacement;
  char16_t const low = text[(*place)++];
  return 0x10000 + (char32_t{unit} - 0xD800) * 0x400 + (char32_t{low} - 0xDC00);
}

std::string Utf8FromWide(std::u16string_view wide) {
  std::string utf8;
  for (size_t place = 0; place < wide.size();) AddUtf8(TakeCharacter(wide, &place), &utf8);
  return utf8;
}

bool IsControl(char byte) {
  return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F;
}

std::string WithoutControls(std::string_view text) {
  std::string clean;
  for (size_t i = 0; i < text.size(); i++) {
    bool const ofPair = i > 0 && text[i] == '\n' && text[i - 1] == '\r';
    if (text[i] == '\r' || (text[i] == '\n' && !ofPair)) {
      clean += '\n';
    } else if (!IsControl(text[i]) || text[i] == '\t') {
      clean += text[i];
    }
  }
  return clean;
}

bool BeginsCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

}  // namespace

std::string VCardText(PropertyView const &property) {
  if (!IsString(property.type)) return "";
  return WithoutControls(IsUnicode(property.type) ? Utf8FromWide(WideText(property.value))
                                                  : Utf8FromLocal(ByteText(property.value)));
}

std::string EscapedVCardText(std::string_view text, VCardParts parts) {
  std::string escaped;
  for (char const byte : text) {
    bool const isSpecial = byte == '\\' || byte == ',' || (byte == ';' && parts == VCardParts::one);
    if (isSpecial || byte == '\n') escaped += '\\';
    escaped += byte == '\n' ? 'n' : byte;
  }
  return escaped;
}

std::string QuotedVCardText(std::string_view text) {
  std::string quoted = "\"";
  for (char const byte : text) {
    if (byte == '\n' || byte == '\\') {
      quoted += byte == '\n' ? "\\n" : "\\\\";
    } else {
      // There is no way to have one within.
      quoted += byte == '"' ? '\'' : byte;
    }
  }
  return quoted += '"';
}

void AddFolded(std::string_view line, std::string *card) {
  size_t room = kLongestLine;
  while (line.size() > room) {
    size_t end = room;
    while (!BeginsCharacter(line[end])) end--;
    *card += line.substr(0, end);
    *card += "\r\n ";
    line.remove_prefix(end);
    room = kLongestLine - 1;
  }
  *card += line;
  *card += "\r\n";
}

}  // namespace zolt
