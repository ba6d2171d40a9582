#ifndef ZOLT41_PREFS_ASCII_CASE_H_
#define ZOLT41_PREFS_ASCII_CASE_H_

namespace zolt {

// The names of sections and values are equal without regard to the case of ASCII letters alone.

constexpr char FoldAscii(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
}

constexpr bool EqualButForAsciiCase(char const *a, char const *b) {
  while (*a != '\0' && FoldAscii(*a) == FoldAscii(*b)) {
    ++a;
    ++b;
  }
  return FoldAscii(*a) == FoldAscii(*b);
}

}  // namespace zolt

#endif  // ZOLT41_PREFS_ASCII_CASE_H_
