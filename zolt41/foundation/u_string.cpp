#include "zolt41/foundation/u_string.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>

#include "zolt41/foundation/a_string.h"
#include "zolt41/foundation/u_convert.h"

namespace {

constexpr size_t kMark = 0;
constexpr size_t kLength = 1;
constexpr size_t kCharacters = 2;
constexpr size_t kLongestUStr = 255;
constexpr size_t kAStrBytes = 257;
constexpr char kMachineOrder = 1;
constexpr int32_t kNullArgument = -1;
constexpr int32_t kCut = -74;

using Traits = std::char_traits<char16_t>;

size_t LengthByte(char const *text) {
  return static_cast<unsigned char>(text[kLength]);
}

int32_t SizeOf(size_t characters) {
  return static_cast<int32_t>(characters * sizeof(char16_t));
}

void Swap(char16_t *text, size_t length) {
  for (size_t i = 0; i < length; i++) {
    text[i] = static_cast<char16_t>(text[i] << 8 | text[i] >> 8);
  }
}

// Moves `a` to `to`, `b` behind it, and a NUL behind both. `b` goes first, so that neither is
// spoiled if one of them, or both, begin at `to`.
void Join(char16_t const *a, size_t aLength, char16_t const *b, size_t bLength, char16_t *to) {
  Traits::move(to + aLength, b, bLength);
  Traits::move(to, a, aLength);
  to[aLength + bLength] = u'\0';
}

// The number of characters before the NUL, but no more than the length byte tells.
size_t LengthWithin(char const *text) {
  char16_t const *const characters = UasUZStr(text);
  size_t length = 0;
  while (length < LengthByte(text) && characters[length] != 0) length++;
  return length;
}

void FinishUStr(char *text, size_t length) {
  text[kMark] = kMachineOrder;
  UStrSetLen(text, static_cast<int32_t>(length));
}

}  // namespace

int32_t UZStrLen(char16_t const *text) {
  return text == nullptr ? 0 : static_cast<int32_t>(Traits::length(text));
}

int32_t UZStrDataSize(char16_t const *text) {
  return text == nullptr ? 0 : SizeOf(Traits::length(text));
}

int32_t UZStrStructSize(char16_t const *text) {
  return text == nullptr ? 0 : SizeOf(Traits::length(text) + 1);
}

int32_t UStrLen(char const *text) {
  return text == nullptr ? 0 : static_cast<int32_t>(LengthByte(text));
}

int32_t UStrDataSize(char const *text) {
  return text == nullptr ? 0 : SizeOf(LengthByte(text));
}

int32_t UStrStructSize(char const *text) {
  return text == nullptr ? 0 : SizeOf(LengthByte(text) + 1) + int32_t{kCharacters};
}

char16_t *UasUZStr(char const *text) {
  if (text == nullptr) return nullptr;
  return reinterpret_cast<char16_t *>(const_cast<char *>(text) + kCharacters);
}

int32_t UStrSync(char *text) {
  if (text == nullptr) return 0;
  text[kLength] = static_cast<char>(Traits::length(UasUZStr(text)));
  return UStrLen(text);
}

int32_t UZStrSetLen(char16_t *text, int32_t length) {
  if (text == nullptr) return 0;
  auto const wanted = static_cast<size_t>(std::max(length, 0));
  text[wanted] = u'\0';
  size_t const kept = Traits::length(text);
  Traits::assign(text + kept, wanted - kept, u' ');
  return SizeOf(wanted + 1);
}

int32_t UStrSetLen(char *text, int32_t length) {
  if (text == nullptr) return 0;
  UZStrSetLen(UasUZStr(text), std::min(length, int32_t{kLongestUStr}));
  return UStrSync(text);
}

void UStrCheckSwap(char *text) {
  if (text == nullptr || (text[kMark] & kMachineOrder) != 0) return;
  text[kMark] |= kMachineOrder;
  Swap(UasUZStr(text), LengthByte(text));
}

