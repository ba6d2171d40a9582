#include "zolt41/foundation/u_convert.h"

#include <gtest/gtest.h>

#include <string>

namespace {

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

// Every length about the block's, with a character that is no ASCII at the end.
TEST(UConvert, AsciiWidensAndNarrowsInPlace) {
  std::string const text = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLM";
  for (size_t length = 0; length < text.size(); length++) {
    std::u16string buffer(length + 2, u'#');
    std::u16string const expected(text.begin(), text.begin() + static_cast<int>(length));
    auto const count = static_cast<int32_t>(length + 1);
    char *const bytes = reinterpret_cast<char *>(buffer.data());
    (text.substr(0, length) + '\x80').copy(bytes, length + 1);
    ASSERT_EQ(ConvertAsciiToUnicode(bytes, buffer.data(), count), 0);
    ASSERT_EQ(buffer, expected + u"?#");
    buffer[length] = u'\u0081';
    ASSERT_EQ(ConvertUnicodeToAscii(buffer.data(), bytes, count, '*'), 0);
    ASSERT_EQ(std::string(bytes, length + 1), text.substr(0, length) + '*');
  }
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

}  // namespace
