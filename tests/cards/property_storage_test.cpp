#include "zolt41/cards/property_storage.h"

#include <tuple>
#include <vector>

#include "tests/support/format_page.h"
#include "tests/support/mem_bytes.h"
#include "zolt41/cards/property_format.h"

namespace zolt::testing {
namespace {

constexpr uint32_t kNone = 0xFFFFFFFF;

uint32_t Add(PCardStorage *list, char const *name, uint32_t type, uint32_t flags,
             std::string const &value) {
  return list->AddProp(name, type, flags, value.data(), static_cast<int32_t>(value.size()));
}

void Set(PCardStorage *list, std::string const &bytes) {
  list->Set(bytes.data(), static_cast<int32_t>(bytes.size()));
}

// "name:type:flags:value " of each property.
std::string Listed(PCardStorage *list) {
  std::string text;
  for (uint32_t i = 0; i < list->PropCount(); i++) {
    uint32_t length = 0;
    uint32_t type = 0;
    uint32_t flags = 0;
    char *name = nullptr;
    char const *const value = list->GetPropA(i, &length, &type, &flags, &name);
    text += std::string(name) + ":" + std::to_string(type) + ":" + std::to_string(flags) + ":" +
            std::string(value, length) + " ";
  }
  return text;
}

std::string Read(PCardStorage *list, char const *name, int32_t size = 30) {
  char buffer[32] = "untouched";
  list->GetStrProp(name, 0, 0, "default", buffer, size);
  return buffer;
}

TEST(PropertyStorageTest, BytesOfAList) {
  PCardStorage list;
  EXPECT_EQ(Taken(list.Get()), FromHex("00000000"));
  EXPECT_EQ(list.Modified(), 0);
  EXPECT_EQ(Add(&list, "FN", PropertyUnicode, 0, FromHex("41006C000000")), 0U);
  EXPECT_EQ(Taken(list.Get()),
            FromHex("01000000 00000080 00000000 06000000 464E0000 41006C000000 0000"));
  EXPECT_EQ(Taken(list.Get()), FromHex(ExampleOf("property_list.md")));
  EXPECT_EQ(Add(&list, "TEL", 0, 0x10, ""), 1U);    // a name area of 4
  EXPECT_EQ(Add(&list, "NAME", 8, 0, "\xFF"), 2U);  // and of 8
  EXPECT_EQ(Taken(list.Get()).substr(28),
            FromHex("00000000 10000000 00000000 54454C00"
                    "08000000 00000000 01000000 4E414D4500000000 FF000000"));
  EXPECT_EQ(list.Modified(), 1);
}

TEST(PropertyStorageTest, RecordsGrowShrinkAndGoInPlace) {
  PCardStorage list;
  for (char const *name : {"A", "B", "C"}) Add(&list, name, 0, 1, name);
  std::string const before = Taken(list.Get());
  EXPECT_EQ(list.SetPropA(1, "LONGER", 8, 2, "0123456789", 10), 1);
  EXPECT_EQ(Listed(&list), "A:0:1:A LONGER:8:2:0123456789 C:0:1:C ");
  EXPECT_EQ(list.SetPropA(2, "C", 0, 1, "", 0), 1);
  EXPECT_EQ(list.SetPropA(1, "B", 0, 1, "B", 1), 1);
  EXPECT_EQ(list.SetPropA(2, "C", 0, 1, "C", 1), 1);
  EXPECT_EQ(Taken(list.Get()), before);
  EXPECT_EQ(list.DeleteProp(0), 1);
  EXPECT_EQ(Add(&list, "D", 0, 1, "D"), 2U);
  EXPECT_EQ(Listed(&list), "B:0:1:B C:0:1:C D:0:1:D ");
  EXPECT_EQ(list.DeleteProp(3), 0);
  EXPECT_EQ(list.SetPropA(3, "x", 0, 0, "", 0), 0);
  uint32_t untouched = 5;
  EXPECT_EQ(list.GetPropA(3, &untouched, nullptr, nullptr, nullptr), nullptr);
  EXPECT_EQ(untouched, 5U);
}

TEST(PropertyStorageTest, ArgumentsMayLieInTheListItself) {
  PCardStorage list;
  Add(&list, "NAME", 0, 0, "a value that is moved when the list grows");
  char *name = nullptr;
  for (int i = 0; i < 100; i++) {
    uint32_t length = 0;
    char const *const value = list.GetPropA(0, &length, nullptr, nullptr, &name);
    list.AddProp(name, 0, 0, value, static_cast<int32_t>(length));
  }
  EXPECT_STREQ(list.GetPropA(100, nullptr, nullptr, nullptr, &name),
               "a value that is moved when the list grows");
  EXPECT_STREQ(name, "NAME");
}

TEST(PropertyStorageTest, WhatCannotBeStoredChangesNothing) {
  PCardStorage list;
  std::string const longest(65531, 'n');
  EXPECT_EQ(list.AddProp((longest + "n").c_str(), 0, 0, "", 0), kNone);
  for (int32_t const size : {-1, 0x7FFFFFFF}) EXPECT_EQ(list.AddProp("A", 0, 0, "", size), kNone);
  EXPECT_EQ(list.AddProp("A", 0, 0, nullptr, 1), kNone);
  EXPECT_EQ(list.Modified(), 0);
  EXPECT_EQ(list.AddProp(longest.c_str(), 0, 0, nullptr, 0), 0U);
  EXPECT_EQ(list.AddProp(nullptr, 0, 0, "v", 1), 1U);
  std::string const bytes = Taken(list.Get());
  PCardStorage copy;
  Set(&copy, bytes);
  EXPECT_EQ(Listed(&copy), longest + ":0:0: :0:0:v ");
  EXPECT_EQ(copy.FindProp(nullptr, 0, 0, 0, nullptr), 1U) << "a null name is the empty one";
}

TEST(PropertyStorageTest, DamagedListsAreEmptiedWhole) {
  PCardStorage whole;
  Add(&whole, "FN", 0, 0, "abc");
  Add(&whole, "TEL", 0, 0, "0123");
  std::string const good = Taken(whole.Get());
  ASSERT_EQ(good.size(), 44U);
  auto const with = [&good](size_t at, std::string const &bytes) {
    std::string changed = good;
    return changed.replace(at, bytes.size(), bytes);
  };
  std::vector<std::string> damaged = {with(36, "TTTTTTTT")};
  for (char const *count : {"03000000", "FFFFFFFF", "00000080", "FFFFFF7F"})
    damaged.push_back(with(0, FromHex(count)));
  for (char const *size : {"FFFFFFFF", "F0FFFFFF", "05000000"})
    damaged.push_back(with(12, FromHex(size)));
  for (char const *size : {"FFFFFF7F", "05000000"}) damaged.push_back(with(32, FromHex(size)));
  for (size_t size = 0; size < good.size(); size++) damaged.push_back(good.substr(0, size));
  for (std::string const &bytes : damaged) {
    PCardStorage list;
    Add(&list, "old", 0, 0, "");
    Set(&list, bytes);
    EXPECT_EQ(Taken(list.Get()), FromHex("00000000")) << ::testing::PrintToString(bytes);
    EXPECT_EQ(list.Modified(), 0);
  }
  for (size_t bit = 0; bit < 8 * good.size(); bit++) {
    std::string flipped = good;
    flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << bit % 8));
    PCardStorage list;
    Set(&list, flipped);
    Listed(&list);
    list.SetStrProp("FN", 0, 0, "x");
    EXPECT_EQ(Read(&list, "FN"), "x");
  }
}

