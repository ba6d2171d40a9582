#ifndef ZOLT41_FOUNDATION_L_STRING_H_
#define ZOLT41_FOUNDATION_L_STRING_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"

// L and LZ strings have the shapes of A and AZ strings, and hold text of the machine's local code
// page.

// Converts `count` bytes of `text` in place, from the OEM code page to the local one or back. A NUL
// is converted, to a NUL, only if it is counted. A character that the other page lacks becomes '?'.
// A null `text` and a `count` below 1 do nothing.
ZOLT_API void OEMToLoclStr(char *text, int32_t count);
ZOLT_API void LoclToOEMStr(char *text, int32_t count);

// -1, 0 or 1 as `a` is smaller than, equal to or greater than `b` in the order of the local code
// page, without regard to the case of its letters if `caseSensitive` is 0. 0 if either is null.
ZOLT_API int32_t LZStrCompare(char const *a, char const *b, int32_t caseSensitive);

#endif  // ZOLT41_FOUNDATION_L_STRING_H_
