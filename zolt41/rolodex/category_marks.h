#ifndef ZOLT41_ROLODEX_CATEGORY_MARKS_H_
#define ZOLT41_ROLODEX_CATEGORY_MARKS_H_

#include <array>
#include <bit>
#include <cstdint>
#include <utility>
#include <vector>

#include "zolt41/rolodex/rolodex_format.h"

namespace zolt {

// The slots that may have a category, for those that were cleared once: so the next clearing need
// not look at all of them.
class CategoryMarks {
 public:
  // A slot has got a category. Takes no memory.
  void Note(uint32_t slot, uint32_t category) {
    std::vector<uint64_t> &words = words_[category];
    if (slot / kWord < words.size()) words[slot / kWord] |= uint64_t{1} << slot % kWord;
  }

  // Calls with each of the slots below `slots` that may have the category; afterwards none has.
  template <typename Visit>
  void Clear(uint32_t category, uint32_t slots, Visit const &visit) {
    std::vector<uint64_t> const words =
        std::exchange(words_[category], std::vector<uint64_t>((slots + kWord - 1) / kWord));
    for (size_t i = 0; i < words.size(); i++) {
      for (uint64_t left = words[i]; left != 0; left &= left - 1)
        visit(static_cast<uint32_t>(i * kWord + static_cast<size_t>(std::countr_zero(left))));
    }
    for (size_t slot = words.size() * kWord; slot < slots; slot++)
      visit(static_cast<uint32_t>(slot));
  }

 private:
  static constexpr uint32_t kWord = 64;

  std::array<std::vector<uint64_t>, kCategoryCount> words_;
};

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_CATEGORY_MARKS_H_
