#include "zolt41/foundation/a_string.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

constexpr size_t kLongestAStr = 255;
constexpr size_t kLongestNumber = 11;
constexpr int32_t kNullArgument = -1;
constexpr int32_t kCut = -74;

size_t LengthByte(char const *text) {
  return static_cast<unsigned char>(text[0]);
}

// Gives an A string, whose body stands already, its length and its NUL.
int32_t FinishAStr(char *text, size_t length) {
  text[0] = static_cast<char>(length);
  text[1 + length] = '\0';
  return static_cast<int32_t>(length);
}

// Moves `a` to `to` and `b` behind it, in the order that spoils neither if one of them begins
// there.
void Join(char const *a, size_t aLength, char const *b, size_t bLength, char *to) {
  if (b == to) {
    std::memmove(to + aLength, b, bLength);
    std::memmove(to, a, aLength);
  } else {
    std::memmove(to, a, aLength);
    std::memmove(to + aLength, b, bLength);
  }
}

}  // namespace

int32_t AZStrLen(char const *text) {
  return text == nullptr ? 0 : static_cast<int32_t>(std::strlen(text));
}

int32_t AZStrCopy(char const *source, char *destination, uint32_t max) {
  if (source == nullptr) return 0;
  size_t const length = std::strlen(source);
  if (destination != nullptr) {
    size_t const copied = std::min<size_t>(length, max);
    std::memmove(destination, source, copied);
    destination[copied] = '\0';
  }
  return static_cast<int32_t>(length);
}

int32_t AZStrConcat(char const *a, char const *b, char *destination) {
  if (a == nullptr || b == nullptr) return 0;
  size_t const aLength = std::strlen(a);
  size_t const bLength = std::strlen(b);
  if (destination != nullptr) {
    Join(a, aLength, b, bLength, destination);
    destination[aLength + bLength] = '\0';
  }
  return static_cast<int32_t>(aLength + bLength + 1);
}

int32_t AZStrSetLen(char *text, int32_t length) {
  if (text == nullptr) return 0;
  auto const wanted = static_cast<size_t>(std::max(length, 0));
  text[wanted] = '\0';
  size_t const kept = std::strlen(text);
  std::memset(text + kept, ' ', wanted - kept);
  return static_cast<int32_t>(wanted + 1);
}

char *AZStrCharPos(char const *text, char c) {
  if (text == nullptr || c == '\0') return nullptr;
  return const_cast<char *>(std::strchr(text, c));
}

int32_t AZStr2Num(char const *text) {
  if (text == nullptr) return 0;
  return static_cast<int32_t>(std::strtol(text, nullptr, 10));
}

int32_t Num2AZStr(int32_t number, char *destination) {
  if (destination == nullptr) return 0;
  char *const end = std::to_chars(destination, destination + kLongestNumber, number).ptr;
  *end = '\0';
  return static_cast<int32_t>(end - destination);
}

int32_t AStrSync(char *text) {
  if (text == nullptr) return 0;
  text[0] = static_cast<char>(std::strlen(text + 1));
  return static_cast<int32_t>(LengthByte(text));
}

int32_t AStrSetLen(char *text, int32_t length) {
  if (text == nullptr) return 0;
  AZStrSetLen(text + 1, std::min(length, static_cast<int32_t>(kLongestAStr)));
  return AStrSync(text);
}

int32_t AStrCopy(char const *source, char *destination) {
  if (source == nullptr) return 0;
  size_t const length = LengthByte(source);
  if (destination == nullptr) return static_cast<int32_t>(length);
  std::memmove(destination + 1, source + 1, length);
  return FinishAStr(destination, length);
}

int32_t AStrConcat(char const *a, char const *b, char *destination) {
  if (a == nullptr || b == nullptr || destination == nullptr) return kNullArgument;
  size_t const aLength = LengthByte(a);
  size_t const whole = aLength + LengthByte(b);
  size_t const total = std::min(whole, kLongestAStr);
  Join(a + 1, aLength, b + 1, total - aLength, destination + 1);
  FinishAStr(destination, total);
  return whole > kLongestAStr ? kCut : 0;
}

int32_t Num2AStr(int32_t number, char *destination) {
  if (destination == nullptr) return 0;
  Num2AZStr(number, destination + 1);
  return AStrSync(destination);
}

int32_t AZ2AStrCopy(char const *source, char *destination) {
  if (source == nullptr || destination == nullptr) return 0;
  size_t const length = strnlen(source, kLongestAStr);
  std::memmove(destination + 1, source, length);
  return FinishAStr(destination, length);
}

void AStrExtractChars(char const *source, char *destination, int32_t start, int32_t count) {
  if (source == nullptr || destination == nullptr) return;
  size_t const length = LengthByte(source);
  if (start < 0 || static_cast<size_t>(start) >= strnlen(source + 1, length)) {
    FinishAStr(destination, 0);
    return;
  }
  auto const first = static_cast<size_t>(start);
  size_t const taken = std::min(static_cast<size_t>(std::max(count, 0)), length - first);
  std::memmove(destination + 1, source + 1 + first, taken);
  AStrSetLen(destination, static_cast<int32_t>(taken));
}
