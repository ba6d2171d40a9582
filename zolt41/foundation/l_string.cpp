#include "zolt41/foundation/l_string.h"

#include <algorithm>

#include "zolt41/platform/system/codepage.h"

void OEMToLoclStr(char *text, int32_t count) {
  OemToCharBuffA(text, text, static_cast<uint32_t>(std::max(count, 0)));
}

void LoclToOEMStr(char *text, int32_t count) {
  CharToOemBuffA(text, text, static_cast<uint32_t>(std::max(count, 0)));
}
