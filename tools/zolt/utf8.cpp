#include "tools/zolt/utf8.h"

#include <bit>

namespace zolt::tool {

namespace {

constexpr char32_t kReplacement = 0xFFFD;
// The least character that is written in so many bytes.
constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};

unsigned char ByteAt(std::string_view text, size_t at) {
  return static_cast<unsigned char>(text[at]);
}

bool HighHalf(char16_t unit) {
  return (unit & 0xFC00) == 0xD800;
}

bool LowHalf(char16_t unit) {
  return (unit & 0xFC00) == 0xDC00;
}

}  // namespace

char32_t NextCharacter(std::string_view text, size_t *at) {
  size_t const start = (*at)++;
  unsigned char const first = ByteAt(text, start);
  if (first < 0x80) return first;
  auto const size = static_cast<size_t>(std::countl_one(first));
  if (size < 2 || size > 4 || text.size() - start < size) return kInvalid;
  char32_t character = first & (0x7FU >> size);
  for (size_t i = 1; i < size; i++) {
    unsigned char const next = ByteAt(text, start + i);
    if ((next & 0xC0) != 0x80) return kInvalid;
    character = character << 6 | (next & 0x3FU);
  }
  bool const surrogate = character >= 0xD800 && character < 0xE000;
  if (character < kLeast[size] || character > 0x10FFFF || surrogate) return kInvalid;
  *at = start + size;
  return character;
}

bool ValidUtf8(std::string_view text) {
  for (size_t at = 0; at < text.size();)
    if (NextCharacter(text, &at) == kInvalid) return false;
  return true;
}

void AppendUtf8(char32_t character, std::string *text) {
  if (character < 0x80) {
    text->push_back(static_cast<char>(character));
    return;
  }
  unsigned size = character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
  unsigned shift = 6 * (size - 1);
  text->push_back(static_cast<char>((0xF00U >> size & 0xFF) | character >> shift));
  while (shift != 0) {
    shift -= 6;
    text->push_back(static_cast<char>(0x80 | (character >> shift & 0x3F)));
  }
}

std::u16string Utf16FromUtf8(std::string_view text) {
  std::u16string units;
  units.reserve(text.size());
  for (size_t at = 0; at < text.size();) {
    char32_t const character = NextCharacter(text, &at);
    if (character < 0x10000) {
      units.push_back(static_cast<char16_t>(character));
    } else {
      units.push_back(static_cast<char16_t>(0xD7C0 + (character >> 10)));
      units.push_back(static_cast<char16_t>(0xDC00 | (character & 0x3FF)));
    }
  }
  return units;
}

std::string Utf8FromUtf16(std::u16string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (size_t at = 0; at < text.size(); at++) {
    char32_t character = text[at];
    if (HighHalf(text[at]) && at + 1 < text.size() && LowHalf(text[at + 1])) {
      character = 0x10000 + ((character & 0x3FF) << 10 | (text[++at] & 0x3FFU));
    } else if (HighHalf(text[at]) || LowHalf(text[at])) {
      character = kReplacement;
    }
    AppendUtf8(character, &bytes);
  }
  return bytes;
}

}  // namespace zolt::tool
