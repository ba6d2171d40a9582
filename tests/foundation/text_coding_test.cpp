#include "zolt41/foundation/text_coding.h"

#include <array>
#include <random>
#include <utility>
#include <vector>

#include "tests/support/format_page.h"

namespace zolt::testing {
namespace {

// Both ways that the bytes can go; the same where there is one.
std::array<CodingBlocks const *, 2> Ways() {
  return {nullptr, VectorBlocks()};
}

std::string RandomBytes(size_t size) {
  std::mt19937 random(static_cast<uint32_t>(size));
  std::string bytes(size, '\0');
  for (char &byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

// Bit by bit.
std::string PlainBase64(std::string const &bytes) {
  std::string text;
  for (size_t bit = 0; bit < 8 * bytes.size(); bit += 6) {
    size_t value = 0;
    for (size_t i = bit; i < bit + 6; i++) {
      bool const set = i < 8 * bytes.size() && (bytes[i / 8] >> (7 - i % 8) & 1) != 0;
      value = 2 * value + (set ? 1 : 0);
    }
    text += "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"[value];
  }
  while (text.size() % 4 != 0) text += '=';
  return text;
}

TEST(TextCodingTest, EveryLengthThereAndBack) {
  for (CodingBlocks const *const way : Ways()) {
    for (size_t size = 0; size < 200; size++) {
      std::string const bytes = RandomBytes(size);
      // What lies behind the end stays as it is.
      std::string base64(Base64Size(size) + 40, '#');
      EncodeBase64(bytes, base64.data(), way);
      EXPECT_EQ(base64, PlainBase64(bytes) + std::string(40, '#')) << size;
      std::string hex(HexSize(size) + 40, '#');
      EncodeHex(bytes, hex.data(), way);
      EXPECT_EQ(hex.substr(HexSize(size)), std::string(40, '#')) << size;
      hex.resize(HexSize(size));
      EXPECT_EQ(FromHex(hex), bytes) << size;
      std::string back;
      EXPECT_TRUE(DecodeBase64(PlainBase64(bytes), &back, way) && back == bytes) << size;
      EXPECT_TRUE(DecodeHex(hex, &back, way) && back == bytes) << size;
    }
  }
}

TEST(TextCodingTest, EveryByteIsADigitOrNone) {
  for (CodingBlocks const *const way : Ways()) {
    for (int i = 0; i < 256; i++) {
      char const byte = static_cast<char>(i);
      bool const isHex = i != 0 && std::string("0123456789ABCDEF").find(byte) != std::string::npos;
      bool const isBase64 = i != 0 && (byte == '+' || byte == '/' || (i < 128 && isalnum(i) != 0));
      for (size_t const place : {0U, 31U, 45U, 63U}) {
        std::string text(64, 'A');
        text[place] = byte;
        std::string back;
        EXPECT_EQ(DecodeHex(text, &back, way), isHex) << i;
        // Padding stands at the very end, and 'A' before it leaves no bits.
        bool const isPadding = place == 63 && byte == '=';
        EXPECT_EQ(DecodeBase64(text, &back, way), isBase64 || isPadding) << i;
        EXPECT_EQ(IsHexDigit(byte), isHex);
      }
    }
  }
}

TEST(TextCodingTest, OtherTextIsRefused) {
  std::string bytes;
  for (char const *const text :
       {"QQ=", "Q", "QUI", "Q===", "====", "QR==", "QUJ=", "QQ==QUJD", "QUJD\r\n\r\n", "Q=Q="}) {
    EXPECT_FALSE(DecodeBase64(text, &bytes)) << text;
  }
  EXPECT_TRUE(DecodeBase64("QUI=", &bytes) && bytes == "AB");
  for (char const *const text : {"0", "000", "0a", "G0", "0:", " 0"})
    EXPECT_FALSE(DecodeHex(text, &bytes)) << text;
}

TEST(TextCodingTest, LinesOfSixtyCharacters) {
  for (size_t const size : {0U, 42U, 44U, 45U, 46U, 135U, 1000U}) {
    std::string const bytes = RandomBytes(size);
    std::string expected = PlainBase64(bytes);
    for (size_t end = 60; end <= expected.size(); end += 62) expected.insert(end, "\r\n");
    EXPECT_EQ(Base64InLines(bytes), expected);
  }
}

TEST(TextCodingTest, QuotedPrintable) {
  std::string const x59(59, 'x');
  std::string const x57 = x59.substr(2);
  std::pair<std::string, std::string> const rows[] = {
      {"", ""},
      {"a=b\tc\x1F\x7F\x80\xE9~", "a=3Db\tc=1F\x7F=80=E9~"},
      {"a\r\nb\rc\nd\r", "a=0Ab=0Acd=0A"},
      {std::string(70, 'x'), x59 + "=\r\n" + std::string(11, 'x')},
      {x59, x59},
      // The break comes before an LF that is dropped, and before nothing else if that was the last.
      {x59 + "\n", x59 + "=\r\n"},
      {x59 + "\r\n", x59 + "=\r\n=0A"},
      {x57 + "=yz", x57 + "=3D=\r\nyz"},
      {"a ", "a =\r\n"},
      {"a \t\r\nb", "a \t=\r\n=0Ab"},
      {"a \nb", "a b"},
      // The line's length is not counted anew behind a blank.
      {" \r\n" + x59, " =\r\n=0A" + x59.substr(7) + "=\r\n" + x59.substr(52)}};
  for (auto const &[text, quoted] : rows) EXPECT_EQ(QuotedPrintable(text), quoted) << text;
}

}  // namespace
}  // namespace zolt::testing
