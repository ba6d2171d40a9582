#include "zolt41/platform/system/string_table.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(StringTable, CutsToTheBufferAndKnowsItsOwnStringsOnly) {
  char buffer[260] = "########";
  HINSTANCE const library = zolt::LibraryInstance();
  EXPECT_EQ(LoadStringA(library, 61842, buffer, 5), 4);
  EXPECT_EQ(std::string(buffer, 6), std::string("Send\0#", 6));
  EXPECT_EQ(LoadStringA(library, 25, buffer, 0), 0);
  EXPECT_EQ(LoadStringA(library, 26, buffer, 260), 0);
  EXPECT_EQ(LoadStringA(library + 1, 25, buffer, 260), 0);
  EXPECT_STREQ(buffer, "Send");
  EXPECT_EQ(LoadStringA(library, 109, buffer, 260), 32);
  EXPECT_STREQ(buffer, "Software:Veltrane:Tessaly:Shared");
}

}  // namespace
