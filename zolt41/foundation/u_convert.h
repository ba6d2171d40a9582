#ifndef ZOLT41_FOUNDATION_U_CONVERT_H_
#define ZOLT41_FOUNDATION_U_CONVERT_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"

// Text between bytes and 16-bit characters, and copies of strings of one family in the shape of
// another. The shapes stand in a_string.h, l_string.h and u_string.h.
//
// The caller owns and sizes both buffers. Source and destination may overlap in any way, and either
// may begin where the other does. A null argument gives 0 unless told otherwise. Every 16-bit unit
// is converted by itself: a lone surrogate becomes one substitute, a pair two.

// Conversions. `count` is the number of bytes, or characters, of the source; a NUL is neither
// looked for nor added, so a caller that wants one counts it in.

// From and to the local code page, one byte for each character. Give the bytes written, two for a
// 16-bit character, or 0 if nothing can be converted. A `count` of -1 means all up to and with the
// NUL. A byte that the page leaves undefined stands for the character of the same number.
// `defaultChar` stands for a character that the code page does not have; 0 for '?'.
ZOLT_API int32_t ConvertLocalToUnicode(char const *source, char16_t *destination, int32_t count);
ZOLT_API int32_t ConvertUnicodeToLocal(char16_t const *source, char *destination, int32_t count,
                                       char defaultChar);

// From ASCII. A byte from 0x80 on becomes '?'. Gives 0; for a `count` below 1, twice the `count`.
ZOLT_API int32_t ConvertAsciiToUnicode(char const *source, char16_t *destination, int32_t count);

// To ASCII. A character above 0x80 becomes `substitute`, as it is; 0x80 itself passes. Gives 0; for
// a `count` below 1, the `count`.
ZOLT_API int32_t ConvertUnicodeToAscii(char16_t const *source, char *destination, int32_t count,
                                       char substitute);

// Copies. They convert as the four above do; a `substitute` of 0 means '?'. An A or L string takes
// up to 257 bytes, a U string up to 514, and the others as much as their source needs with its NUL.
// A U string gets the mark of this machine's byte order.

// The first 255 characters. Gives the number of characters copied; -1 for a null argument.
ZOLT_API int32_t UZ2UStrCopy(char16_t const *source, char *destination);

// The first 255 characters, or bytes. Give 0; -74 if the source was longer; -1 for a null argument.
ZOLT_API int32_t UZ2AStrCopy(char16_t const *source, char *destination, char substitute);
ZOLT_API int32_t AZ2UStrCopy(char const *source, char *destination);

// The whole text. Gives the length, without the NUL.
ZOLT_API int32_t UZ2AZStrCopy(char16_t const *source, char *destination, char substitute);

// The whole text. Give the bytes written, the NUL's two counted. `third` has no effect.
ZOLT_API int32_t AZ2UZStrCopy(char const *source, char16_t *destination);
ZOLT_API int32_t LZ2UZStrCopy(char const *source, char16_t *destination, int32_t third);

// The first 255 bytes of local text. Gives their number. `third` has no effect.
ZOLT_API int32_t LZ2UStrCopy(char const *source, char *destination, int32_t third);

// The first 255 characters, into no more than the 257 bytes of an L string. Gives the length.
ZOLT_API int32_t UZ2LStrCopy(char16_t const *source, char *destination, char defaultChar);

// The whole text. Gives the bytes written, the NUL counted.
ZOLT_API int32_t UZ2LZStrCopy(char16_t const *source, char *destination, char defaultChar);

#endif  // ZOLT41_FOUNDATION_U_CONVERT_H_
