#include "zolt41/prefs/number_text.h"

#include <gtest/gtest.h>

namespace zolt {
namespace {

TEST(NumberText, ScansAsTheBaseAndTheWidthSay) {
  constexpr int32_t kNone = -77;
  struct {
    char const *text;
    int32_t number;
  } const rows[] = {{" \t\n+7 rest", 7},
                    {"-0x10", -16},
                    {"0XfFg", 255},
                    {"010", 8},
                    {"08", 0},
                    {"0b1", 0},
                    {"", kNone},
                    {"+-5", kNone},
                    {"2147483648", -2147483647 - 1},
                    {"0xFFFFFFFF", -1},
                    {"99999999999999999999", -1},
                    {"-99999999999999999999", 0}};
  for (auto const &row : rows) {
    int32_t number = kNone;
    EXPECT_EQ(ScanNumber(row.text, &number), row.number != kNone) << row.text;
    EXPECT_EQ(number, row.number) << row.text;
  }
}

}  // namespace
}  // namespace zolt
