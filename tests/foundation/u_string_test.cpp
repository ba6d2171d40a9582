#include "zolt41/foundation/u_string.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <tuple>

namespace {

// A buffer for any U string, filled with bytes that show what was written.
struct UString {
  static constexpr size_t kSize = 514;
  alignas(char16_t) char bytes[kSize + 8];

  explicit UString(std::u16string_view text = u"", char mark = 1) {
    std::fill(std::begin(bytes), std::end(bytes), '#');
    bytes[0] = mark;
    bytes[1] = static_cast<char>(text.size());
    std::memcpy(bytes + 2, text.data(), 2 * text.size());
    std::memset(bytes + 2 + 2 * text.size(), 0, 2);
  }
  std::u16string Text() const {
    std::u16string text(static_cast<uint8_t>(bytes[1]), u'\0');
    std::memcpy(text.data(), bytes + 2, 2 * text.size());
    return text;
  }
  // Whether the mark is set, the NUL stands behind the text, and nothing was written behind the
  // room.
  bool IsWhole() const {
    char const *const end = bytes + 2 + 2 * Text().size();
    return bytes[0] == 1 && end[0] == '\0' && end[1] == '\0' &&
           std::string_view(bytes + kSize, 8) == "########";
  }
};

TEST(UString, SetLenCutsOrAddsBlanks) {
  std::tuple<int32_t, int32_t, char16_t const *> const cases[] = {
      {5, 12, u"ab   "}, {2, 6, u"ab"}, {1, 4, u"a"}, {0, 2, u""}, {-1, 2, u""}};
  for (auto const &[length, size, result] : cases) {
    char16_t text[] = u"ab\0#####";
    EXPECT_EQ(UZStrSetLen(text, length), size) << length;
    EXPECT_EQ(std::u16string_view(text), result) << length;
    EXPECT_EQ(text[std::max(length, 2) + 1], length == 5 ? u'#' : text[3]) << length;
  }
  UString longest(u"ab", 2);
  EXPECT_EQ(UStrSetLen(longest.bytes, 300), 255);
  EXPECT_EQ(longest.Text(), u"ab" + std::u16string(253, u' '));
  EXPECT_EQ(longest.bytes[0], 2);
  longest.bytes[0] = 1;
  EXPECT_TRUE(longest.IsWhole());
}

TEST(UString, SwapsByTheMark) {
  UString text(u"\x4100\x4200", 4);
  UStrCheckSwap(text.bytes);
  UStrCheckSwap(text.bytes);
  EXPECT_EQ(text.Text(), u"AB");
  EXPECT_EQ(text.bytes[0], 5);
  EXPECT_EQ(text.bytes[6] | text.bytes[7], 0);
  char16_t free[] = u"\x1234\x00FF\0\x1234";
  UZStrSwap(free);
  EXPECT_EQ(std::u16string_view(free, 4), std::u16string_view(u"\x3412\xFF00\0\x1234", 4));
}

TEST(UString, CopiesOverlap) {
  char16_t text[] = u"abcdef#";
  text[6] = u'\0';
  EXPECT_EQ(UZStrCopy(text + 2, text), 10);
  EXPECT_EQ(std::u16string_view(text), u"cdef");
  EXPECT_EQ(UZStrCopy(text, text + 1), 10);
  EXPECT_EQ(std::u16string_view(text), u"ccdef");
  UString source(u"xyz", 6);
  EXPECT_EQ(UStrCopy(source.bytes, source.bytes + 2), 3);
  EXPECT_EQ(std::string_view(source.bytes + 2, 11), std::string_view("\6\3x\0y\0z\0\0\0#", 11));
}

TEST(UString, ConcatKeepsTheFirstWhole) {
  std::tuple<size_t, size_t, size_t, int32_t> const cases[] = {
      {200, 55, 55, 0}, {200, 56, 55, -74}, {255, 255, 0, -74},
      {0, 255, 255, 0}, {3, 3, 3, 0},       {0, 0, 0, 0}};
  for (auto const &[a, b, kept, result] : cases) {
    std::u16string const expected = std::u16string(a, u'a') + std::u16string(kept, u'b');
    // Into a string of its own, over the first, and over the second.
    for (int place = 0; place < 3; place++) {
      UString texts[] = {UString(u"old"), UString(std::u16string(a, u'a'), 0),
                         UString(std::u16string(b, u'b'), 0)};
      UString &to = texts[place];
      EXPECT_EQ(UStrConcat(texts[1].bytes, texts[2].bytes, to.bytes), result) << a << ", " << b;
      EXPECT_EQ(to.Text(), expected) << a << ", " << b << ", " << place;
      EXPECT_TRUE(to.IsWhole()) << a << ", " << b << ", " << place;
    }
  }
  UString twice(u"abc");
  EXPECT_EQ(UStrConcat(twice.bytes, twice.bytes, twice.bytes), 0);
  EXPECT_EQ(twice.Text(), u"abcabc");
  EXPECT_EQ(UStrConcat(twice.bytes, nullptr, twice.bytes), -1);
  char16_t text[16] = u"abcde";
  EXPECT_EQ(UZStrConcat(u"xy", text, text), 16);
  EXPECT_EQ(UZStrConcat(text, text, text), 30);
  EXPECT_EQ(std::u16string_view(text), u"xyabcdexyabcde");
}

TEST(UString, WalksNeverPassTheEnds) {
  char16_t text[] = u"ab\0#";
  char16_t *const end = text + 2;
  EXPECT_EQ(UZStrNextChar(text), text + 1);
  EXPECT_EQ(UZStrNextChar(end), end);
  EXPECT_EQ(UZStrNextChar(nullptr), nullptr);
  EXPECT_EQ(UZStrPrevChar(text, end), text + 1);
  EXPECT_EQ(UZStrPrevChar(text, text), text);
  constexpr int32_t kMin = std::numeric_limits<int32_t>::min();
  std::tuple<int32_t, int, char16_t> const cases[] = {
      {kMin, 0, u'a'}, {0, 0, u'a'}, {1, 1, u'b'}, {2, 2, 0}, {INT32_MAX, 2, 0}};
  UString const u(u"ab");
  for (auto const &[position, place, character] : cases) {
    EXPECT_EQ(UZStrGetCharPtr(text, position), text + place) << position;
    EXPECT_EQ(UStrGetNthChar(u.bytes, position), character) << position;
  }
  EXPECT_EQ(UZStrCharPos(text, u'b'), text + 1);
  EXPECT_EQ(UZStrCharPos(text, u'B'), nullptr);
  EXPECT_EQ(UZStrCharPos(text, u'\0'), nullptr);
  EXPECT_EQ(UZStrCharPos(text, u'#'), nullptr);
}

TEST(UString, ExtractChars) {
  std::tuple<int32_t, int32_t, char16_t const *> const cases[] = {
      {0, 3, u"abc"}, {4, 2147483647, u"ef"}, {6, 1, u""}, {2, -1, u""}, {-1, 2, u""}, {2, 0, u""},
      {5, 1, u"f"}};
  for (auto const &[start, count, result] : cases) {
    UString text(u"abcdef", 0);
    UStrExtractChars(text.bytes, text.bytes, start, count);
    EXPECT_EQ(text.Text(), result) << start;
    EXPECT_TRUE(text.IsWhole()) << start;
  }
  UString ended(std::u16string_view(u"ab\0def", 6));
  UString part;
  UStrExtractChars(ended.bytes, part.bytes, 1, 4);
  EXPECT_EQ(part.Text(), u"b   ");
  UStrExtractChars(ended.bytes, part.bytes, 2, 2);
  EXPECT_EQ(part.Text(), u"");
}

TEST(UString, Numbers) {
  constexpr int32_t kMin = std::numeric_limits<int32_t>::min();
  char16_t text[13] = u"############";
  EXPECT_EQ(Num2UZStr(123, text), 8);
  EXPECT_EQ(std::u16string_view(text, 5), std::u16string_view(u"123\0#", 5));
  EXPECT_EQ(Num2UZStr(kMin, text), 24);
  EXPECT_EQ(UZStr2Num(text), kMin);
  UString u(u"", 0);
  EXPECT_EQ(Num2UStr(-7, u.bytes), 2);
  EXPECT_EQ(u.Text(), u"-7");
  EXPECT_TRUE(u.IsWhole());
  // A digit of another script is none, nor is what stands behind 255 characters.
  EXPECT_EQ(UZStr2Num(u" 12\u0663"), 12);
  EXPECT_EQ(UZStr2Num((std::u16string(254, u' ') + u"12").c_str()), 1);
}

}  // namespace
