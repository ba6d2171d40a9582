#include "zolt41/foundation/u_compare.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace {

TEST(UCompare, OrderOfTheLocalPage) {
  std::u16string const long1 = std::u16string(255, u'x') + u"a";
  std::u16string const long2 = std::u16string(255, u'x') + u"b";
  std::tuple<char16_t const *, char16_t const *, int32_t> const cases[] = {
      {u"Name", u"nAME", 0},
      {u"\u00C9t\u00E9", u"\u00E9T\u00C9", 0},
      {u"\u0178", u"\u00FF", 0},
      {u"ab", u"abc", -1},
      {u"b", u"A", 1},
      {u"", u"a", -1},
      {u"e", u"\u00E9", -1},
      // What the page lacks is a '?', each half of a pair is one, and only 255 characters count.
      {u"\u0416", u"\u4E2D", 0},
      {u"\u0416", u"?", 0},
      {u"\U0001F600", u"??", 0},
      {u"\xD83D", u"?", 0},
      {long1.c_str(), long2.c_str(), 0},
      {long1.c_str() + 1, long2.c_str() + 1, -1}};
  for (auto const &[a, b, order] : cases) {
    EXPECT_EQ(UZStrCompare(a, b, 0), order);
    EXPECT_EQ(UZStrCompare(b, a, 1), -order);
    EXPECT_EQ(UZStrEqual(a, b, 0), order == 0 ? 1 : 0);
  }
  EXPECT_EQ(UZStrEqual(nullptr, nullptr, 0), 0);
}

TEST(UContains, FirstPlaceOfExactlyThePattern) {
  std::tuple<char16_t const *, char16_t const *, int16_t> const cases[] = {
      {u"Hello World", u"World", 6},
      {u"ababac", u"abac", 2},
      {u"aXbab", u"ab", 3},
      {u"abc", u"abcd", -1},
      {u"abc", u"C", -1},
      {u"caf\u00E9\u0416", u"\u00E9\u0416", 3},
      {u"\u0161", u"\u0061", -1},
      {u"abc", u"", -1},
      {u"", u"a", -1}};
  for (auto const &[text, pattern, place] : cases) EXPECT_EQ(UZStrContains(text, pattern), place);
  EXPECT_EQ(UZStrContains((std::u16string(32767, u'.') + u"ab").c_str(), u"ab"), 32767);
  EXPECT_EQ(UZStrContains((std::u16string(32768, u'.') + u"ab").c_str(), u"ab"), -1);
}

}  // namespace
