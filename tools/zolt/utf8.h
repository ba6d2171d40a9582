#ifndef ZOLT41_TOOLS_ZOLT_UTF8_H_
#define ZOLT41_TOOLS_ZOLT_UTF8_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace zolt::tool {

inline constexpr char32_t kInvalid = 0xFFFFFFFF;

// The character at `*at`, which then moves behind it. kInvalid, moving by one byte, where the bytes
// are no character: cut short, longer than need be, a surrogate, or beyond U+10FFFF.
char32_t NextCharacter(std::string_view text, size_t *at);

bool ValidUtf8(std::string_view text);

void AppendUtf8(char32_t character, std::string *text);

// Between UTF-8, which must be valid, and 16-bit text. Half a pair becomes U+FFFD.
std::u16string Utf16FromUtf8(std::string_view text);
std::string Utf8FromUtf16(std::u16string_view text);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_UTF8_H_
