#include "zolt41/foundation/az_compare.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace {

TEST(AZCompare, FoldedOrder) {
  std::tuple<char const *, char const *, int32_t> const cases[] = {
      {"Name", "NAME", 0}, {"A", "\xC1", 0},  {"\xE1", "A", 0},  {"i", "\xE9", 0},
      {"abc", "ABD", -1},  {"abc", "ab", 1},  {"ab", "abc", -1}, {"a_", "aZ", 1},
      {"a{", "a`", 1},     {"@", "a", -1},    {"z", "[", -1},    {"\x80", "\x80", 0},
      {"a\x80", "a", 1},   {"a", "a\x80", 0}, {"", "\x81", -1},  {"\xFF", "~", 1},
      {"", "", 0}};
  for (auto const &[a, b, order] : cases) {
    EXPECT_EQ(AZStrCompare(a, b), order) << a << " and " << b;
    EXPECT_EQ(AZStrEqual(a, b), order == 0 ? 1 : 0) << a << " and " << b;
  }
  EXPECT_EQ(AZStrCompare(nullptr, "a"), 0);
  EXPECT_EQ(AZStrEqual(nullptr, nullptr), 0);
}

TEST(AZContains, FirstPlace) {
  std::tuple<char const *, char const *, int16_t> const cases[] = {
      {"Hello World", "WORLD", 6}, {"ababac", "abac", 2}, {"abc", "abcd", -1}, {"abc", "C", 2},
      {"xyyy", "xy", 0},           {"aXbab", "ab", 3},    {"abc", "", -1},     {"", "a", -1},
      {"caf\xE9", "FI", 2},        {"abc", nullptr, -1},  {nullptr, "a", -1}};
  for (auto const &[text, pattern, place] : cases) EXPECT_EQ(AZStrContains(text, pattern), place);
  EXPECT_EQ(AZStrContains((std::string(32767, '.') + "ab").c_str(), "ab"), 32767);
  EXPECT_EQ(AZStrContains((std::string(32768, '.') + "ab").c_str(), "ab"), -1);
}

}  // namespace
