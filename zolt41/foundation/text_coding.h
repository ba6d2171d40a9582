#ifndef ZOLT41_FOUNDATION_TEXT_CODING_H_
#define ZOLT41_FOUNDATION_TEXT_CODING_H_

#include <cstddef>
#include <string>
#include <string_view>

#include "zolt41/foundation/text_coding_blocks.h"

// Bytes as text, and back. Where a function takes `blocks`, these do the many bytes at once that
// the processor can; with null, which gives the same results, it goes without.

namespace zolt {

constexpr size_t Base64Size(size_t count) {
  return (count + 2) / 3 * 4;
}

// Base64 of RFC 2045, padded, without line ends. `text` has room for Base64Size of the bytes.
void EncodeBase64(std::string_view bytes, char *text, CodingBlocks const *blocks = VectorBlocks());
std::string Base64(std::string_view bytes);

// The same with CR LF behind every 60 characters; a shorter rest has none behind it.
std::string Base64InLines(std::string_view bytes);

// Takes what EncodeBase64 makes and nothing else: no blanks, whole groups, zeros in unused bits.
// False, with `bytes` of no use, for any other text.
bool DecodeBase64(std::string_view text, std::string *bytes,
                  CodingBlocks const *blocks = VectorBlocks());

constexpr size_t HexSize(size_t count) {
  return 2 * count;
}

constexpr bool IsHexDigit(char digit) {
  return (digit >= '0' && digit <= '9') || (digit >= 'A' && digit <= 'F');
}

// Two digits for each byte, the high one first; letters are capitals. `text` has room for HexSize
// of the bytes.
void EncodeHex(std::string_view bytes, char *text, CodingBlocks const *blocks = VectorBlocks());
void AppendHex(std::string_view bytes, std::string *text);

// Takes what EncodeHex makes and nothing else, small letters neither. False, with `bytes` of no
// use, for any other text.
bool DecodeHex(std::string_view text, std::string *bytes,
               CodingBlocks const *blocks = VectorBlocks());

// Quoted-printable as old readers of vCards know it: a line break of CR LF becomes =0A, an LF
// without a CR goes; 0x7F and tabs stand as they are; lines are broken before the 60th byte or a
// little behind it, and behind a blank that ends a line of the text.
std::string QuotedPrintable(std::string_view text);

}  // namespace zolt

#endif  // ZOLT41_FOUNDATION_TEXT_CODING_H_
