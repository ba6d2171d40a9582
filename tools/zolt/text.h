#ifndef ZOLT41_TOOLS_ZOLT_TEXT_H_
#define ZOLT41_TOOLS_ZOLT_TEXT_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace zolt::tool {

// UTF-8 to the code page of the stores. Throws a usage error that names the first character that
// the page does not have, with a hint. `utf8` must be valid.
std::string ToLocal(std::string_view utf8, char const *hint = "");

std::string ToUtf8(std::string_view local);

// Valid UTF-8 without anything that would break a line or move a terminal's cursor: \t and \n for
// these two, a backslash doubled, and \xNN for each byte of other control characters.
std::string Escape(std::string_view utf8);

// A control character, or one that ends a line or turns the direction of writing.
bool Unprintable(char32_t character);

// How many columns `utf8` takes on a terminal.
size_t Width(std::string_view utf8);

// At most `limit` characters of `utf8`, with an ellipsis for the rest.
std::string Clip(std::string_view utf8, size_t limit);

// Without regard to the case of ASCII letters, as the stores compare names.
bool SameName(std::string_view a, std::string_view b);
std::string Folded(std::string_view name);

// Lower-case digits behind 0x; with a `limit`, at most so many bytes and an ellipsis.
std::string Hex(std::string_view bytes, size_t limit = std::string_view::npos);

std::string Base64(std::string_view bytes);
// The only form that Base64 gives is taken; else nothing.
std::optional<std::string> FromBase64(std::string_view text);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_TEXT_H_
