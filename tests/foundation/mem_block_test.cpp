#include "zolt41/foundation/mem_block.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

TEST(MemBlock, KeepsItsBytesAndRefusesWhatTheSizeFieldCannotJoin) {
  char *block = NewMemClear(1000);
  EXPECT_EQ(std::string(block, 1000), std::string(1000, '\0'));
  std::fill_n(block, 1000, 'x');
  for (uint32_t size : {1000u, 2'000'000u, 7u, 0u}) {
    ASSERT_EQ(SetMemSize(&block, size), 0);
    EXPECT_EQ(std::string(block, std::min(size, 1000u)), std::string(std::min(size, 1000u), 'x'));
    for (uint32_t large : {0xFFFFFFFCu, 0xFFFFFFFFu}) {
      EXPECT_EQ(NewMem(large), nullptr);
      EXPECT_EQ(NewMemClear(large), nullptr);
      EXPECT_EQ(SetMemSize(&block, large), -108);
    }
    EXPECT_EQ(GetMemSize(block), size);
  }
  _DisposeMem(block);
}

}  // namespace
