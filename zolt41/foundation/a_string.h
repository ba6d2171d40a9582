#ifndef ZOLT41_FOUNDATION_A_STRING_H_
#define ZOLT41_FOUNDATION_A_STRING_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"

// Byte strings in two shapes.
//
// An AZ string is bytes ended by a NUL. An A string is a length byte, that many bytes (the body),
// and a NUL behind them: 257 bytes hold every A string, and its body can be used as an AZ string.
//
// The source comes first and the destination after it. The caller owns and sizes every buffer. A
// destination may be its source, or overlap it where there is one source only. No function fails in
// another way than by its result; a null argument gives 0 unless told otherwise. Lengths and sizes
// are in bytes. No function keeps state.

// The number of bytes before the NUL.
ZOLT_API int32_t AZStrLen(char const *text);

// Copies `source`, but no more than `max` bytes (-1: all), and ends the copy with a NUL, so that
// `destination` needs `max` + 1 bytes. Gives the length of `source`, also when the copy was cut or
// `destination` is null.
ZOLT_API int32_t AZStrCopy(char const *source, char *destination, uint32_t max);

// Puts `a` and behind it `b` into `destination`, which may be `a`, `b` or both. Gives the size that
// the result needs, its NUL counted; with a null `destination` nothing is written.
ZOLT_API int32_t AZStrConcat(char const *a, char const *b, char *destination);

// Makes `text` exactly `length` bytes long: cuts it, or adds blanks behind it. The buffer holds
// `length` + 1 bytes. A `length` below 0 counts as 0. Gives `length` + 1.
ZOLT_API int32_t AZStrSetLen(char *text, int32_t length);

// The first place in `text` of exactly the byte `c`, or null. A NUL is never found. As with strchr,
// the place may be written to if `text` may be.
ZOLT_API char *AZStrCharPos(char const *text, char c);

// The number at the start of `text`: white space, a sign, decimal digits. 0 if there are no digits;
// a number that 32 bits do not hold gives the nearest one that they do.
ZOLT_API int32_t AZStr2Num(char const *text);

// Writes `number` in decimal, at most 11 characters and a NUL, and gives the length.
ZOLT_API int32_t Num2AZStr(int32_t number, char *destination);

// Sets the length byte to the low 8 bits of the length of the body up to its NUL, and gives it.
ZOLT_API int32_t AStrSync(char *text);

// AZStrSetLen on the body, with a `length` above 255 counting as 255. Gives the length.
ZOLT_API int32_t AStrSetLen(char *text, int32_t length);

// Copies an A string and gives its length; with a null `destination` nothing is copied.
// `destination` needs length + 2 bytes.
ZOLT_API int32_t AStrCopy(char const *source, char *destination);

// Puts `a` and behind it `b` into `destination`, which may be `a`, `b` or both. Gives 0; -74 if the
// end of `b` was cut so that the result has 255 bytes; -1 for a null argument.
ZOLT_API int32_t AStrConcat(char const *a, char const *b, char *destination);

// Num2AZStr into an A string.
ZOLT_API int32_t Num2AStr(int32_t number, char *destination);

// Makes an A string of the first 255 bytes of the AZ string `source`, and gives its length.
ZOLT_API int32_t AZ2AStrCopy(char const *source, char *destination);

// Makes `destination` of the `count` bytes (fewer at the end) of `source` from the byte `start` on,
// counted from 0. It becomes empty if there are none. A null argument changes nothing.
ZOLT_API void AStrExtractChars(char const *source, char *destination, int32_t start, int32_t count);

#endif  // ZOLT41_FOUNDATION_A_STRING_H_
