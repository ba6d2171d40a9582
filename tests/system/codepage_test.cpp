#include "zolt41/platform/system/codepage.h"

#include <gtest/gtest.h>
#include <iconv.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstring>
#include <numeric>
#include <random>
#include <string>

namespace zolt {
namespace {

std::string AllBytes() {
  std::string bytes(256, '\0');
  std::iota(bytes.begin(), bytes.end(), '\0');
  return bytes;
}

// The two characters stand at every place of the blocks in which ASCII is converted.
TEST(CodePage, CharactersOfThePagesThereAndBack) {
  struct {
    uint32_t page;
    std::string bytes;
    std::u16string characters;
  } const cases[] = {
      {1250, "\x8A\xFF", u"\u0160\u02D9"},     {1251, "\xC6\xB9", u"\u0416\u2116"},
      {1252, "\x81\x9F", u"\u0081\u0178"},     {1253, "\xE1\xFF", u"\u03B1\u00FF"},
      {1254, "\xDD\xFD", u"\u0130\u0131"},     {1257, "\xE0\xB4", u"\u0105\u00B4"},
      {437, "\x1F\xC4", u"\u001F\u2500"},      {850, "\xD5\xB5", u"\u0131\u00C1"},
      {866, "\x80\xFC", u"\u0410\u2116"},      {28591, "\xA4\xE9", u"\u00A4\u00E9"},
      {28605, "\xA4\xBD", u"\u20AC\u0153"},    {CP_ACP, "\x80\xE9", u"\u20AC\u00E9"},
      {CP_OEMCP, "\x80\x82", u"\u00C7\u00E9"},
  };
  for (auto const &[page, bytes, characters] : cases) {
    std::string texts[34] = {AllBytes()};
    for (size_t at = 1; at < 34; at++) {
      texts[at] = std::string(at, 'a') + bytes + std::string(48, '0');
    }
    for (std::string const &text : texts) {
      int32_t const size = static_cast<int32_t>(text.size());
      std::u16string wide(text.size(), u'\0');
      std::string back(text.size(), '\0');
      int32_t usedDefault = -1;
      ASSERT_EQ(MultiByteToWideChar(page, 0, text.data(), size, wide.data(), size), size);
      EXPECT_TRUE(size == 256 || wide.substr(text.find(bytes), 2) == characters) << page;
      ASSERT_EQ(
          WideCharToMultiByte(page, 0, wide.data(), size, back.data(), size, nullptr, &usedDefault),
          size);
      EXPECT_EQ(back, text) << page;
      EXPECT_EQ(usedDefault, 0) << page;
    }
  }
}

// What the C library makes of one character; false where it knows none.
bool ConvertedElsewhere(iconv_t handle, void const *source, size_t size, void *to, size_t room) {
  char *from = static_cast<char *>(const_cast<void *>(source));
  char *end = static_cast<char *>(to);
  return iconv(handle, &from, &size, &end, &room) == 0;
}

// The five bytes that the C library leaves undefined are the controls of the same number.
TEST(CodePage, Page1252IsThatOfTheCLibrary) {
  iconv_t const widen = iconv_open("UTF-16LE", "CP1252");
  std::string undefined;
  for (char const byte : AllBytes()) {
    char16_t expected = static_cast<uint8_t>(byte);
    if (!ConvertedElsewhere(widen, &byte, 1, &expected, 2)) undefined += byte;
    char16_t character = 0;
    ASSERT_EQ(MultiByteToWideChar(1252, 0, &byte, 1, &character, 1), 1);
    EXPECT_EQ(character, expected);
  }
  EXPECT_EQ(undefined, "\x81\x8D\x8F\x90\x9D");
  iconv_close(widen);

  iconv_t const narrow = iconv_open("CP1252", "UTF-16LE");
  for (uint32_t i = 0; i <= 0xFFFF; i++) {
    auto const character = static_cast<char16_t>(i);
    bool const isUndefined = i < 0x100 && undefined.find(static_cast<char>(i)) != undefined.npos;
    char expected = isUndefined ? static_cast<char>(i) : '*';
    iconv(narrow, nullptr, nullptr, nullptr, nullptr);
    ConvertedElsewhere(narrow, &character, 2, &expected, 1);
    char byte = 0;
    int32_t usedDefault = -1;
    ASSERT_EQ(WideCharToMultiByte(1252, 0, &character, 1, &byte, 1, "*", &usedDefault), 1);
    ASSERT_EQ(byte, expected) << i;
    ASSERT_EQ(usedDefault, byte == '*' && i != '*' ? 1 : 0) << i;
  }
  iconv_close(narrow);
}

// A text at the start and room for another some bytes away, in one buffer. What is expected comes
// from texts that lie apart, one character at a time.
class Overlap {
 public:
  explicit Overlap(int distance) : to_(kStart + static_cast<size_t>(distance)) {
    std::minstd_rand random(1);
    for (char &byte : buffer_) byte = static_cast<char>(random() >> 8);
  }

