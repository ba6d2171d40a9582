#include "zolt41/foundation/mem_block.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

TEST(MemBlock, KnowsItsSizeAndKeepsItsBytes) {
  char *block = NewMemClear(1000);
  EXPECT_EQ(std::string(block, 1000), std::string(1000, '\0'));
  std::fill_n(block, 1000, 'x');
  for (uint32_t size : {1000u, 2'000'000u, 7u, 0u}) {
    ASSERT_EQ(SetMemSize(&block, size), 0);
    EXPECT_EQ(GetMemSize(block), size);
    size_t const kept = std::min(size, 1000u);
    EXPECT_EQ(std::string(block, kept), std::string(kept, 'x'));
  }
  _DisposeMem(block);
}

TEST(MemBlock, RefusesWhatTheSizeFieldCannotJoin) {
  for (uint32_t size : {0xFFFFFFFCu, 0xFFFFFFFFu}) {
    EXPECT_EQ(NewMem(size), nullptr);
    EXPECT_EQ(NewMemClear(size), nullptr);
    char *block = NewMem(0);
    char *const before = block;
    EXPECT_EQ(SetMemSize(&block, size), -108);
    EXPECT_EQ(block, before);
    EXPECT_EQ(GetMemSize(block), 0u);
    _DisposeMem(block);
  }
}

}  // namespace
