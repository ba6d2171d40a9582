#ifndef ZOLT41_PREFS_NUMBER_TEXT_H_
#define ZOLT41_PREFS_NUMBER_TEXT_H_

#include <cstdint>

namespace zolt {

// Reads the number that `text` begins with: white space, a sign, then hexadecimal digits behind 0x,
// octal ones behind 0, else decimal ones. What follows is ignored. Of a number that 32 bits do not
// hold the low 32 bits of its 64 are taken. Gives false, and leaves `*number`, if there is none.
bool ScanNumber(char const *text, int32_t *number);

inline constexpr uint32_t kNumberTextSize = 16;

// Writes `number` in decimal, ended by a NUL.
void PrintNumber(int32_t number, char (&text)[kNumberTextSize]);

}  // namespace zolt

#endif  // ZOLT41_PREFS_NUMBER_TEXT_H_
