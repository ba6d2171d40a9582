#include "zolt41/interchange/flag_sets.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "zolt41/cards/property_format.h"

namespace zolt {
namespace {

// A text names those that have a name, and by an empty one the first bit that has none; the last
// bit stands apart from the others.
constexpr uint32_t kLastBit = 31;
constexpr uint32_t kLowBits = 9;
constexpr uint32_t kHighBits = 10;
constexpr uint32_t kRow = 1U << kLowBits;
constexpr uint32_t kRows = 1U << kHighBits;

constexpr uint32_t Nameless() {
  auto const *const first = std::ranges::find(kPropertyFlagNames, std::string_view());
  return static_cast<uint32_t>(first - kPropertyFlagNames.begin());
}
static_assert(Nameless() == kLowBits + kHighBits - 2);

constexpr uint32_t Low(uint32_t flags) {
  return flags & (kRow - 1);
}

constexpr uint32_t High(uint32_t flags) {
  return ((flags >> kLowBits) & (kRows / 2 - 1)) | (flags >> kLastBit) << (kHighBits - 1);
}

}  // namespace

void FlagSets::Add(uint32_t flags, uint32_t number) {
  if (isTable()) return AddToTable({flags, number});
  few_.push_back({flags, number});
  if (!isTable()) return;
  table_.assign(size_t{kRow} * kRows, kNone);
  for (Numbered const &set : few_) AddToTable(set);
}

void FlagSets::AddToTable(Numbered set) {
  uint32_t const low = Low(set.flags);
  uint32_t const high = High(set.flags);
  // Each row that has all the higher flags of the set.
  for (uint32_t row = high; row < kRows; row = (row + 1) | high) {
    uint32_t &lowest = table_[size_t{row} * kRow + low];
    lowest = std::min(lowest, set.number);
  }
}

uint32_t FlagSets::LowestWithin(uint32_t flags) const {
  uint32_t lowest = kNone;
  if (!isTable()) {
    for (Numbered const &set : few_) {
      if ((set.flags & ~flags) == 0) lowest = std::min(lowest, set.number);
    }
    return lowest;
  }
  uint32_t const *const row = table_.data() + size_t{High(flags)} * kRow;
  uint32_t const low = Low(flags);
  // Each set that has some of the lower flags, or none.
  for (uint32_t some = low;; some = (some - 1) & low) {
    lowest = std::min(lowest, row[some]);
    if (some == 0) return lowest;
  }
}

}  // namespace zolt
