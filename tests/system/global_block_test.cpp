#include "zolt41/platform/system/global_block.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zolt {
namespace {

TEST(GlobalBlockTest, BlocksKnowTheirSizeAndKeepWhatFits) {
  void *block = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, 5);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(GlobalLock(block)) % alignof(std::max_align_t), 0U);
  EXPECT_EQ(std::string_view(static_cast<char *>(block), 5), std::string_view("\0\0\0\0\0", 5));
  std::string_view("abcde").copy(static_cast<char *>(block), 5);
  block = GlobalReAlloc(block, 100000, GMEM_ZEROINIT);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(GlobalSize(block), 100000U);
  std::string_view const grown(static_cast<char *>(GlobalLock(block)), 100000);
  EXPECT_TRUE(grown.starts_with("abcde"));
  EXPECT_EQ(grown.find_last_not_of('\0'), 4U);
  EXPECT_EQ(GlobalReAlloc(block, UINT64_MAX - 8, 0), nullptr);
  EXPECT_EQ(GlobalSize(block), 100000U) << "as it was";
  block = GlobalReAlloc(block, 0, 0);
  EXPECT_EQ(GlobalSize(block), 0U);
  EXPECT_EQ(GlobalFree(block), nullptr);
  EXPECT_EQ(GlobalAlloc(0, UINT64_MAX), nullptr);
  EXPECT_EQ(GlobalLock(nullptr), nullptr);
  EXPECT_EQ(GlobalSize(nullptr), 0U);
  EXPECT_EQ(GlobalReAlloc(nullptr, 4, 0), nullptr);
  EXPECT_EQ(GlobalFree(nullptr), nullptr);
}

}  // namespace
}  // namespace zolt
