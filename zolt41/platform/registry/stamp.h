#ifndef ZOLT41_PLATFORM_REGISTRY_STAMP_H_
#define ZOLT41_PLATFORM_REGISTRY_STAMP_H_

#include <atomic>
#include <cstdint>
#include <string_view>

namespace zolt {

// What stood in the words that guard a piece of a hive when it was read. A copy of that piece is
// good for as long as the words still hold this.
struct Stamp {
  uint64_t word;
  uint64_t epoch;

  bool operator==(Stamp const &) const = default;
};

// Where the words of one hive lie.
struct StampSource {
  std::atomic<uint64_t> const *words;
  uint32_t mask;  // what is left of a word's index; 0 where one word guards the whole hive
  std::atomic<uint64_t> const *epoch;

  Stamp Read(uint32_t index) const {
    uint64_t const first = epoch->load(std::memory_order_acquire);
    return {words[index & mask].load(std::memory_order_acquire), first};
  }
};

// Words of the user hive: one for each hash of a key and a value name, and one for the tree of
// keys itself.
inline constexpr uint32_t kValueWords = 4096;
inline constexpr uint32_t kKeysWord = kValueWords;
inline constexpr uint32_t kWordMask = 0x1FFF;

// The word that guards the value `name` of a key. Names that the registry holds for equal give
// the same word.
uint32_t ValueWord(int64_t key, std::string_view name);

// The word that guards which values and subkeys a key has.
uint32_t ShapeWord(int64_t key);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_REGISTRY_STAMP_H_
