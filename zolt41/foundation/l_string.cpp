#include "zolt41/foundation/l_string.h"

#include <algorithm>

#include "zolt41/platform/system/codepage.h"

void OEMToLoclStr(char *text, int32_t count) {
  OemToCharBuffA(text, text, static_cast<uint32_t>(std::max(count, 0)));
}

void LoclToOEMStr(char *text, int32_t count) {
  CharToOemBuffA(text, text, static_cast<uint32_t>(std::max(count, 0)));
}

int32_t LZStrCompare(char const *a, char const *b, int32_t caseSensitive) {
  if (a == nullptr || b == nullptr) return 0;
  int32_t const order = caseSensitive != 0 ? lstrcmpA(a, b) : lstrcmpiA(a, b);
  return (order > 0) - (order < 0);
}