void UZStrSwap(char16_t *text) {
  if (text != nullptr) Swap(text, Traits::length(text));
}

int32_t UStrCopy(char const *source, char *destination) {
  if (source == nullptr || destination == nullptr) return 0;
  std::memmove(destination, source, static_cast<size_t>(UStrStructSize(source)));
  return UStrLen(destination);
}

int32_t UZStrCopy(char16_t const *source, char16_t *destination) {
  if (source == nullptr || destination == nullptr) return 0;
  size_t const units = Traits::length(source) + 1;
  Traits::move(destination, source, units);
  return SizeOf(units);
}

int32_t UZStrConcat(char16_t const *a, char16_t const *b, char16_t *destination) {
  if (a == nullptr || b == nullptr || destination == nullptr) return 0;
  size_t const aLength = Traits::length(a);
  size_t const bLength = Traits::length(b);
  Join(a, aLength, b, bLength, destination);
  return SizeOf(aLength + bLength + 1);
}

int32_t UStrConcat(char const *a, char const *b, char *destination) {
  if (a == nullptr || b == nullptr || destination == nullptr) return kNullArgument;
  size_t const aLength = LengthByte(a);
  size_t const whole = aLength + LengthByte(b);
  size_t const total = std::min(whole, kLongestUStr);
  Join(UasUZStr(a), aLength, UasUZStr(b), total - aLength, UasUZStr(destination));
  destination[kMark] = kMachineOrder;
  UStrSync(destination);
  return whole > kLongestUStr ? kCut : 0;
}

char16_t *UZStrCharPos(char16_t const *text, char16_t c) {
  if (text == nullptr || c == 0) return nullptr;
  while (*text != 0 && *text != c) text++;
  return *text == c ? const_cast<char16_t *>(text) : nullptr;
}

char16_t *UZStrNextChar(char16_t const *place) {
  bool const stays = place == nullptr || *place == 0;
  return const_cast<char16_t *>(stays ? place : place + 1);
}

char16_t *UZStrPrevChar(char16_t const *start, char16_t const *place) {
  if (start == nullptr || place == nullptr) return nullptr;
  return const_cast<char16_t *>(place == start ? start : place - 1);
}

char16_t *UZStrGetCharPtr(char16_t const *text, int32_t position) {
  if (text == nullptr) return nullptr;
  for (; position > 0 && *text != 0; position--) text++;
  return const_cast<char16_t *>(text);
}

char16_t UStrGetNthChar(char const *text, int32_t position) {
  return text == nullptr ? u'\0' : *UZStrGetCharPtr(UasUZStr(text), position);
}

void UStrExtractChars(char const *source, char *destination, int32_t start, int32_t count) {
  if (source == nullptr || destination == nullptr) return;
  if (start < 0 || static_cast<size_t>(start) >= LengthWithin(source)) {
    FinishUStr(destination, 0);
    return;
  }
  auto const first = static_cast<size_t>(start);
  size_t const taken =
      std::min(static_cast<size_t>(std::max(count, 0)), LengthByte(source) - first);
  Traits::move(UasUZStr(destination), UasUZStr(source) + first, taken);
  FinishUStr(destination, taken);
}

int32_t Num2UZStr(int32_t number, char16_t *destination) {
  if (destination == nullptr) return 0;
  char digits[12];
  Num2AZStr(number, digits);
  return AZ2UZStrCopy(digits, destination);
}

int32_t Num2UStr(int32_t number, char *destination) {
  if (destination == nullptr) return 0;
  Num2UZStr(number, UasUZStr(destination));
  destination[kMark] = kMachineOrder;
  return UStrSync(destination);
}

int32_t UZStr2Num(char16_t const *text) {
  if (text == nullptr) return 0;
  char digits[kAStrBytes];
  UZ2AStrCopy(text, digits, '?');
  return AZStr2Num(digits + 1);
}

void UZStrToUpper(char16_t *) {}

void UZStrToLower(char16_t *) {}
