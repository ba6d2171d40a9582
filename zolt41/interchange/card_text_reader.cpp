#include "zolt41/interchange/card_text_reader.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <new>
#include <optional>
#include <string_view>

#include "zolt41/cards/property_format.h"
#include "zolt41/foundation/az_compare.h"
#include "zolt41/foundation/text_coding.h"
#include "zolt41/foundation/u_convert.h"
#include "zolt41/interchange/card_text_format.h"

namespace zolt {
namespace {

constexpr char kLastControl = 0x1F;
constexpr char kLastLineEnd = '\r';
constexpr uint32_t kNoType = PropertyUnicode - 1;

// Also where a plain char has no sign.
int Signed(char byte) {
  return static_cast<signed char>(byte);
}

template <typename Names>
std::optional<uint32_t> PlaceOf(std::string const &name, Names const &names) {
  auto const found = std::ranges::find_if(
      names, [&](std::string_view known) { return AZStrEqual(known.data(), name.c_str()) != 0; });
  if (found == names.end()) return std::nullopt;
  return static_cast<uint32_t>(found - names.begin());
}

uint32_t TypeOf(std::string const &name) {
  if (AZStrEqual(kUnicodeTypeName.data(), name.c_str()) != 0) return PropertyUnicode;
  return PlaceOf(name, kPropertyTypeNames).value_or(kNoType);
}

uint32_t FlagsOf(std::string const &names) {
  uint32_t flags = 0;
  for (size_t start = 0; start < names.size();) {
    size_t const end = std::min(names.find(',', start), names.size());
    // An empty name is that of the first bit that has none.
    auto const bit = PlaceOf(names.substr(start, end - start), kPropertyFlagNames);
    if (bit.has_value()) flags |= 1U << *bit;
    start = end + 1;
  }
  return flags;
}

// Any two bytes make one.
char Joined(char high, char low) {
  auto const value = [](char digit) {
    return Signed(digit) - (Signed(digit) < 'A' ? '0' : 'A' - 10);
  };
  return static_cast<char>(16 * value(high) + value(low));
}

// An escape that is cut short ends the text.
void Unescape(std::string *text) {
  size_t to = 0;
  for (size_t from = 0; from < text->size(); from++) {
    char byte = (*text)[from];
    if (byte == '=') {
      if (text->size() - from < 3) break;
      byte = Joined((*text)[from + 1], (*text)[from + 2]);
      from += 2;
    }
    (*text)[to++] = byte;
  }
  text->resize(to);
}

std::string ReadText(FBasicRead *reader) {
  std::string text = ReadUpTo(reader, kLastLineEnd, std::string::npos);
  Unescape(&text);
  return text;
}

// Behind the opening bracket, up to the closing one or the end of the input.
bool ReadHex(FBasicRead *reader, std::string *bytes) {
  std::string digits;
  char digit = reader->GetByte();
  for (; IsHexDigit(digit); digit = reader->GetByte()) digits += digit;
  // Where the input ends amid a byte, the ones before it count.
  if (digit == '\0') digits.resize(digits.size() / 2 * 2);
  return (digit == '>' || digit == '\0') && DecodeHex(digits, bytes);
}

std::string WideBytes(std::string const &text) {
  // No list can hold as much.
  if (text.size() >= INT32_MAX / sizeof(char16_t)) throw std::bad_alloc();
  std::u16string wide(text.size() + 1, u'\0');
  int32_t const size = AZ2UZStrCopy(text.c_str(), wide.data());
  return {reinterpret_cast<char const *>(wide.data()), static_cast<size_t>(size)};
}

}  // namespace

bool SkipLine(FBasicRead *reader) {
  for (;;) {
    auto const byte = static_cast<unsigned char>(reader->GetByte());
    if (byte <= '\n') return byte == '\n';
  }
}

std::string ReadUpTo(FBasicRead *reader, int last, size_t limit) {
  std::string text;
  for (char byte = reader->GetByte(); Signed(byte) > last; byte = reader->GetByte()) {
    if (text.size() < limit) text += byte;
  }
  return text;
}

std::string ReadPreference(FBasicRead *reader) {
  std::string text;
  while (text.size() < kLongestPreference) {
    char const byte = reader->GetByte();
    if (Signed(byte) <= kLastLineEnd) break;
    text += byte;
  }
  return text;
}

bool ReadToken(FBasicRead *reader, char delimiter, std::string *token) {
  token->clear();
  for (;;) {
    char const byte = reader->GetByte();
    if (byte == delimiter) return true;
    if (Signed(byte) <= kLastControl || token->size() == kLongestToken) return false;
    *token += byte;
  }
}

bool ReadSectionName(FBasicRead *reader, std::string *name) {
  for (char first = reader->GetByte(); first != '['; first = reader->GetByte()) {
    reader->PushBack(first);
    if (first == '\0' || !SkipLine(reader)) return false;
  }
  name->clear();
  for (char byte = reader->GetByte(); byte != ']'; byte = reader->GetByte()) {
    if (name->size() == kLongestSectionName) return false;
    *name += byte;
  }
  return true;
}

bool ReadPropertyHead(FBasicRead *reader, PropertyHead *head) {
  if (!SkipLine(reader) || !ReadToken(reader, '=', &head->name)) return false;
  std::string word;
  if (!ReadToken(reader, ':', &word)) return false;
  head->type = TypeOf(word);
  if (head->type == kNoType || !ReadToken(reader, ':', &word)) return false;
  head->flags = FlagsOf(word);
  return true;
}

CardValue ReadPropertyValue(FBasicRead *reader, uint32_t type, std::string *value) {
  if (IsTextInCard(type)) {
    *value = ReadText(reader);
    return CardValue::text;
  }
  char const first = reader->GetByte();
  if (first == '<') {
    if (!ReadHex(reader, value)) return CardValue::unfit;
    // What a person reads there is in the hex, too.
    if (IsUnicode(type)) ReadUpTo(reader, kLastLineEnd, 0);
    return CardValue::bytes;
  }
  if (!IsUnicode(type)) return CardValue::forbidden;
  bool const isEmpty = Signed(first) <= kLastLineEnd;
  if (!isEmpty) reader->PushBack(first);
  *value = WideBytes(isEmpty ? "" : ReadText(reader));
  return CardValue::bytes;
}

}  // namespace zolt
