#ifndef ZOLT41_FOUNDATION_AZ_COMPARE_H_
#define ZOLT41_FOUNDATION_AZ_COMPARE_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"

// The comparisons of AZ strings that nearly all names go through.
//
// Both sides are folded: the top bit of every byte is dropped, and then a small letter becomes its
// capital. So 0xE1 is equal to 'A', and the signs from '[' to '`' come behind all letters. The byte
// 0x80 folds to the value of a NUL: where `a` ends, such a byte in `b` counts as an end, too; where
// `b` ends, `a` goes on and is the greater one. Nothing is read behind a NUL.

// 1 if the two are equal, else 0; 0 if either is null.
ZOLT_API int32_t AZStrEqual(char const *a, char const *b);

// -1, 0 or 1 as `a` is smaller than, equal to or greater than `b`; 0 if either is null.
ZOLT_API int32_t AZStrCompare(char const *a, char const *b);

// The first position, from 0, at which `pattern` stands in `text`. -1 if there is none up to 32767,
// if `pattern` is empty, or if either is null.
ZOLT_API int16_t AZStrContains(char const *text, char const *pattern);

#endif  // ZOLT41_FOUNDATION_AZ_COMPARE_H_
