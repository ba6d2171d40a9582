#include "zolt41/foundation/a_string.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

namespace {

// A buffer for any A string, filled with bytes that show what was written.
struct AString {
  char bytes[257 + 8];

  explicit AString(std::string_view body = "") {
    std::fill(std::begin(bytes), std::end(bytes), '#');
    bytes[0] = static_cast<char>(body.size());
    std::memcpy(bytes + 1, body.data(), body.size());
    bytes[1 + body.size()] = '\0';
  }
  std::string Body() const { return std::string(bytes + 1, static_cast<uint8_t>(bytes[0])); }
  // Whether the NUL stands behind the body, and nothing was written behind the 257 bytes.
  bool IsWhole() const {
    return bytes[1 + Body().size()] == '\0' && std::string_view(bytes + 257, 8) == "########";
  }
};

TEST(AZString, CopyCutsAtTheLimitAndGivesTheWholeLength) {
  char field[8] = "#######";
  EXPECT_EQ(AZStrCopy("0123456789", field, 4), 10);
  EXPECT_EQ(std::string_view(field, 7), std::string_view("0123\0##", 7));
  EXPECT_EQ(AZStrCopy("0123456789", nullptr, 4), 10);
  char overlapping[] = "abcdef";
  EXPECT_EQ(AZStrCopy(overlapping, overlapping + 1, 5), 6);
  EXPECT_STREQ(overlapping, "aabcde");
  EXPECT_EQ(AZStrCopy(overlapping + 1, overlapping, static_cast<uint32_t>(-1)), 5);
  EXPECT_STREQ(overlapping, "abcde");
}

TEST(AZString, ConcatAndSetLenInPlace) {
  char text[16] = "abc";
  EXPECT_EQ(AZStrConcat(text, "de", nullptr), 6);
  EXPECT_EQ(AZStrConcat("xyz", text, text), 7);
  EXPECT_EQ(AZStrSetLen(text, 3), 4);
  EXPECT_EQ(AZStrConcat(text, text, text), 7);
  EXPECT_STREQ(text, "xyzxyz");
  EXPECT_EQ(AZStrSetLen(text, 9), 10);
  EXPECT_STREQ(text, "xyzxyz   ");
}

TEST(AZString, Numbers) {
  constexpr int32_t kMin = std::numeric_limits<int32_t>::min();
  std::pair<char const *, int32_t> const cases[] = {{" \t+7ab", 7},
                                                    {"-x", 0},
                                                    {"0x10", 0},
                                                    {"-2147483648", kMin},
                                                    {"99999999999", 1215752191},
                                                    {"-9876543210", -1286608618}};
  for (auto const &[text, number] : cases) EXPECT_EQ(AZStr2Num(text), number) << text;
  AString written;
  EXPECT_EQ(Num2AStr(kMin, written.bytes), 11);
  EXPECT_EQ(written.Body(), "-2147483648");
  EXPECT_TRUE(written.IsWhole());
}

TEST(AString, SetLenCopyAndSyncAtTheLimit) {
  AString text("abcdef");
  EXPECT_EQ(AStrSetLen(text.bytes, 300), 255);
  EXPECT_EQ(text.Body(), "abcdef" + std::string(249, ' '));
  EXPECT_TRUE(text.IsWhole());
  AString copy;
  EXPECT_EQ(AZ2AStrCopy(std::string(300, 'b').c_str(), copy.bytes), 255);
  EXPECT_EQ(copy.Body(), std::string(255, 'b'));
  EXPECT_TRUE(copy.IsWhole());
  EXPECT_EQ(AStrCopy(text.bytes, copy.bytes), 255);
  EXPECT_EQ(copy.Body(), text.Body());
  copy.bytes[4] = '\0';
  EXPECT_EQ(AStrSync(copy.bytes), 3);
}

TEST(AString, ConcatKeepsTheFirstAndCutsTheSecond) {
  std::string const first(200, 'a');
  AString a(first);
  AString b(std::string(55, 'b') + std::string(45, 'c'));
  EXPECT_EQ(AStrConcat(a.bytes, b.bytes, b.bytes), -74);
  EXPECT_EQ(b.Body(), first + std::string(55, 'b'));
  EXPECT_TRUE(b.IsWhole());
  AString twice("abc");
  EXPECT_EQ(AStrConcat(twice.bytes, twice.bytes, twice.bytes), 0);
  EXPECT_EQ(twice.Body(), "abcabc");
  EXPECT_EQ(AStrConcat(twice.bytes, nullptr, twice.bytes), -1);
}

TEST(AString, ExtractChars) {
  std::tuple<int32_t, int32_t, char const *> const cases[] = {
      {0, 3, "abc"}, {4, 2147483647, "ef"}, {6, 1, ""}, {2, -1, ""}, {-1, 2, ""}};
  for (auto const &[start, count, body] : cases) {
    AString text("abcdef");
    AStrExtractChars(text.bytes, text.bytes, start, count);
    EXPECT_EQ(text.Body(), body) << start;
    EXPECT_TRUE(text.IsWhole());
  }
  AString ended(std::string_view("ab\0def", 6));
  AStrExtractChars(ended.bytes, ended.bytes, 2, 2);
  EXPECT_EQ(ended.Body(), "");
}

}  // namespace
