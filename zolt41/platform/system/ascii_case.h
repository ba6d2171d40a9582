#ifndef ZOLT41_PLATFORM_SYSTEM_ASCII_CASE_H_
#define ZOLT41_PLATFORM_SYSTEM_ASCII_CASE_H_

namespace zolt {

// Names of keys, sections, values and modules are equal without regard to the case of ASCII letters
// alone.

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

#endif  // ZOLT41_PLATFORM_SYSTEM_ASCII_CASE_H_
