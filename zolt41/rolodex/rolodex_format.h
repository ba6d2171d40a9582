#ifndef ZOLT41_ROLODEX_ROLODEX_FORMAT_H_
#define ZOLT41_ROLODEX_ROLODEX_FORMAT_H_

#include <cstdint>
#include <string_view>

namespace zolt {

// What stands in a card database; docs/formats/rolodex.md describes it. Sizes and positions in
// bytes.

inline constexpr uint32_t kRolodexMagic = 0x526F6C6F;  // at the beginning and at the end
inline constexpr uint32_t kRolodexHead = 8;            // magic, version
inline constexpr uint32_t kCategoryCount = 128;
inline constexpr uint32_t kCategoryInfoSize = 80;
inline constexpr uint32_t kCategoryNumberOffset = 64;
inline constexpr uint32_t kCategoryTableSize = kCategoryCount * kCategoryInfoSize;
inline constexpr uint32_t kCardArea = kRolodexHead + kCategoryTableSize;

inline constexpr uint32_t kEndMark = 0xFFFFFFFF;
inline constexpr uint32_t kEndMarkSize = 4;
inline constexpr std::string_view kStoredEndMark{"\xFF\xFF\xFF\xFF", kEndMarkSize};
inline constexpr uint32_t kIndexHead = 8;  // count, last id
inline constexpr uint32_t kTrailerSize = 12;
inline constexpr uint32_t kTrailerMagicOffset = 8;

// The head of a record, which is also an entry of the index.
inline constexpr uint32_t kEntrySize = 124;
inline constexpr uint32_t kPositionOffset = 0;
inline constexpr uint32_t kIdOffset = 4;  // 0 in a free record
inline constexpr uint32_t kSizeOffset = 8;
inline constexpr uint32_t kCategoriesOffset = 12;
inline constexpr uint32_t kNamesOffset = 28;
inline constexpr uint32_t kCardNames = 3;
inline constexpr uint32_t kCardNameSize = 32;

// A file, with its index, ends below this: positions are signed numbers of 32 bits.
inline constexpr uint32_t kLargestFile = 0x7FFFFFFF;

constexpr uint64_t IndexSize(uint64_t count) {
  return kIndexHead + count * kEntrySize;
}

// What ends a redo block.
inline constexpr uint32_t kRedoMagic = 0x6F646552;
inline constexpr uint32_t kRedoPieceHead = 8;  // position, length
inline constexpr uint32_t kRedoFooterSize = 20;
inline constexpr uint32_t kRedoStartOffset = 0;
inline constexpr uint32_t kRedoSizeOffset = 4;
inline constexpr uint32_t kRedoSumOffset = 8;  // 64 bits
inline constexpr uint32_t kRedoMagicOffset = 16;

// What the system writes as a whole, or not at all, when the process is killed.
inline constexpr uint32_t kWholeWrite = 4096;
// And what a disk writes so when the power goes.
inline constexpr uint32_t kSector = 512;

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_ROLODEX_FORMAT_H_
