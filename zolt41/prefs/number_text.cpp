#include "zolt41/prefs/number_text.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <system_error>

namespace zolt {

namespace {

bool IsHexDigit(char c) {
  char const letter = static_cast<char>(c | 0x20);
  return (c >= '0' && c <= '9') || (letter >= 'a' && letter <= 'f');
}

// The base that the digits at `*text` are written in; steps over its mark.
int TakeBase(char const **text) {
  if ((*text)[0] != '0') return 10;
  if (((*text)[1] | 0x20) != 'x' || !IsHexDigit((*text)[2])) return 8;
  *text += 2;
  return 16;
}

}  // namespace

bool ScanNumber(char const *text, int32_t *number) {
  text += std::strspn(text, " \t\n\v\f\r");
  bool const negative = *text == '-';
  if (negative || *text == '+') ++text;
  int const base = TakeBase(&text);

  // A number of 64 bits, the ends of whose range stand for what lies beyond, then its low 32 bits.
  constexpr auto kMost = static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
  uint64_t magnitude = kMost + 1;
  auto const result = std::from_chars(text, text + std::strlen(text), magnitude, base);
  if (result.ec == std::errc::invalid_argument) return false;
  magnitude = std::min(magnitude, negative ? kMost + 1 : kMost);
  *number = static_cast<int32_t>(static_cast<uint32_t>(negative ? 0 - magnitude : magnitude));
  return true;
}

void PrintNumber(int32_t number, char (&text)[kNumberTextSize]) {
  *std::to_chars(text, text + kNumberTextSize - 1, number).ptr = '\0';
}

}  // namespace zolt
