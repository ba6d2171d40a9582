#include "zolt41/foundation/l_string.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace {

// Umlauts and a pound sign have other bytes in the two pages; the box line has none in the local
// one, and the euro none in the OEM one.
TEST(LString, ConvertsTheCountedBytesInPlace) {
  std::string text = "F\x81nf \x9C, Caf\x82 \xC4 end \x81\x81";
  OEMToLoclStr(text.data(), static_cast<int32_t>(text.size() - 1));
  EXPECT_EQ(text, "F\xFCnf \xA3, Caf\xE9 ? end \xFC\x81");
  std::string back = "\x80 F\xFCnf \xA3, Caf\xE9";
  LoclToOEMStr(back.data(), static_cast<int32_t>(back.size()));
  EXPECT_EQ(back, "? F\x81nf \x9C, Caf\x82");
  LoclToOEMStr(back.data(), -1);
  OEMToLoclStr(nullptr, 4);
  EXPECT_EQ(back.front(), '?');
}

TEST(LString, OrderWithAndWithoutCase) {
  std::tuple<char const *, char const *, int32_t, int32_t> const cases[] = {
      {"Name", "name", -1, 0},   {"\xC9", "\xE9", -1, 0}, {"b", "A", 1, 1}, {"a", "\xE9", -1, -1},
      {"\x8Az", "\x9Ay", -1, 1}, {"ab", "a", 1, 1},       {"", "", 0, 0}};
  for (auto const &[a, b, exact, blind] : cases) {
    EXPECT_EQ(LZStrCompare(a, b, 1), exact) << a << " and " << b;
    EXPECT_EQ(LZStrCompare(a, b, 0), blind) << a << " and " << b;
  }
  EXPECT_EQ(LZStrCompare(nullptr, "a", 0), 0);
  EXPECT_EQ(LZStrCompare("a", nullptr, 1), 0);
}

}  // namespace
