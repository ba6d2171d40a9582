#include "zolt41/foundation/u_convert.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "zolt41/foundation/a_string.h"
#include "zolt41/foundation/u_string.h"
#include "zolt41/platform/system/codepage.h"
#include "zolt41/platform/system/codepage_blocks.h"

namespace {

constexpr int32_t kLongest = 255;
constexpr int32_t kNullArgument = -1;
constexpr int32_t kCut = -74;
constexpr int32_t kUpToTheNul = -1;

// Both give the length, but no more than `limit`.
int32_t LengthUpTo(char const *text, int32_t limit) {
  return static_cast<int32_t>(strnlen(text, static_cast<size_t>(limit)));
}

int32_t LengthUpTo(char16_t const *text, int32_t limit) {
  int32_t length = 0;
  while (length < limit && text[length] != 0) length++;
  return length;
}

char OrQuestionMark(char substitute) {
  return substitute == 0 ? '?' : substitute;
}

// Gives a U string, whose characters stand already, its mark, its length and its NUL. Only then,
// since the source may begin where the U string does.
int32_t FinishUStr(char *text, int32_t length) {
  text[0] = 1;
  return UStrSetLen(text, length);
}

}  // namespace

int32_t ConvertLocalToUnicode(char const *source, char16_t *destination, int32_t count) {
  if (source == nullptr || destination == nullptr) return 0;
  int32_t const size = MultiByteToWideChar(CP_ACP, 0, source, count, nullptr, 0);
  if (size == 0) return 0;
  // The size is the count, but for a count of -1.
  int64_t const written = MultiByteToWideChar(CP_ACP, 0, source, size, destination, size);
  return static_cast<int32_t>(2 * written);
}

int32_t ConvertUnicodeToLocal(char16_t const *source, char *destination, int32_t count,
                              char defaultChar) {
  if (source == nullptr || destination == nullptr) return 0;
  char const *const missing = defaultChar != 0 ? &defaultChar : nullptr;
  int32_t const size = WideCharToMultiByte(CP_ACP, 0, source, count, nullptr, 0, missing, nullptr);
  if (size == 0) return 0;
  return WideCharToMultiByte(CP_ACP, 0, source, size, destination, size, missing, nullptr);
}

int32_t ConvertAsciiToUnicode(char const *source, char16_t *destination, int32_t count) {
  if (source == nullptr || destination == nullptr) return 0;
  if (count < 1) return static_cast<int32_t>(2 * int64_t{count});
  auto const convert = [](char) { return u'?'; };
  zolt::WidenText(source, static_cast<size_t>(count), destination, convert);
  return 0;
}

int32_t ConvertUnicodeToAscii(char16_t const *source, char *destination, int32_t count,
                              char substitute) {
  if (source == nullptr || destination == nullptr) return 0;
  if (count < 1) return count;
  auto const convert = [substitute](char16_t character) {
    return character == 0x80 ? '\x80' : substitute;
  };
  zolt::NarrowText(source, static_cast<size_t>(count), destination, convert);
  return 0;
}

int32_t UZ2UStrCopy(char16_t const *source, char *destination) {
  if (source == nullptr || destination == nullptr) return kNullArgument;
  int32_t const length = LengthUpTo(source, kLongest);
  std::memmove(UasUZStr(destination), source, static_cast<size_t>(length) * sizeof(char16_t));
  return FinishUStr(destination, length);
}

int32_t UZ2AStrCopy(char16_t const *source, char *destination, char substitute) {
  if (source == nullptr || destination == nullptr) return kNullArgument;
  int32_t const length = LengthUpTo(source, kLongest + 1);
  int32_t const copied = std::min(length, kLongest);
  ConvertUnicodeToAscii(source, destination + 1, copied, OrQuestionMark(substitute));
  AStrSetLen(destination, copied);
  return length > kLongest ? kCut : 0;
}

int32_t AZ2UStrCopy(char const *source, char *destination) {
  if (source == nullptr || destination == nullptr) return kNullArgument;
  int32_t const length = LengthUpTo(source, kLongest + 1);
  int32_t const copied = std::min(length, kLongest);
  ConvertAsciiToUnicode(source, UasUZStr(destination), copied);
  FinishUStr(destination, copied);
  return length > kLongest ? kCut : 0;
}

int32_t UZ2AZStrCopy(char16_t const *source, char *destination, char substitute) {
  if (source == nullptr || destination == nullptr) return 0;
  int32_t const length = UZStrLen(source);
  ConvertUnicodeToAscii(source, destination, length + 1, OrQuestionMark(substitute));
  return length;
}

int32_t AZ2UZStrCopy(char const *source, char16_t *destination) {
  if (source == nullptr || destination == nullptr) return 0;
  int32_t const size = AZStrLen(source) + 1;
  ConvertAsciiToUnicode(source, destination, size);
  return 2 * size;
}

int32_t LZ2UZStrCopy(char const *source, char16_t *destination, int32_t) {
  return ConvertLocalToUnicode(source, destination, kUpToTheNul);
}

int32_t LZ2UStrCopy(char const *source, char *destination, int32_t) {
  if (source == nullptr || destination == nullptr) return 0;
  int32_t const length = LengthUpTo(source, kLongest);
  ConvertLocalToUnicode(source, UasUZStr(destination), length);
  return FinishUStr(destination, length);
}

int32_t UZ2LStrCopy(char16_t const *source, char *destination, char defaultChar) {
  if (source == nullptr || destination == nullptr) return 0;
  int32_t const length = LengthUpTo(source, kLongest);
  return AStrSetLen(destination,
                    ConvertUnicodeToLocal(source, destination + 1, length, defaultChar));
}

int32_t UZ2LZStrCopy(char16_t const *source, char *destination, char defaultChar) {
  return ConvertUnicodeToLocal(source, destination, kUpToTheNul, defaultChar);
}
