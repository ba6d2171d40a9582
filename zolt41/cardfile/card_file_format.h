#ifndef ZOLT41_CARDFILE_CARD_FILE_FORMAT_H_
#define ZOLT41_CARDFILE_CARD_FILE_FORMAT_H_

#include <cstdint>

namespace zolt {

// The head of a card file; docs/formats/card_file.md describes it. Offsets and sizes in bytes.

inline constexpr char kCardMagic[] = "LN_091296";
inline constexpr uint32_t kCardHead = 56;
inline constexpr uint32_t kCardMagicSize = 10;
inline constexpr uint32_t kCardParentalControl = 12;
inline constexpr uint32_t kCardKey = 16;
inline constexpr uint32_t kCardVersion = 48;
inline constexpr uint32_t kLargestCardList = 0x7FFFFFFF - kCardHead;

}  // namespace zolt

#endif  // ZOLT41_CARDFILE_CARD_FILE_FORMAT_H_
