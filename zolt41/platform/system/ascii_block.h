#ifndef ZOLT41_PLATFORM_SYSTEM_ASCII_BLOCK_H_
#define ZOLT41_PLATFORM_SYSTEM_ASCII_BLOCK_H_

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zolt {

// ASCII text is by far the most common, so it is looked at and copied this many characters at once.
inline constexpr size_t kAsciiBlock = 8;

// Whether all characters of the block at `text` are below 0x80.
inline bool IsAsciiBlock(char const *text) {
  uint64_t word;
  std::memcpy(&word, text, sizeof word);
  return (word & 0x8080808080808080) == 0;
}

inline bool IsAsciiBlock(char16_t const *text) {
  uint64_t words[2];
  std::memcpy(words, text, sizeof words);
  return ((words[0] | words[1]) & 0xFF80FF80FF80FF80) == 0;
}

// Copies a block of ASCII, made wider or narrower. The two may overlap. By way of arrays that
// alias nothing, so that the compiler converts the block in a few instructions.
template <typename From, typename To>
void CopyAsciiBlock(From const *source, To *destination) {
  From from[kAsciiBlock];
  To to[kAsciiBlock];
  std::memcpy(from, source, sizeof from);
  for (size_t i = 0; i < kAsciiBlock; i++) to[i] = static_cast<To>(from[i]);
  std::memcpy(destination, to, sizeof to);
}

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_ASCII_BLOCK_H_
