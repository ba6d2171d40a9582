#ifndef ZOLT41_FOUNDATION_U_STRING_H_
#define ZOLT41_FOUNDATION_U_STRING_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"

// 16-bit strings in two shapes. A character is one 16-bit unit; surrogates are characters like any
// other.
//
// A UZ string is characters ended by a NUL of 16 bits. A U string is a mark byte, a length byte,
// that many characters, and a NUL behind them: 514 bytes hold every U string. Bit 0 of the mark
// tells that the characters are in this machine's byte order. A U string begins at an even address,
// so that its characters can be used as a UZ string.
//
// The data size of a string is the bytes of its characters; the struct size counts the NUL, too,
// and the first two bytes of a U string. Lengths and positions are in characters, sizes in bytes.
//
// The source comes first and the destination after it. The caller owns and sizes every buffer. A
// destination may be its source, or overlap it where there is one source only. Where a U string is
// built, the marks of its sources are not looked at and its own becomes 1, so call UStrCheckSwap
// for foreign text first. No function fails in another way than by its result; a null argument
// gives 0 unless told otherwise. Where a place in a text is given, it may be written to if the text
// may be, as with strchr. No function keeps state.

// The number of characters before the NUL, and the two sizes.
ZOLT_API int32_t UZStrLen(char16_t const *text);
ZOLT_API int32_t UZStrDataSize(char16_t const *text);
ZOLT_API int32_t UZStrStructSize(char16_t const *text);

// The length byte, and the sizes by it.
ZOLT_API int32_t UStrLen(char const *text);
ZOLT_API int32_t UStrDataSize(char const *text);
ZOLT_API int32_t UStrStructSize(char const *text);

// The characters of a U string; null for null.
ZOLT_API char16_t *UasUZStr(char const *text);

// Sets the length byte to the low 8 bits of the number of characters before the NUL, and gives it.
ZOLT_API int32_t UStrSync(char *text);

// Makes `text` exactly `length` characters long: cuts it, or adds blanks behind it. The buffer
// holds `length` + 1 characters. A `length` below 1 counts as 0. Gives the struct size.
ZOLT_API int32_t UZStrSetLen(char16_t *text, int32_t length);

// UZStrSetLen on the characters, with a `length` above 255 counting as 255. Gives the length.
ZOLT_API int32_t UStrSetLen(char *text, int32_t length);

// If bit 0 of the mark is not set: sets it, and swaps the two bytes of each of the characters that
// the length byte counts.
ZOLT_API void UStrCheckSwap(char *text);

// Swaps the two bytes of every character before the NUL.
ZOLT_API void UZStrSwap(char16_t *text);

// Copies a U string with its mark, and gives its length. `destination` needs the struct size.
ZOLT_API int32_t UStrCopy(char const *source, char *destination);

// Copies a UZ string and gives its struct size.
ZOLT_API int32_t UZStrCopy(char16_t const *source, char16_t *destination);

// Puts `a` and behind it `b` into `destination`, which may be `a`, `b` or both. UZStrConcat gives
// the struct size of the result. UStrConcat gives 0; -74 if the end of `b` was cut so that the
// result has 255 characters; -1 for a null argument.
ZOLT_API int32_t UZStrConcat(char16_t const *a, char16_t const *b, char16_t *destination);
ZOLT_API int32_t UStrConcat(char const *a, char const *b, char *destination);

// The first place in `text` of exactly the character `c`, or null. A NUL is never found.
ZOLT_API char16_t *UZStrCharPos(char16_t const *text, char16_t c);

// The next character; at the NUL, and for null, `place` itself.
ZOLT_API char16_t *UZStrNextChar(char16_t const *place);

// The character before `place`, which lies in the text that begins at `start`; at the start, the
// start. Null if either is null.
ZOLT_API char16_t *UZStrPrevChar(char16_t const *start, char16_t const *place);

// The character at `position`, from 0; behind the end, the NUL. `text` itself if it is null or
// `position` is below 1.
ZOLT_API char16_t *UZStrGetCharPtr(char16_t const *text, int32_t position);

// The same of a U string, as a value: 0 behind the end.
ZOLT_API char16_t UStrGetNthChar(char const *text, int32_t position);

// Makes `destination` of the `count` characters (fewer at the end) of `source` from the position
// `start` on, counted from 0. It becomes empty if there are none. A null argument changes nothing.
ZOLT_API void UStrExtractChars(char const *source, char *destination, int32_t start, int32_t count);

// Write `number` in decimal, at most 11 characters and a NUL. Num2UZStr gives the struct size,
// Num2UStr the length.
ZOLT_API int32_t Num2UZStr(int32_t number, char16_t *destination);
ZOLT_API int32_t Num2UStr(int32_t number, char *destination);

// The number at the start of the first 255 characters of `text`, as AZStr2Num reads it.
ZOLT_API int32_t UZStr2Num(char16_t const *text);

// Leave the text as it is: there is no case in these strings. For programs that call them.
ZOLT_API void UZStrToUpper(char16_t *text);
ZOLT_API void UZStrToLower(char16_t *text);

#endif  // ZOLT41_FOUNDATION_U_STRING_H_
