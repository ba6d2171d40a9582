#include "zolt41/foundation/az_compare.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <limits>

namespace {

constexpr int16_t kNotFound = -1;

constexpr std::array<uint8_t, 128> kFolded = [] {
  std::array<uint8_t, 128> table{};
  for (uint8_t i = 0; i < 128; i++) table[i] = i >= 'a' && i <= 'z' ? i & 0x5F : i;
  return table;
}();

uint8_t Fold(char byte) {
  return kFolded[byte & 0x7F];
}

// Whether the `length` bytes, at least one, at `place` are `pattern`. The last byte and then the
// first tell most places apart.
bool StandsAt(char const *place, char const *pattern, size_t length) {
  if (Fold(place[length - 1]) != Fold(pattern[length - 1])) return false;
  size_t i = 0;
  while (i + 1 < length && Fold(place[i]) == Fold(pattern[i])) i++;
  return i + 1 == length;
}

}  // namespace

int32_t AZStrEqual(char const *a, char const *b) {
  return a != nullptr && b != nullptr && AZStrCompare(a, b) == 0;
}

int32_t AZStrCompare(char const *a, char const *b) {
  if (a == nullptr || b == nullptr) return 0;
  for (; *a != '\0' && *b != '\0'; a++, b++) {
    if (*a == *b) continue;
    if (Fold(*a) != Fold(*b)) return Fold(*a) < Fold(*b) ? -1 : 1;
  }
  if (*a != '\0') return 1;
  return Fold(*b) == 0 ? 0 : -1;
}

int16_t AZStrContains(char const *text, char const *pattern) {
  if (text == nullptr || pattern == nullptr) return kNotFound;
  size_t const length = std::strlen(pattern);
  if (length == 0 || strnlen(text, length) < length) return kNotFound;
  constexpr size_t kLast = std::numeric_limits<int16_t>::max();
  for (size_t at = 0; at <= kLast && text[at + length - 1] != '\0'; at++) {
    if (StandsAt(text + at, pattern, length)) return static_cast<int16_t>(at);
  }
  return kNotFound;
}
