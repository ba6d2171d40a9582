#ifndef ZOLT41_PLATFORM_SYSTEM_ASCII_BLOCK_H_
#define ZOLT41_PLATFORM_SYSTEM_ASCII_BLOCK_H_

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zolt {

// ASCII text is by far the most common, so it is looked at this many bytes at once.
inline constexpr size_t kAsciiBlock = 8;

// Whether all bytes of the block at `text` are below 0x80.
inline bool IsAsciiBlock(char const *text) {
  uint64_t word;
  std::memcpy(&word, text, sizeof word);
  return (word & 0x8080808080808080) == 0;
}

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_ASCII_BLOCK_H_