TEST(PropertyStorageTest, BytesBehindTheLastRecordStayUntilTheFirstChange) {
  std::string const bytes =
      FromHex("01000000 00000000 00000000 00000000 41000000") + "more bytes..";
  PCardStorage list;
  Set(&list, bytes);
  EXPECT_EQ(Taken(list.Get()), bytes);
  Add(&list, "B", 0, 0, "");
  EXPECT_EQ(Listed(&list), "A:0:0: B:0:0: ");
  EXPECT_EQ(Taken(list.Get()).size(), 36U);
  Set(&list, bytes);
  list.SetPropA(0, "A", 0, 0, "", 0);
  EXPECT_EQ(Taken(list.Get()), bytes.substr(0, 20));
}

TEST(PropertyStorageTest, TheBestOfFlagsIsFound) {
  constexpr uint32_t kHome = PropertyHome;
  constexpr uint32_t kWork = PropertyWork;
  PCardStorage list;
  Add(&list, "TEL", 0, kHome, "1");
  Add(&list, "tel", 0, kWork, "2");
  Add(&list, "TEL", 3, kHome | kWork, "3");
  Add(&list, "TEL", 0, kHome | kWork, "4");
  std::tuple<uint32_t, uint32_t, uint32_t, uint32_t> const cases[] = {
      {0, 0, 0, 0},     {0, kHome | kWork, 0, 2},
      {kWork, 0, 0, 1}, {kWork, kHome, 0, 2},
      {0, kWork, 0, 1}, {0, 0, 3, 3},
      {0, 0, 4, kNone}, {PropertyFax, kHome, 0, kNone}};
  for (auto const &[required, preferred, start, found] : cases)
    EXPECT_EQ(list.FindProp("TEL", required, preferred, start, nullptr), found);
  uint32_t type = 9;
  list.FindProp("TEL", kHome | kWork, 0, 0, &type);
  EXPECT_EQ(type, 3U);
  EXPECT_EQ(list.FindProp("T\xC5L", 0, 0, 0, nullptr), 0U) << "the top bit does not count";
  EXPECT_EQ(list.FindProp(nullptr, 0, 0, 0, nullptr), kNone);
}

