#ifndef ZOLT41_CARDFILE_CARD_KEY_H_
#define ZOLT41_CARDFILE_CARD_KEY_H_

#include <cstdint>

namespace zolt {

inline constexpr uint32_t kCardKeySize = 32;

// Makes a card's key: 24 characters, most of them from '!' on and none a NUL, and 8 bytes 0, out of
// moment, machine, user and memory.
void MakeCardKey(char (&key)[kCardKeySize]);

}  // namespace zolt

#endif  // ZOLT41_CARDFILE_CARD_KEY_H_
