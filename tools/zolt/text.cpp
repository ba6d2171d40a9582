#include "tools/zolt/text.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

#include "tools/zolt/errors.h"
#include "tools/zolt/utf8.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

namespace {

constexpr char kEllipsis[] = "\u2026";

struct Range {
  char32_t first;
  char32_t last;
};

// Control characters, line and paragraph ends, and marks that turn the direction of writing.
constexpr Range kUnprintable[] = {
    {0x00, 0x1F},     {0x7F, 0x9F},     {0x61C, 0x61C},   {0x200E, 0x200F},
    {0x2028, 0x202E}, {0x2066, 0x2069}, {0xFEFF, 0xFEFF},
};

bool IsAscii(std::string_view text) {
  return std::ranges::none_of(text, [](char c) { return (c & 0x80) != 0; });
}

char Fold(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
}

[[noreturn]] void RefuseCharacter(std::string_view utf8, size_t unit, char const *hint) {
  size_t at = 0;
  char32_t character = 0;
  for (size_t units = 0; units <= unit; units += character < 0x10000 ? 1 : 2)
    character = NextCharacter(utf8, &at);
  char number[16];
  std::snprintf(number, sizeof number, "U+%04X", static_cast<unsigned>(character));
  std::string shown;
  if (!Unprintable(character)) {
    AppendUtf8(character, &shown);
    shown += ", ";
  }
  Refuse(Clip(utf8, 40), "the stores' code page has no " + shown + number, hint);
}

void AppendEscaped(std::string_view bytes, std::string *text) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  for (char const c : bytes) {
    auto const byte = static_cast<unsigned char>(c);
    text->append("\\x");
    text->push_back(kDigits[byte >> 4]);
    text->push_back(kDigits[byte & 15]);
  }
}

// The highest `count` of 24 bits' three bytes.
void AppendBytes(uint32_t bits, size_t count, std::string *bytes) {
  for (size_t i = 0; i < count; i++)
    bytes->push_back(static_cast<char>(bits >> (16 - 8 * i) & 255));
}

}  // namespace

bool Unprintable(char32_t character) {
  return std::ranges::any_of(kUnprintable, [character](Range range) {
    return character >= range.first && character <= range.last;
  });
}

std::string ToLocal(std::string_view utf8, char const *hint) {
  if (IsAscii(utf8)) return std::string(utf8);
  std::u16string const wide = Utf16FromUtf8(utf8);
  auto const count = static_cast<int32_t>(wide.size());
  std::string local(wide.size(), '\0');
  std::u16string back(wide.size(), u'\0');
  ConvertUnicodeToLocal(wide.data(), local.data(), count, '?');
  ConvertLocalToUnicode(local.data(), back.data(), count);
  auto const differs = std::ranges::mismatch(wide, back).in1;
  if (differs != wide.end()) {
    RefuseCharacter(utf8, static_cast<size_t>(differs - wide.begin()), hint);
  }
  return local;
}

std::string ToUtf8(std::string_view local) {
  if (IsAscii(local)) return std::string(local);
  std::u16string wide(local.size(), u'\0');
  ConvertLocalToUnicode(local.data(), wide.data(), static_cast<int32_t>(local.size()));
  return Utf8FromUtf16(wide);
}

std::string Escape(std::string_view utf8) {
  std::string text;
  text.reserve(utf8.size());
  for (size_t at = 0; at < utf8.size();) {
    size_t const start = at;
    char32_t const character = NextCharacter(utf8, &at);
    std::string_view const bytes = utf8.substr(start, at - start);
    if (character == '\t') {
      text += "\\t";
    } else if (character == '\n') {
      text += "\\n";
    } else if (character == '\\') {
      text += "\\\\";
    } else if (character == kInvalid || Unprintable(character)) {
      AppendEscaped(bytes, &text);
    } else {
      text += bytes;
    }
  }
  return text;
}

size_t Width(std::string_view utf8) {
  return static_cast<size_t>(
      std::ranges::count_if(utf8, [](char c) { return (c & 0xC0) != 0x80; }));
}

std::string Clip(std::string_view utf8, size_t limit) {
  size_t at = 0;
  for (size_t count = 0; count < limit && at < utf8.size(); count++) NextCharacter(utf8, &at);
  std::string text(utf8.substr(0, at));
  if (at < utf8.size()) text += kEllipsis;
  return text;
}

bool SameName(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, Fold, Fold);
}

std::string Folded(std::string_view name) {
  std::string folded(name);
  std::ranges::transform(folded, folded.begin(), Fold);
  return folded;
}

std::string Hex(std::string_view bytes, size_t limit) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text = "0x";
  for (char const c : bytes.substr(0, limit)) {
    auto const byte = static_cast<unsigned char>(c);
    text.push_back(kDigits[byte >> 4]);
    text.push_back(kDigits[byte & 15]);
  }
  if (bytes.size() > limit) text += kEllipsis;
  return text;
}

std::string Base64(std::string_view bytes) {
  static constexpr char kDigits[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (size_t at = 0; at < bytes.size(); at += 3) {
    std::string_view const group = bytes.substr(at, 3);
    uint32_t bits = 0;
    for (size_t i = 0; i < 3; i++)
      bits = bits << 8 | (i < group.size() ? static_cast<unsigned char>(group[i]) : 0U);
    for (size_t i = 0; i < 4; i++)
      text.push_back(i <= group.size() ? kDigits[bits >> (18 - 6 * i) & 63] : '=');
  }
  return text;
}

std::optional<std::string> FromBase64(std::string_view text) {
  static constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  if (text.size() % 4 != 0) return std::nullopt;
  size_t const padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3);
  uint32_t bits = 0;
  for (size_t at = 0; at + padding < text.size(); at++) {
    size_t const digit = kDigits.find(text[at]);
    if (digit == std::string_view::npos) return std::nullopt;
    bits = bits << 6 | static_cast<uint32_t>(digit);
    if (at % 4 == 3) AppendBytes(bits, 3, &bytes);
  }
  if (padding == 0) return bytes;
  size_t const kept = 3 - padding;
  bits <<= 6 * padding;
  if ((bits & ((1U << 8 * padding) - 1)) != 0) return std::nullopt;
  AppendBytes(bits, kept, &bytes);
  return bytes;
}

}  // namespace zolt::tool
