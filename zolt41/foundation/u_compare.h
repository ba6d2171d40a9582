#ifndef ZOLT41_FOUNDATION_U_COMPARE_H_
#define ZOLT41_FOUNDATION_U_COMPARE_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"

// The comparisons of UZ strings.
//
// The order is that of the local code page, without regard to the case of its letters. Only the
// first 255 characters of each side take part, and every character that the page lacks counts as a
// '?'.

// -1, 0 or 1 as `a` is smaller than, equal to or greater than `b`; 0 if either is null. `third` has
// no effect.
ZOLT_API int32_t UZStrCompare(char16_t const *a, char16_t const *b, int32_t third);

// 1 if UZStrCompare gives 0, else 0; 0, too, if either is null. `third` has no effect.
ZOLT_API int32_t UZStrEqual(char16_t const *a, char16_t const *b, int32_t third);

// The first position, from 0, at which exactly the characters of `pattern` stand in `text`. -1 if
// there is none up to 32767, if `pattern` is empty, or if either is null. Nothing is read behind a
// NUL.
ZOLT_API int16_t UZStrContains(char16_t const *text, char16_t const *pattern);

#endif  // ZOLT41_FOUNDATION_U_COMPARE_H_
