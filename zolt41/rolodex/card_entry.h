#ifndef ZOLT41_ROLODEX_CARD_ENTRY_H_
#define ZOLT41_ROLODEX_CARD_ENTRY_H_

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "zolt41/foundation/endian.h"
#include "zolt41/platform/system/large_pages.h"
#include "zolt41/rolodex/rolodex_format.h"

namespace zolt {

// A set of categories, as the words of a record's head.
using CategorySet = std::array<uint32_t, 4>;

// The head of a record, in the form in which it is stored.
class CardEntry {
 public:
  // Undefined content, so that many of them can be made and then read from a file.
  CardEntry() {}  // NOLINT(modernize-use-equals-default): that would clear it
  explicit CardEntry(char const *bytes) { std::memcpy(bytes_, bytes, kEntrySize); }

  static CardEntry Cleared() {
    CardEntry entry;
    std::memset(entry.bytes_, 0, kEntrySize);
    return entry;
  }

  uint32_t position() const { return LoadLittle32(bytes_ + kPositionOffset); }
  uint32_t id() const { return LoadLittle32(bytes_ + kIdOffset); }
  uint32_t size() const { return LoadLittle32(bytes_ + kSizeOffset); }
  // Where the next record begins; beyond 32 bits in a damaged head.
  uint64_t end() const { return uint64_t{position()} + size(); }
  bool free() const { return id() == 0; }
  void set_position(uint32_t position) { StoreLittle32(position, bytes_ + kPositionOffset); }
  void set_id(uint32_t id) { StoreLittle32(id, bytes_ + kIdOffset); }
  void set_size(uint32_t size) { StoreLittle32(size, bytes_ + kSizeOffset); }

  CategorySet categories() const {
    CategorySet set;
    for (uint32_t i = 0; i < set.size(); i++) set[i] = LoadLittle32(WordAt(i));
    return set;
  }
  void set_categories(CategorySet const &set) {
    for (uint32_t i = 0; i < set.size(); i++) StoreLittle32(set[i], WordAt(i));
  }
  bool Has(uint32_t category) const {
    return (LoadLittle32(WordAt(category / 32)) >> (category & 31) & 1) != 0;
  }
  void Mark(uint32_t category, bool on) {
    uint32_t const bit = uint32_t{1} << (category & 31);
    uint32_t const word = LoadLittle32(WordAt(category / 32));
    StoreLittle32(on ? word | bit : word & ~bit, WordAt(category / 32));
  }

  // Ends with its field also where the NUL is missing.
  std::string_view name(uint32_t which) const {
    return {field(which), strnlen(field(which), kCardNameSize - 1)};
  }
  // All bytes that a name has, what stands behind its NUL too.
  char const *field(uint32_t which) const { return bytes_ + NameAt(which); }
  void set_name(uint32_t which, std::string_view name) {
    char *const stored = bytes_ + NameAt(which);
    std::memset(stored, 0, kCardNameSize);
    name.copy(stored, kCardNameSize - 1);
  }

  char const *bytes() const { return bytes_; }
  std::string_view part(uint32_t offset, uint32_t count) const { return {bytes_ + offset, count}; }

 private:
  static size_t NameAt(uint32_t which) { return kNamesOffset + size_t{which} * kCardNameSize; }
  char const *WordAt(uint32_t word) const { return bytes_ + kCategoriesOffset + size_t{word} * 4; }
  char *WordAt(uint32_t word) { return bytes_ + kCategoriesOffset + size_t{word} * 4; }

  char bytes_[kEntrySize];
};
static_assert(sizeof(CardEntry) == kEntrySize);

// The set that a list of categories stands for (its first byte counts the numbers behind it, 255
// stands for all categories), and back: `list` has room for 129 bytes. A null list is empty.
CategorySet CategoryBits(unsigned char const *list);
void CategoryList(CategorySet const &set, unsigned char *list);

// Whether a set has all of the wanted categories, or one of them at least.
inline bool HasAll(CategorySet const &set, CategorySet const &wanted) {
  return std::ranges::equal(set, wanted, [](uint32_t a, uint32_t b) { return (a & b) == b; });
}
inline bool HasAny(CategorySet const &set, CategorySet const &wanted) {
  return !std::ranges::equal(set, wanted, [](uint32_t a, uint32_t b) { return (a & b) == 0; });
}

using CardEntries = LargeVector<CardEntry>;

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_CARD_ENTRY_H_
