#include "zolt41/platform/system/codepage.h"

#include <gtest/gtest.h>
#include <iconv.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstring>
#include <numeric>
#include <random>
#include <string>
#include <tuple>
#include <utility>

namespace zolt {
namespace {

std::string AllBytes() {
  std::string bytes(256, '\0');
  std::iota(bytes.begin(), bytes.end(), '\0');
  return bytes;
}

// What the C library makes of one character; false where it knows none.
bool ConvertedElsewhere(iconv_t handle, void const *source, size_t size, void *to, size_t room) {
  char *from = static_cast<char *>(const_cast<void *>(source));
  char *end = static_cast<char *>(to);
  iconv(handle, nullptr, nullptr, nullptr, nullptr);
  return iconv(handle, &from, &size, &end, &room) == 0;
}

// The bytes that the C library leaves undefined are the controls of the same number.
TEST(CodePage, PagesAreThoseOfTheCLibrary) {
  std::pair<uint32_t, char const *> const cases[] = {
      {1250, "CP1250"}, {1251, "CP1251"},      {1252, "CP1252"},       {1253, "CP1253"},
      {1254, "CP1254"}, {1257, "CP1257"},      {437, "CP437"},         {850, "CP850"},
      {866, "CP866"},   {28591, "ISO-8859-1"}, {28605, "ISO-8859-15"}, {CP_OEMCP, "CP437"}};
  for (auto const &[page, name] : cases) {
    iconv_t const widen = iconv_open("UTF-16LE", name);
    std::string undefined;
    for (char const byte : AllBytes()) {
      char16_t expected = static_cast<uint8_t>(byte);
      if (!ConvertedElsewhere(widen, &byte, 1, &expected, 2)) undefined += byte;
      char16_t character = 0;
      ASSERT_EQ(MultiByteToWideChar(page, 0, &byte, 1, &character, 1), 1);
      EXPECT_EQ(character, expected) << name;
    }
    if (page == 1252) {
      EXPECT_EQ(undefined, "\x81\x8D\x8F\x90\x9D");
    }
    iconv_close(widen);

    iconv_t const narrow = iconv_open(name, "UTF-16LE");
    for (uint32_t i = 0; i <= 0xFFFF; i++) {
      auto const character = static_cast<char16_t>(i);
      bool const isUndefined = i < 0x100 && undefined.find(static_cast<char>(i)) != undefined.npos;
      char expected = isUndefined ? static_cast<char>(i) : '*';
      ConvertedElsewhere(narrow, &character, 2, &expected, 1);
      char byte = 0;
      int32_t usedDefault = -1;
      ASSERT_EQ(WideCharToMultiByte(page, 0, &character, 1, &byte, 1, "*", &usedDefault), 1);
      ASSERT_EQ(byte, expected) << name << i;
      ASSERT_EQ(usedDefault, byte == '*' && i != '*' ? 1 : 0) << name << i;
    }
    iconv_close(narrow);
  }
}

// Whether a text is converted right into a place some bytes behind its start, in one buffer. What
// is expected comes from texts that lie apart, one character at a time.
template <typename From, typename To>
bool Converts(int distance, int32_t count, int32_t (*convert)(From const *, int32_t, To *)) {
  constexpr size_t kStart = 160;
  alignas(char16_t) char buffer[480];
  std::minstd_rand random(1);
  for (char &byte : buffer) byte = static_cast<char>(random() >> 8);
  size_t const to = kStart + static_cast<size_t>(distance);
  size_t const odd = to % alignof(To);
  auto *const source = reinterpret_cast<From *>(buffer + kStart - odd);
  for (int32_t i = 0; i < count; i++) {
    // A character beyond ASCII is at every place of a block in turn.
    source[i] = static_cast<From>(u"abcdefgh\u20ACijk\u00E9lmnop"[(i + distance + 180) % 18]);
  }
  std::string expected(buffer, sizeof buffer);
  for (int32_t i = 0; i < count; i++) {
    To unit{};
    convert(source + i, 1, &unit);
    std::memcpy(&expected[to - odd] + static_cast<size_t>(i) * sizeof unit, &unit, sizeof unit);
  }
  convert(source, count, reinterpret_cast<To *>(buffer + to - odd));
  return expected == std::string(buffer, sizeof buffer);
}

int32_t Widen(char const *source, int32_t count, char16_t *destination) {
  return MultiByteToWideChar(1252, 0, source, count, destination, count);
}

int32_t Narrow(char16_t const *source, int32_t count, char *destination) {
  return WideCharToMultiByte(1252, 0, source, count, destination, count, nullptr, nullptr);
}

TEST(CodePage, TextsMayOverlap) {
  for (int32_t count : {1, 2, 15, 16, 17, 33, 48, 65}) {
    for (int distance = -132; distance <= 132; distance++) {
      ASSERT_TRUE(Converts(distance, count, Narrow)) << count << " at " << distance;
      ASSERT_TRUE(Converts(distance, count, Widen)) << count << " at " << distance;
    }
  }
}

TEST(CodePage, RefusesWhatItCannotDo) {
  std::tuple<uint32_t, int32_t, int32_t, int32_t> const cases[] = {
      {1252, -1, 0, 4}, {1252, -1, 3, 0}, {1252, -1, 4, 4}, {1252, 3, 2, 0},  {1252, 3, 3, 3},
      {1252, 1, 1, 1},  {1252, 0, 4, 0},  {1252, 0, 0, 0},  {1252, -2, 4, 0}, {1252, 3, -1, 0},
      {65001, 3, 4, 0}, {65001, 3, 0, 0}, {1252, 1, 0, 1}};
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
  int32_t usedDefault = 0;
  EXPECT_EQ(WideCharToMultiByte(1252, 0, u"\u0100", -1, nullptr, 0, nullptr, &usedDefault), 2);
  EXPECT_EQ(usedDefault, 1) << "would be used";
  EXPECT_LT(lstrcmpA(nullptr, ""), 0);
  EXPECT_EQ(lstrcmpiA(nullptr, nullptr), 0);
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
  std::tuple<char const *, uint32_t, char const *, char const *> const cases[] = {
      {"1252", 1252, "aA\xE9\xC9\xFF\x9F\x9A\x8A\x9C\x8C\xFE\xDE", "\xD7\xF7\xDF\xFF[{e\xE9"},
      {"1251", 1251, "\xE6\xC6\xFF\xDF\xB8\xA8\xB4\xA5\xB3\xB2", "\xE6\xC7\xAB\xBB"},
      {"1253", 1253, "\xE1\xC1\xDC\xA2\xFE\xBF\xF3\xD3\xF2\xF3", "\xE1\xDC\xB5\xCC"},
      {"1254", 1254, "iI\xF0\xD0", "i\xFDi\xDD\xFD\xDD"},
      {"866", 866, "\xA6\x86\xEF\x9F\xF1\xF0", "\xB0\xB1"},
      {"1251x", 1252, "\xE9\xC9", ""}};
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
