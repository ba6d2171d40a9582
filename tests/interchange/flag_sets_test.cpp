#include "zolt41/interchange/flag_sets.h"

#include <gtest/gtest.h>

#include <bit>
#include <chrono>
#include <random>
#include <utility>
#include <vector>

namespace zolt::testing {
namespace {

// Bits 0 to 17 and 31, as a text can name them.
constexpr uint32_t kNamed = 0x8003FFFF;

TEST(FlagSetsTest, OfAnyNumberOfSetsTheLowestIsFound) {
  std::mt19937 generator(1);
  auto const random = [&generator] { return static_cast<uint32_t>(generator()); };
  auto const sparse = [&] {
    auto const bits = static_cast<uint32_t>(random());
    return bits & static_cast<uint32_t>(random());
  };
  FlagSets sets;
  for (int const most : {30, 4000, 30}) {
    sets.Clear();
    std::vector<std::pair<uint32_t, uint32_t>> all;
    for (int i = 0; i < most; i++) {
      uint32_t const flags = sparse() & kNamed;
      uint32_t const number = random() % 10000;
      sets.Add(flags, number);
      all.emplace_back(flags, number);
      // Of the others some bits, too, that no text names.
      uint32_t const within = sparse();
      uint32_t lowest = FlagSets::kNone;
      for (auto const &[each, itsNumber] : all) {
        if ((within | each) == within && itsNumber < lowest) lowest = itsNumber;
      }
      ASSERT_EQ(sets.LowestWithin(within), lowest) << most << " " << i;
    }
  }
}

// Each set of nine flags of eighteen; to look them all through each time would take minutes.
TEST(FlagSetsTest, ManySetsAreNotLookedThrough) {
  FlagSets sets;
  for (uint32_t set = 0; set < 1U << 18; set++) {
    if (std::popcount(set) == 9) sets.Add(set, set);
  }
  auto const start = std::chrono::steady_clock::now();
  uint32_t found = 0;
  for (uint32_t i = 0; i < 2'000'000; i++) {
    // The lower nine are one of them; the others are eight at most.
    if (sets.LowestWithin((i & 1) != 0 ? 0x1FF : i % 256 << 9) == 0x1FF) found++;
  }
  EXPECT_EQ(found, 1'000'000U);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

}  // namespace
}  // namespace zolt::testing