  bool Narrows(int32_t count) {
    auto *const source = reinterpret_cast<char16_t *>(buffer_ + kStart);
    for (int32_t i = 0; i < count; i++) source[i] = u"abcdefgh\u20ACijk\u00E9lmnop"[i % 18];
    std::string expected(buffer_, sizeof buffer_);
    for (int32_t i = 0; i < count; i++) {
      WideCharToMultiByte(1252, 0, source + i, 1, &expected[to_] + i, 1, nullptr, nullptr);
    }
    WideCharToMultiByte(1252, 0, source, count, buffer_ + to_, count, nullptr, nullptr);
    return expected == std::string(buffer_, sizeof buffer_);
  }

  bool Widens(int32_t count) {
    std::string expected(buffer_, sizeof buffer_);
    size_t const odd = to_ % 2;
    char const *const source = buffer_ + kStart - odd;
    for (int32_t i = 0; i < count; i++) {
      char16_t character;
      MultiByteToWideChar(1252, 0, source + i, 1, &character, 1);
      std::memcpy(&expected[to_ - odd] + 2 * i, &character, 2);
    }
    auto *const destination = reinterpret_cast<char16_t *>(buffer_ + to_ - odd);
    MultiByteToWideChar(1252, 0, source, count, destination, count);
    return expected == std::string(buffer_, sizeof buffer_);
  }

