#ifndef ZOLT41_TOOLS_ZOLT_TEXT_WORDS_H_
#define ZOLT41_TOOLS_ZOLT_TEXT_WORDS_H_

#include <algorithm>
#include <array>
#include <string_view>

namespace zolt::tool {

// The words of a preference text, for who writes it and who reads it.

inline constexpr std::string_view kTextMark = "zolt-preferences";
inline constexpr std::string_view kTextVersion = "1";
inline constexpr std::string_view kTextCodePage = "code-page";
inline constexpr std::string_view kTextStore = "store";
inline constexpr std::string_view kTextSection = "section";
inline constexpr std::string_view kTextUnset = "unset";
inline constexpr std::string_view kTextEnd = "end";
inline constexpr std::string_view kTextBase64 = "base64(";

// At the start of a line these are no names.
inline constexpr std::array kTextKeywords = {kTextSection, kTextUnset, kTextEnd};

constexpr bool IsTextKeyword(std::string_view word) {
  return std::ranges::find(kTextKeywords, word) != kTextKeywords.end();
}

// Names of these characters need no quotes.
constexpr bool PlainInName(char32_t c) {
  constexpr std::string_view kSigns = "_-.+";
  bool const letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c > 0xAD;
  return letter || (c >= '0' && c <= '9') ||
         (c < 0x80 && kSigns.find(static_cast<char>(c)) != std::string_view::npos);
}

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_TEXT_WORDS_H_
