#include "zolt41/foundation/text_coding.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace zolt {
namespace {

constexpr char kBase64[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kHex[] = "0123456789ABCDEF";
constexpr char kPadding = '=';
constexpr size_t kLineLength = 60;
constexpr char kLineEnd[] = {'\r', '\n'};
constexpr size_t kLongestQuotedLine = 58;

// No digit has this value, nor its bits when it is joined with others.
constexpr uint8_t kNoDigit = 0xFF;

constexpr std::array<uint8_t, 256> ValuesOf(std::string_view digits) {
  std::array<uint8_t, 256> values{};
  values.fill(kNoDigit);
  for (size_t i = 0; i < digits.size(); i++) {
    values[static_cast<uint8_t>(digits[i])] = static_cast<uint8_t>(i);
  }
  return values;
}

constexpr std::array<uint8_t, 256> kBase64Values = ValuesOf({kBase64, 64});
constexpr std::array<uint8_t, 256> kHexValues = ValuesOf({kHex, 16});

uint32_t Byte(char byte) {
  return static_cast<uint8_t>(byte);
}

uint32_t ValueOf(std::array<uint8_t, 256> const &values, char digit) {
  return values[static_cast<uint8_t>(digit)];
}

void PutFourDigits(uint32_t bits, char *text) {
  for (int i = 0; i < 4; i++) text[i] = kBase64[bits >> (18 - 6 * i) & 0x3F];
}

// Up to four digits, as if the missing ones were 0; false if one is none.
bool TakeDigits(std::string_view digits, uint32_t *bits) {
  *bits = 0;
  uint32_t all = 0;
  for (size_t i = 0; i < digits.size(); i++) {
    uint32_t const value = ValueOf(kBase64Values, digits[i]);
    all |= value;
    *bits |= value << (18 - 6 * i);
  }
  return all < 64;
}

// The last group, in which `digits` are those before the padding.
bool DecodeLastGroup(std::string_view digits, char *bytes) {
  // By the number of bytes: the bits that belong to none of them.
  constexpr uint32_t kUnused[] = {0xFFFFFF, 0xFFFF, 0xFF, 0};
  uint32_t bits = 0;
  if (digits.size() < 2 || !TakeDigits(digits, &bits)) return false;
  size_t const count = digits.size() - 1;
  char const joined[] = {static_cast<char>(bits >> 16), static_cast<char>(bits >> 8),
                         static_cast<char>(bits)};
  std::memcpy(bytes, joined, count);
  return (bits & kUnused[count]) == 0;
}

}  // namespace

void EncodeBase64(std::string_view bytes, char *text, CodingBlocks const *blocks) {
  size_t done = blocks == nullptr ? 0 : blocks->encodeBase64(bytes.data(), bytes.size(), text);
  text += done / 3 * 4;
  for (; bytes.size() - done >= 3; done += 3, text += 4) {
    PutFourDigits(Byte(bytes[done]) << 16 | Byte(bytes[done + 1]) << 8 | Byte(bytes[done + 2]),
                  text);
  }
  size_t const rest = bytes.size() - done;
  if (rest == 0) return;
  PutFourDigits(Byte(bytes[done]) << 16 | (rest == 2 ? Byte(bytes[done + 1]) << 8 : 0), text);
  std::memset(text + rest + 1, kPadding, 3 - rest);
}

std::string Base64(std::string_view bytes) {
  std::string text(Base64Size(bytes.size()), '\0');
  EncodeBase64(bytes, text.data());
  return text;
}

std::string Base64InLines(std::string_view bytes) {
  size_t const size = Base64Size(bytes.size());
  size_t const lines = size / kLineLength;
  std::string text(size + sizeof kLineEnd * lines, '\0');
  // The digits stand at the end, from where each line moves down to its place.
  char *from = text.data() + sizeof kLineEnd * lines;
  EncodeBase64(bytes, from);
  char *to = text.data();
  for (size_t i = 0; i < lines; i++, from += kLineLength) {
    std::memmove(to, from, kLineLength);
    std::memcpy(to + kLineLength, kLineEnd, sizeof kLineEnd);
    to += kLineLength + sizeof kLineEnd;
  }
  return text;
}

bool DecodeBase64(std::string_view text, std::string *bytes, CodingBlocks const *blocks) {
  if (text.size() % 4 != 0) return false;
  size_t padding = 0;
  while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == kPadding) {
    padding++;
  }
  bytes->resize(text.size() / 4 * 3 - padding);
  if (text.empty()) return true;
  size_t const lastGroup = text.size() - 4;
  char *to = bytes->data();
  size_t done = blocks == nullptr ? 0 : blocks->decodeBase64(text.data(), lastGroup, to);
  to += done / 4 * 3;
  uint32_t bits = 0;
  for (; done < lastGroup; done += 4, to += 3) {
    if (!TakeDigits(text.substr(done, 4), &bits)) return false;
    for (int i = 0; i < 3; i++) to[i] = static_cast<char>(bits >> (16 - 8 * i));
  }
  return DecodeLastGroup(text.substr(lastGroup, 4 - padding), to);
}

void EncodeHex(std::string_view bytes, char *text, CodingBlocks const *blocks) {
  size_t done = blocks == nullptr ? 0 : blocks->encodeHex(bytes.data(), bytes.size(), text);
  for (; done < bytes.size(); done++) {
    text[2 * done] = kHex[Byte(bytes[done]) >> 4];
    text[2 * done + 1] = kHex[Byte(bytes[done]) & 0xF];
  }
}

void AppendHex(std::string_view bytes, std::string *text) {
  size_t const before = text->size();
  text->resize(before + HexSize(bytes.size()));
  EncodeHex(bytes, text->data() + before);
}

bool DecodeHex(std::string_view text, std::string *bytes, CodingBlocks const *blocks) {
  if (text.size() % 2 != 0) return false;
  bytes->resize(text.size() / 2);
  size_t done = blocks == nullptr ? 0 : blocks->decodeHex(text.data(), text.size(), bytes->data());
  for (; done < text.size(); done += 2) {
    uint32_t const high = ValueOf(kHexValues, text[done]);
    uint32_t const low = ValueOf(kHexValues, text[done + 1]);
    if ((high | low) >= 16) return false;
    (*bytes)[done / 2] = static_cast<char>(high << 4 | low);
  }
  return true;
}

std::string QuotedPrintable(std::string_view text) {
  constexpr std::string_view kSoftBreak = "=\r\n";
  std::string quoted;
  size_t lineStart = 0;
  for (size_t i = 0; i < text.size(); i++) {
    char const c = text[i];
    if (quoted.size() - lineStart > kLongestQuotedLine) {
      quoted += kSoftBreak;
      lineStart = quoted.size();
    }
    bool const escaped = Byte(c) < 0x20 || Byte(c) > 0x7F || c == '=';
    if (c == '\n') continue;
    if (c == '\r') {
      quoted += "=0A";
    } else if (escaped && c != '\t') {
      quoted += '=';
      AppendHex({&c, 1}, &quoted);
    } else {
      quoted += c;
      bool const endsLine = i + 1 == text.size() || text[i + 1] == '\r';
      if ((c == ' ' || c == '\t') && endsLine) quoted += kSoftBreak;
    }
  }
  return quoted;
}

}  // namespace zolt
