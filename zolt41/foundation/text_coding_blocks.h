#ifndef ZOLT41_FOUNDATION_TEXT_CODING_BLOCKS_H_
#define ZOLT41_FOUNDATION_TEXT_CODING_BLOCKS_H_

#include <cstddef>

namespace zolt {

// Codings of many bytes at once. Each function goes from the start as far as whole blocks reach,
// and gives how much of its source it has done, which may be nothing: in encoding base64 a multiple
// of 3 bytes, in decoding it of 4 characters, in decoding hex of 2. Decoding stops before a block
// with a character that is no digit. Exactly the bytes that belong to what was done are written.
struct CodingBlocks {
  size_t (*encodeBase64)(char const *bytes, size_t size, char *text);
  size_t (*decodeBase64)(char const *text, size_t size, char *bytes);
  size_t (*encodeHex)(char const *bytes, size_t size, char *text);
  size_t (*decodeHex)(char const *text, size_t size, char *bytes);
};

// What this machine's processor has; null if that is nothing.
CodingBlocks const *VectorBlocks();

}  // namespace zolt

#endif  // ZOLT41_FOUNDATION_TEXT_CODING_BLOCKS_H_
