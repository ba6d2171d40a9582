#ifndef ZOLT41_FOUNDATION_U_CONVERT_H_
#define ZOLT41_FOUNDATION_U_CONVERT_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"

// Text between bytes and 16-bit characters. `count` is the number of characters of the source; a
// NUL is neither looked for nor added, so a caller that wants one counts it in. The caller owns and
// sizes both buffers. A null argument gives 0.

// From and to the local code page. Give the bytes written, two for a 16-bit character, or 0 if
// nothing can be converted. A `count` of -1 means all up to and with the NUL. `defaultChar` stands
// for a character that the code page does not have; 0 for '?'.
ZOLT_API int32_t ConvertLocalToUnicode(char const *source, char16_t *destination, int32_t count);
ZOLT_API int32_t ConvertUnicodeToLocal(char16_t const *source, char *destination, int32_t count,
                                       char defaultChar);

// From ASCII. A byte from 0x80 on becomes '?'. `destination` may begin where `source` does: the
// text then widens in place. Gives 0; for a `count` below 1, twice the `count`.
ZOLT_API int32_t ConvertAsciiToUnicode(char const *source, char16_t *destination, int32_t count);

// To ASCII. A character above 0x80 becomes `substitute`, as it is; 0x80 itself passes.
// `destination` may begin where `source` does. Gives 0; for a `count` below 1, the `count`.
ZOLT_API int32_t ConvertUnicodeToAscii(char16_t const *source, char *destination, int32_t count,
                                       char substitute);

#endif  // ZOLT41_FOUNDATION_U_CONVERT_H_
