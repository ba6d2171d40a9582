#ifndef ZOLT41_CARDS_BLOB_FORMAT_H_
#define ZOLT41_CARDS_BLOB_FORMAT_H_

#include <cstdint>

namespace zolt {

// The bytes of a card's preferences; docs/formats/preference_blob.md describes them. Offsets and
// sizes in bytes.

inline constexpr uint32_t kBlobHead = 8;
inline constexpr uint32_t kBlobOrder = 0;  // one byte
inline constexpr char kBlobLittleEndian = 1;
inline constexpr uint32_t kBlobCount = 4;

inline constexpr uint32_t kSlotSize = 44;
inline constexpr uint32_t kSlotSection = 0;
inline constexpr uint32_t kSlotName = 4;
inline constexpr uint32_t kSlotNameSize = 32;
inline constexpr uint32_t kSlotValueSize = 36;
inline constexpr uint32_t kSlotValueOffset = 40;

// In memory only: the value lies in a block of its own, whose number stands in the offset.
inline constexpr uint32_t kSizeOutside = 0xFFFFFFFF;

}  // namespace zolt

#endif  // ZOLT41_CARDS_BLOB_FORMAT_H_
