#include "zolt41/foundation/u_compare.h"

#include <cstddef>
#include <limits>
#include <string>

#include "zolt41/foundation/l_string.h"
#include "zolt41/foundation/u_convert.h"

namespace {

constexpr int16_t kNotFound = -1;

using Traits = std::char_traits<char16_t>;

bool IsAtLeast(char16_t const *text, size_t length) {
  size_t i = 0;
  while (i < length && text[i] != 0) i++;
  return i == length;
}

struct LocalText {
  explicit LocalText(char16_t const *text) { UZ2LStrCopy(text, bytes, '?'); }
  char const *Body() const { return bytes + 1; }
  char bytes[257];
};

}  // namespace

int32_t UZStrCompare(char16_t const *a, char16_t const *b, int32_t) {
  if (a == nullptr || b == nullptr) return 0;
  return LZStrCompare(LocalText(a).Body(), LocalText(b).Body(), 0);
}

int32_t UZStrEqual(char16_t const *a, char16_t const *b, int32_t third) {
  return a != nullptr && b != nullptr && UZStrCompare(a, b, third) == 0;
}

int16_t UZStrContains(char16_t const *text, char16_t const *pattern) {
  if (text == nullptr || pattern == nullptr) return kNotFound;
  size_t const length = Traits::length(pattern);
  if (length == 0 || !IsAtLeast(text, length)) return kNotFound;
  constexpr size_t kLast = std::numeric_limits<int16_t>::max();
  for (size_t at = 0; at <= kLast && text[at + length - 1] != 0; at++) {
    // The last character tells most places apart.
    bool const ends = text[at + length - 1] == pattern[length - 1];
    if (ends && Traits::compare(text + at, pattern, length) == 0) return static_cast<int16_t>(at);
  }
  return kNotFound;
}
