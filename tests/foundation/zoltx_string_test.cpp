#include "zolt41/foundation/zoltx_string.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <tuple>
#include <utility>

namespace {

// All bytes of the length, and the NUL that must stand behind them.
std::string BytesOf(ZOLTXString const &text) {
  EXPECT_EQ(text.GetBuffer()[text.GetLength()], '\0');
  return {text.GetBuffer(), static_cast<size_t>(text.GetLength())};
}

TEST(ZOLTXString, TakesEachKindOfValue) {
  EXPECT_EQ(BytesOf(ZOLTXString(nullptr)), "");
  EXPECT_EQ(BytesOf(ZOLTXString("abc", -1)), "");
  EXPECT_EQ(BytesOf(ZOLTXString('x') + INT32_MIN), "x-2147483648");
  ZOLTXString text("a");
  EXPECT_EQ(BytesOf(text + text + "b" + 5 + 'x'), "aab5x");
  EXPECT_EQ(BytesOf(text), "a");
  ((text += "bc") += -7) += 'd';
  EXPECT_EQ(BytesOf(text += text), "abc-7dabc-7d");
  EXPECT_EQ(BytesOf(text += text.GetBuffer() + 10), "abc-7dabc-7d7d");
}

TEST(ZOLTXString, KeepsItsBufferForTextOfTheSameLength) {
  ZOLTXString text("abc");
  char const *const buffer = text.GetBuffer();
  text = "xyz";
  text = ZOLTXString(123);
  text = *&text;
  EXPECT_STREQ(buffer, "123");
  EXPECT_EQ(text.GetBuffer(), buffer);
  text = buffer + 1;
  EXPECT_EQ(BytesOf(text), "23");
}

// Copies and cuts take the bytes of the length, comparing and joining the text before the NUL.
TEST(ZOLTXString, ANulWithinTheLengthEndsTheText) {
  using namespace std::string_view_literals;
  ZOLTXString const text("ab\0cd", 5);
  EXPECT_EQ(BytesOf(ZOLTXString(text)), "ab\0cd"sv);
  EXPECT_EQ(BytesOf(text.Mid(1, 3)), "b\0c"sv);
  EXPECT_TRUE(text == "ab" && text == ZOLTXString("ab") && text != "AB");
  EXPECT_EQ(text.OffsetOf('c'), -1);
  EXPECT_EQ(text.ROffsetOf('\0'), 2);
  EXPECT_EQ(ZOLTXString("a:b:c").OffsetOf(':'), 1);
  EXPECT_EQ(ZOLTXString("a:b:c").ReverseFind(':'), 3);
  EXPECT_EQ(BytesOf(text + "xy"), "abxy\0\0\0"sv);
  EXPECT_EQ(BytesOf(ZOLTXString("xy") + text), "xyab\0\0\0"sv);
  EXPECT_FALSE(ZOLTXString('\0').IsEmpty());
  EXPECT_EQ(BytesOf(ZOLTXString("a") += '\0'), "a\0"sv);
  EXPECT_EQ(BytesOf(ZOLTXString(text).Replace('d', 'e')), "ab\0ce"sv);
}

TEST(ZOLTXString, LimitsWhereToInsertAndWhatToReplace) {
  std::tuple<char const *, int32_t, int32_t, char const *> const cases[] = {
      {"XY", -3, 0, "XY0123456789"}, {"XY", 99, 0, "0123456789XY"}, {"XY", 8, 5, "01234567XY"},
      {"XY", 20, 4, "0123456789XY"}, {"XY", 3, -4, "012XY3456789"}, {"", 2, 7, "019"},
      {"XY", -2, 4, "XY456789"},     {"XY", 1, INT32_MAX, "0XY"},   {"", 0, 10, ""}};
  for (auto const &[text, start, count, result] : cases) {
    ZOLTXString edited("0123456789");
    EXPECT_EQ(BytesOf(edited.Replace(text, start, count)), result);
  }
  EXPECT_EQ(BytesOf(ZOLTXString("ab").Insert("X", -3).Insert("Y", 99)), "XabY");
  ZOLTXString own("abcd");
  EXPECT_EQ(BytesOf(own.Insert(own, 2)), "ababcdcd");
  EXPECT_EQ(BytesOf(own.Replace(own.GetBuffer() + 6, 0, 7)), "cdd");
}

TEST(ZOLTXString, LimitsWhatToCut) {
  ZOLTXString const text("abcde");
  std::tuple<int32_t, int32_t, char const *> const cases[] = {
      {2, 100, "cde"}, {9, 1, ""},        {-2, 3, "abc"},
      {1, -1, ""},     {5, 5, ""},        {INT32_MIN, INT32_MAX, "abcde"},
      {3, 1, "d"},     {INT32_MAX, 1, ""}};
  for (auto const &[start, count, result] : cases)
    EXPECT_EQ(BytesOf(text.Mid(start, count)), result) << start << " and " << count;
  EXPECT_EQ(BytesOf(text.Mid(INT32_MIN)), "abcde");
  EXPECT_EQ(BytesOf(text.Mid(4)), "e");
  EXPECT_EQ(BytesOf(text.Mid(6)), "");
  EXPECT_EQ(BytesOf(text.Left(2) + text.Left(-1) + text.Left(99)), "ababcde");
  EXPECT_EQ(BytesOf(text.Right(2) + text.Right(-1) + text.Right(99)), "deabcde");
}

TEST(ZOLTXString, ChangesTheCaseOfAsciiLettersInThePlainLocale) {
  ZOLTXString text("aZ\0z\xE9\xFF", 6);
  text.ToUpper();
  EXPECT_EQ(BytesOf(text), std::string("AZ\0Z\xE9\xFF", 6));
  text.ToLower();
  EXPECT_EQ(BytesOf(text), std::string("az\0z\xE9\xFF", 6));
}

// In the results a '|' stands for a carriage return.
TEST(ZOLTXString, WrapsAtBlanks) {
  std::tuple<char const *, int32_t, char const *> const cases[] = {
      {"one two three four", 7, "one two|three|four"},
      {"one two three four", 6, "one|two|three|four"},
      {"one two", 7, "one two"},
      {"abcdefgh", 3, "abcdefgh"},
      {"abcdefgh ij kl", 3, "abcdefgh|ij|kl"},
      {"one|two|three four", 10, "one|two|three four"},
      {"one two|three", 7, "one|two|three"},
      {"abcd|ef gh", 3, "abcd|ef|gh"},
      {"a b  c", 0, "a|b||c"},
      {"a b c ", 1, "a|b|c|"},
      {"a b", -1, "a b"},
      {"a b", INT32_MAX, "a b"},
      {"", 5, ""}};
  for (auto const &[text, width, result] : cases) {
    ZOLTXString wrapped(text);
    wrapped.Replace('|', '\r').Wordwrap(width);
    EXPECT_EQ(BytesOf(wrapped.Replace('\r', '|')), result) << width;
  }
}

TEST(ZOLTXString, TellsTheWidthOfAGlyphByTwoBytes) {
  std::pair<char const *, int32_t> const cases[] = {
      {"xA", 1},       {"\xE2\x7F", 1}, {"x\xE0", 3},    {"x\xFF", 3},
      {"x\xC0", 2},    {"x\xDF", 2},    {"\xE2\x82", 3}, {"\xC3\xA9", 2},
      {"\x7F\x80", 1}, {"\x82\xBF", 3}, {"\xDF\x80", 2}};
  for (auto const &[text, width] : cases) EXPECT_EQ(ZOLTXString(text).GlyphWidth(1), width);
  EXPECT_EQ(ZOLTXString("\xBF").GlyphWidth(0), 1);
  EXPECT_EQ(ZOLTXString("\xC3\xA9").GlyphWidth(0), 2);
}

}  // namespace