TEST(PropertyStorageTest, StringsAreReadAsFarAsTheyFit) {
  PCardStorage list;
  Add(&list, "U", PropertyUnicode, 0, FromHex("6100E9001604 0000"));
  Add(&list, "A", PropertyAscii, 0, std::string("abcdef\0", 7));
  Add(&list, "URL", PropertyUrl, 0, "no end");
  Add(&list, "ODD", PropertyUnicode | 3, 0, FromHex("610062"));
  Add(&list, "BIN", PropertyBitmap, 0, "abc");
  EXPECT_EQ(Read(&list, "U"), "a\xE9?");
  EXPECT_EQ(Read(&list, "U", 5), "a\xE9?");
  EXPECT_EQ(Read(&list, "U", 4), "defa") << "four with the end do not fit into four";
  EXPECT_EQ(Read(&list, "A", 4), "abcd");
  EXPECT_EQ(Read(&list, "URL"), "no end");
  EXPECT_EQ(Read(&list, "ODD"), "a");
  EXPECT_EQ(Read(&list, "BIN"), "default");
  EXPECT_EQ(Read(&list, "none", 0), "");
}

TEST(PropertyStorageTest, SettingAStringReplacesAllOfItsNameAndFlags) {
  PCardStorage list;
  Add(&list, "TEL", 2, PropertyHome, "x");
  Add(&list, "TEL", 0, PropertyWork, "kept");
  Add(&list, "tel", 0, PropertyHome | PropertyFax, "y");
  list.SetStrProp("TEL", PropertyHome, PropertyVoice, "\x80");
  EXPECT_EQ(Listed(&list), std::string("TEL:0:32:kept TEL:2147483648:144:\xAC\x20\0\0 ", 38));
  list.SetStrProp("TEL", 0, 0, "");
  EXPECT_EQ(list.PropCount(), 0U);
  Add(&list, "N", 0, 0, "");
  char *name = nullptr;
  list.GetPropA(0, nullptr, nullptr, nullptr, &name);
  list.SetStrProp(name, 0, 0, "v");
  EXPECT_EQ(Read(&list, "N"), "v");
  EXPECT_EQ(list.PropCount(), 1U);
}

TEST(PropertyStorageTest, Comparisons) {
  PCardStorage list;
  Add(&list, "N", PropertyBitmap, 0, "Anna");
  Add(&list, "N", PropertyAscii, 0, std::string("Anna Bell\0", 10));
  Add(&list, "N", PropertyUnicode, 0, FromHex("4300E9008000 0000"));  // C, e acute, U+0080
  Add(&list, "E", PropertyUrl, 0, "");
  std::tuple<char const *, int32_t, char const *, int32_t> const cases[] = {
      {"N", 0, "a b", 1},    {"N", 0, "x", 0},      {"N", 1, "ANNA BELL", 1},
      {"N", 1, "anna", 0},   {"N", 2, "aNNA", 1},   {"N", 2, "bell", 0},
      {"N", 3, "BELL", 1},   {"N", 3, "anna", 0},   {"N", 4, "anna", 0},
      {"N", -1, "anna", 0},  {"N", 0, "", 1},       {"N", 2, "", 1},
      {"N", 3, "", 1},       {"N", 1, "", 0},       {"E", 1, "", 1},
      {"N", 1, "c?\x80", 1}, {"N", 1, "c?\xA0", 0}, {"N", 0, "a longer text than any", 0},
      {"X", 0, "", 0},       {"N", 0, nullptr, 1}};
  for (auto const &[name, oper, value, matches] : cases)
    EXPECT_EQ(list.Selected(name, static_cast<CSOper>(oper), value), matches)
        << name << oper << (value == nullptr ? "null" : value);
}

TEST(PropertyStorageTest, TheHeaderLeavesOutLocalProperties) {
  PCardStorage list;
  for (char const *name : {"L-ONE", "A", "l-two", "L-", "L"}) Add(&list, name, 0, 0, name);
  PCardStorage header;
  Set(&header, Taken(list.GetHeader()));
  EXPECT_EQ(Listed(&header), "A:0:0:A l-two:0:0:l-two L:0:0:L ");
}

}  // namespace
}  // namespace zolt::testing
