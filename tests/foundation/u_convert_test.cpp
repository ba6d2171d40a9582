#include "zolt41/foundation/u_convert.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

namespace {

using namespace std::string_literals;

TEST(UConvert, LocalTextGivesItsBytes) {
  char16_t wide[4] = u"###";
  EXPECT_EQ(ConvertLocalToUnicode("\x80\xE9", wide, 2), 4);
  EXPECT_EQ(std::u16string(wide), u"\u20AC\u00E9#");
  EXPECT_EQ(ConvertLocalToUnicode("ab", wide, -1), 6);
  EXPECT_EQ(wide[2], u'\0');
  char local[4] = "###";
  EXPECT_EQ(ConvertUnicodeToLocal(u"\u20AC\u0416", local, 2, 0), 2);
  EXPECT_STREQ(local, "\x80?#");
  EXPECT_EQ(ConvertUnicodeToLocal(u"\u20AC\u0416", local, 3, '*'), 3);
  EXPECT_STREQ(local, "\x80*");
}

TEST(UConvert, AsciiBorders) {
  char16_t wide[1];
  char bytes[3];
  ConvertUnicodeToAscii(u"\u0080\u0081\uFFE9", bytes, 3, '\0');
  EXPECT_EQ(std::string(bytes, 3), std::string("\x80\0\0", 3));
  EXPECT_EQ(ConvertAsciiToUnicode("a", wide, -3), -6);
  EXPECT_EQ(ConvertUnicodeToAscii(u"a", bytes, -3, '?'), -3);
  EXPECT_EQ(ConvertAsciiToUnicode(nullptr, wide, -3), 0);
}

// Exactly the room that a result needs; what lies behind shows whether more was written.
class Room {
 public:
  explicit Room(size_t size) : size_(size), bytes_(size + 8, '#') {}
  char *Bytes() { return bytes_.data(); }
  char16_t *Characters() { return reinterpret_cast<char16_t *>(bytes_.data()); }
  std::string Written() const {
    EXPECT_EQ(bytes_.substr(size_), "########");
    return bytes_.substr(0, size_);
  }

 private:
  size_t size_;
  std::string bytes_;
};

std::string BytesOf(std::u16string const &text) {
  return {reinterpret_cast<char const *>(text.data()), 2 * text.size()};
}

TEST(UCopies, OfAtMost255Characters) {
  for (size_t const length : std::array<size_t, 6>{0, 1, 254, 255, 256, 300}) {
    std::u16string const wide(length, u'\u20AC');
    std::string const local(length, '\x80');
    size_t const kept = std::min<size_t>(length, 255);
    auto const count = static_cast<int32_t>(kept);
    int32_t const cut = length > 255 ? -74 : 0;
    std::string const head(1, static_cast<char>(kept));
    std::string const nul(1, '\0');
    std::string const asUnicode = '\1' + head + BytesOf(wide.substr(0, kept)) + nul + nul;
    std::string const asMarks = '\1' + head + BytesOf(std::u16string(kept, u'?')) + nul + nul;

    Room u[] = {Room(4 + 2 * kept), Room(4 + 2 * kept), Room(4 + 2 * kept)};
    EXPECT_EQ(UZ2UStrCopy(wide.c_str(), u[0].Bytes()), count);
    EXPECT_EQ(LZ2UStrCopy(local.c_str(), u[1].Bytes(), 63), count);
    EXPECT_EQ(AZ2UStrCopy(local.c_str(), u[2].Bytes()), cut);
    EXPECT_TRUE(u[0].Written() == asUnicode && u[1].Written() == asUnicode) << length;
    EXPECT_TRUE(u[2].Written() == asMarks) << length;

    Room a[] = {Room(2 + kept), Room(2 + kept)};
    EXPECT_EQ(UZ2AStrCopy(wide.c_str(), a[0].Bytes(), '*'), cut);
    EXPECT_EQ(UZ2LStrCopy(wide.c_str(), a[1].Bytes(), 0), count);
    EXPECT_TRUE(a[0].Written() == head + std::string(kept, '*') + nul) << length;
    EXPECT_TRUE(a[1].Written() == head + local.substr(0, kept) + nul) << length;
  }
}

TEST(UCopies, OfWholeTexts) {
  for (size_t const blanks : std::array<size_t, 2>{0, 30000}) {
    std::u16string const wide = std::u16string(blanks, u' ') + u"\u0080\u00E9\u20AC\xDC00";
    std::string const bytes = std::string(blanks, ' ') + "a\x80\xE9";
    auto const narrowSize = static_cast<int32_t>(blanks + 5);
    auto const wideSize = static_cast<int32_t>(2 * blanks + 8);
    Room narrow[] = {Room(blanks + 5), Room(blanks + 5)};
    EXPECT_EQ(UZ2AZStrCopy(wide.c_str(), narrow[0].Bytes(), 0), narrowSize - 1);
    EXPECT_EQ(UZ2LZStrCopy(wide.c_str(), narrow[1].Bytes(), '*'), narrowSize);
    EXPECT_EQ(narrow[0].Written().substr(blanks), "\x80???\0"s);
    EXPECT_EQ(narrow[1].Written().substr(blanks), "*\xE9\x80*\0"s);
    Room widened[] = {Room(2 * blanks + 8), Room(2 * blanks + 8)};
    EXPECT_EQ(AZ2UZStrCopy(bytes.c_str(), widened[0].Characters()), wideSize);
    EXPECT_EQ(LZ2UZStrCopy(bytes.c_str(), widened[1].Characters(), 0), wideSize);
    EXPECT_EQ(widened[0].Written().substr(2 * blanks), BytesOf(u"a??\0"s));
    EXPECT_EQ(widened[1].Written().substr(2 * blanks), BytesOf(u"a\u20AC\u00E9\0"s));
  }
}

TEST(UCopies, OverTheirSource) {
  std::string const bytes(255, 'b');
  std::u16string const wide(255, u'b');
  Room room(2 * 255 + 4);
  bytes.copy(room.Bytes(), 255);
  room.Bytes()[255] = '\0';
  EXPECT_EQ(AZ2UStrCopy(room.Bytes(), room.Bytes()), 0);
  EXPECT_EQ(room.Written(), "\1\xFF" + BytesOf(wide + u'\0'));
  EXPECT_EQ(UZ2AStrCopy(room.Characters() + 1, room.Bytes() + 2, 0), 0);
  EXPECT_EQ(room.Written().substr(2, 257), '\xFF' + bytes + '\0');
  EXPECT_EQ(LZ2UZStrCopy(room.Bytes() + 3, room.Characters(), 0), 512);
  EXPECT_EQ(room.Written().substr(0, 512), BytesOf(wide + u'\0'));
}

}  // namespace
