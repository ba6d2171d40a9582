#include "zolt41/rolodex/card_entry.h"

#include <algorithm>

namespace zolt {
namespace {

constexpr unsigned char kAllCategories = 255;

constexpr CategorySet kAllBits = {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF};

}  // namespace

CategorySet CategoryBits(unsigned char const *list) {
  CategorySet set{};
  if (list == nullptr) return set;
  if (*list == kAllCategories) return kAllBits;
  std::for_each(list + 1, list + 1 + *list, [&](unsigned char category) {
    if (category < kCategoryCount) set[category / 32] |= uint32_t{1} << (category & 31);
  });
  return set;
}

void CategoryList(CategorySet const &set, unsigned char *list) {
  *list = kAllCategories;
  if (set == kAllBits) return;
  unsigned char count = 0;
  for (uint32_t category = 0; category < kCategoryCount; category++)
    if ((set[category / 32] >> (category & 31) & 1) != 0)
      list[++count] = static_cast<unsigned char>(category);
  *list = count;
}

}  // namespace zolt
