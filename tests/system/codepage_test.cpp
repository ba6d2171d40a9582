#include "zolt41/platform/system/codepage.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <numeric>
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
    std::string texts[18] = {AllBytes()};
    for (size_t at = 1; at < 18; at++) texts[at] = std::string(at, 'a') + bytes + "0123456789abcd";
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

TEST(CodePage, RefusesWhatItCannotDo) {
  char16_t wide[4] = u"xyz";
  EXPECT_EQ(MultiByteToWideChar(1252, 0, "abc", -1, nullptr, 0), 4);
  EXPECT_EQ(MultiByteToWideChar(1252, 0, "abc", -1, wide, 3), 0);
  EXPECT_EQ(MultiByteToWideChar(65001, 0, "abc", -1, wide, 4), 0);
  EXPECT_EQ(MultiByteToWideChar(1252, 0, "abc", -2, wide, 4), 0);
  EXPECT_EQ(std::u16string(wide), u"xyz");
  char narrow[3] = "##";
  int32_t usedDefault = 0;
  EXPECT_EQ(WideCharToMultiByte(1252, 0, u"a\u0100", 2, narrow, 2, "*", &usedDefault), 2);
  EXPECT_STREQ(narrow, "a*");
  EXPECT_EQ(usedDefault, 1);
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