 private:
  static constexpr size_t kStart = 160;
  alignas(char16_t) char buffer_[480];
  size_t to_;
};

TEST(CodePage, TextsMayOverlap) {
  for (int32_t count : {1, 2, 15, 16, 17, 33, 48, 65}) {
    for (int distance = -132; distance <= 132; distance++) {
      ASSERT_TRUE(Overlap(distance).Narrows(count)) << count << " at " << distance;
      ASSERT_TRUE(Overlap(distance).Widens(count)) << count << " at " << distance;
    }
  }
}

TEST(CodePage, RefusesWhatItCannotDo) {
  struct {
    uint32_t page;
    int32_t count;
    int32_t size;
    int32_t result;
  } const cases[] = {
      {1252, -1, 0, 4}, {1252, -1, 3, 0}, {1252, -1, 4, 4}, {1252, 3, 2, 0},  {1252, 3, 3, 3},
      {1252, 1, 1, 1},  {1252, 0, 4, 0},  {1252, 0, 0, 0},  {1252, -2, 4, 0}, {1252, 3, -1, 0},
      {65001, 3, 4, 0}, {65001, 3, 0, 0}, {1252, 1, 0, 1},
  };
  for (auto const &[page, count, size, result] : cases) {
    char16_t wide[] = u"####";
    char narrow[] = "####";
    EXPECT_EQ(MultiByteToWideChar(page, 0, "abc", count, wide, size), result) << count;
    EXPECT_EQ(WideCharToMultiByte(page, 0, u"abc", count, narrow, size, nullptr, nullptr), result);
    size_t const written = size > 0 ? static_cast<size_t>(result) : 0;
    std::string const expected = std::string("abc\0", 4).substr(0, written);
    EXPECT_EQ(std::string(narrow, 4), expected + std::string(4 - written, '#')) << count;
    EXPECT_EQ(std::u16string(wide, 4), std::u16string(narrow, narrow + 4)) << count;
  }
  EXPECT_EQ(MultiByteToWideChar(1252, 0, "abc", 3, nullptr, 3), 0);
  EXPECT_EQ(WideCharToMultiByte(1252, 0, u"abc", 3, nullptr, 3, nullptr, nullptr), 0);
  EXPECT_EQ(WideCharToMultiByte(1252, 0, nullptr, 3, nullptr, 0, nullptr, nullptr), 0);
}

TEST(CodePage, OneDefaultForEachUnitThatThePageLacks) {
  char narrow[] = "#######";
  int32_t usedDefault = 0;
  EXPECT_EQ(WideCharToMultiByte(1252, 0, u"a\u0100\xDC00\U0001F600\xD800", -1, nullptr, 0, "*",
                                &usedDefault),
            7);
  EXPECT_EQ(usedDefault, 1);
  EXPECT_EQ(WideCharToMultiByte(1252, 0, u"a\u0100\xDC00\U0001F600\xD800", 6, narrow, 7, nullptr,
                                nullptr),
            6);
  EXPECT_STREQ(narrow, "a?????#");
}

TEST(CodePage, Utf8ThereAndBack) {
  std::string local;
  EXPECT_EQ(Utf8FromLocal("Caf\xE9 for 5 \x80\x81"), "Caf\xC3\xA9 for 5 \xE2\x82\xAC\xC2\x81");
  EXPECT_TRUE(LocalFromUtf8(Utf8FromLocal(AllBytes()), &local));
  EXPECT_EQ(local, AllBytes());
  // No valid UTF-8: cut, overlong (two, three and four bytes), a surrogate, a lone tail, too large.
  // Valid, but not in the page: Cyrillic, and one above U+FFFF whose low half is an 'A'.
  for (char const *text :
       {"\xC3", "a\xE2\x82", "\xC1\x81", "\xE0\x81\x81", "\xF0\x80\x81\x81", "\xED\xA0\x80", "\x80",
        "\xF4\x90\x80\x80", "\xFF", "\xC3(", "abc\xD0\x96", "\xF0\x90\x81\x81"}) {
    EXPECT_FALSE(LocalFromUtf8(text, &local)) << text;
  }
  EXPECT_EQ(local, AllBytes());
}

TEST(CodePage, OrderOfTexts) {
  EXPECT_GT(lstrcmpA("\xE9", "z"), 0);
  EXPECT_LT(lstrcmpA(nullptr, ""), 0);
  EXPECT_GT(lstrcmpiA("ab", "A"), 0);
  EXPECT_GT(lstrcmpiA("\x80", ""), 0);
  EXPECT_EQ(lstrcmpiA(nullptr, nullptr), 0);
}

// Whether the bytes of `text`, taken two by two, are all the same letter (or all are not).
bool AllPairsFold(std::string const &text, bool same) {
  for (size_t i = 0; i < text.size(); i += 2) {
    char const pair[] = {text[i], '\0', text[i + 1], '\0'};
    if ((lstrcmpiA(pair, pair + 2) == 0) != same) return false;
  }
  return true;
}

// The page is chosen once in a process, so each one has a process of its own.
TEST(CodePageDeathTest, TheEnvironmentChoosesThePageThatIsFolded) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  struct {
    char const *variable;
    uint32_t page;
    char const *pairs;
    char const *others;
  } const cases[] = {
      {"1252", 1252, "aA\xE9\xC9\xFF\x9F\x9A\x8A\x9C\x8C\xFE\xDE", "\xD7\xF7\xDF\xFF[{e\xE9"},
      {"1251", 1251, "\xE6\xC6\xFF\xDF\xB8\xA8\xB4\xA5\xB3\xB2", "\xE6\xC7\xAB\xBB"},
      {"1253", 1253, "\xE1\xC1\xDC\xA2\xFE\xBF\xF3\xD3\xF2\xF3", "\xE1\xDC\xB5\xCC"},
      {"1254", 1254, "iI\xF0\xD0", "i\xFDi\xDD\xFD\xDD"},
      {"866", 866, "\xA6\x86\xEF\x9F\xF1\xF0", "\xB0\xB1"},
      {"1251x", 1252, "\xE9\xC9", ""},
  };
  for (auto const &[variable, page, pairs, others] : cases) {
    EXPECT_EXIT(
        {
          setenv("ZOLT_CODEPAGE", variable, 1);
          bool const folds = AllPairsFold(pairs, true) && AllPairsFold(others, false);
          _exit(folds && LocalCodePage() == page ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "")
        << variable;
  }
}

}  // namespace
}  // namespace zolt
