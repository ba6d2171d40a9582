#ifndef ZOLT41_PLATFORM_SYSTEM_CODEPAGE_H_
#define ZOLT41_PLATFORM_SYSTEM_CODEPAGE_H_

#include <cstdint>
#include <string>
#include <string_view>

// Text in the machine's single-byte code pages and its 16-bit form. Code page 0 is the local
// (ANSI) one: 1252, unless the environment variable ZOLT_CODEPAGE names another single-byte page
// that is known here; code page 1 is the OEM one: 437, or what ZOLT_OEM_CODEPAGE names. The pages
// are chosen once, at the first use in the process. Known by number are 1250 to 1254, 1257, 437,
// 850, 866, 28591 and 28605.
//
// A byte that a page leaves undefined becomes the character of the same number, and back, so that
// every byte survives the way there and back. In 1252 these are 0x81, 0x8D, 0x8F, 0x90 and 0x9D,
// which become the controls U+0081 to U+009D.
//
// Each 16-bit unit is converted by itself. No page has a surrogate, so a lone one becomes one
// default character, and a pair becomes two. A NUL that is counted is converted, to a NUL.

inline constexpr uint32_t CP_ACP = 0;
inline constexpr uint32_t CP_OEMCP = 1;

// Converts `count` bytes (-1: up to and with the NUL) of `source` to 16-bit characters, one for
// each byte. With `size` 0 nothing is written and the number of characters needed is given, which
// takes no more than counting; `destination` may then be null. Else `size` is the room at
// `destination` in characters. Gives the characters written, or 0 on failure: a null source, a
// count of 0 or below -1, a destination that is null or too small (it is left as it is; nothing is
// cut), or a code page that is not known. `source` and `destination` may overlap in any way.
// `flags` has no effect.
int32_t MultiByteToWideChar(uint32_t codePage, uint32_t flags, char const *source, int32_t count,
                            char16_t *destination, int32_t size);

// The other way, with `count` in characters and `size` in bytes. `defaultChar` points to the byte
// that stands for a character that the page does not have (null: '?'); `*usedDefault`, if not null,
// becomes 1 if it was used (or, with `size` 0, would be) and 0 if not.
int32_t WideCharToMultiByte(uint32_t codePage, uint32_t flags, char16_t const *source,
                            int32_t count, char *destination, int32_t size, char const *defaultChar,
                            int32_t *usedDefault);

// `count` bytes from one code page to the other; `source` and `destination` may be the same. A
// character that the other page lacks becomes '?'. Give 1, or 0 for a null argument.
int32_t OemToCharBuffA(char const *source, char *destination, uint32_t count);
int32_t CharToOemBuffA(char const *source, char *destination, uint32_t count);

// Order of two texts of the local code page: negative, 0 or positive. lstrcmpA compares the bytes
// and gives 0 for equal bytes only; lstrcmpiA first folds the letters of the code page. A null
// pointer sorts before every text. Of one letter's two cases the small one stands in the order.
int32_t lstrcmpA(char const *a, char const *b);
int32_t lstrcmpiA(char const *a, char const *b);

namespace zolt {

// The number of the local code page, for example 1252.
uint32_t LocalCodePage();

// Local text to UTF-8 and back. The way back gives false, and leaves `text` as it is, if `utf8` is
// no valid UTF-8 or holds a character that the code page lacks.
std::string Utf8FromLocal(std::string_view text);
bool LocalFromUtf8(std::string_view utf8, std::string *text);
bool IsUtf8(std::string_view text);
// Adds one character, which is no surrogate, to a text in UTF-8.
void AddUtf8(char32_t character, std::string *utf8);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_CODEPAGE_H_
