#include "zolt41/rolodex/rolodex.h"

#include <sys/stat.h>
#include <unistd.h>

#include <tuple>
#include <utility>

#include "tests/rolodex/book.h"
#include "tests/support/format_page.h"
#include "tests/support/key.h"
#include "zolt41/cards/property_format.h"
#include "zolt41/rolodex/redo_block.h"

namespace zolt::testing {
namespace {

using RolodexTest = BookTest;

std::string Example(int number) {
  return FromHex(ExampleOf("rolodex.md", number));
}

std::string Front() {
  return std::string("\x6F\x6C\x6F\x52", 4) + std::string(kArea - 4, '\0');
}

TEST_F(RolodexTest, BytesOfTheFormatPage) {
  std::string const empty = Front() + Example(0);
  EXPECT_EQ(Content(), empty);
  EXPECT_EQ(empty.size(), 10272U);
  EXPECT_EQ(Rolodex::Create(path_.c_str()), -8991) << "it is open";
  EXPECT_EQ(Content(), empty);

  std::string const list = FromHex(ExampleOf("property_list.md"));
  EXPECT_EQ(book_.Add(list, {"Al", "", "al@example.org"}, {2, 33, 1}), 1U);
  std::string const open = Front() + Example(1);
  EXPECT_EQ(Content(), open);
  book_.Close();
  EXPECT_EQ(Content(), open + Example(2));
  EXPECT_EQ(Rolodex::Create(path_.c_str()), 0);
  EXPECT_EQ(Content(), empty);
}

TEST_F(RolodexTest, RedoBlockOfTheFormatPage) {
  std::string const open = Front() + Example(1);
  auto const start = static_cast<uint32_t>(open.size());
  std::string const freed = std::string(4, '\0') + std::string("\x98\0\0\0", 4);
  Piece const piece = {kArea + 4, freed};
  EXPECT_EQ(RedoBlockOf(start, {&piece, 1}), Example(3));
  Put(open + Example(3));
  EXPECT_EQ(Open(1), -1) << "a reader may not do it";
  EXPECT_EQ(Content(), open + Example(3));
  ASSERT_EQ(Open(), 0);
  EXPECT_TRUE(book_.AllIds().empty());
  // One that lies anywhere is not done, and not kept.
  std::pair<size_t, uint32_t> const lies[] = {{0, 4},      {0, start - 4}, {4, 9},  {4, 0xFFFFFFF8},
                                              {16, 10252}, {20, 17},       {24, 0}, {32, 0}};
  for (auto const &[at, number] : lies) {
    Put(open + With(Example(3), at, number));
    ASSERT_EQ(Open(), 0);
    EXPECT_EQ(book_.AllIds(), Ids{1}) << at << " " << number;
    book_.Close();
    EXPECT_EQ(Content(), open + Example(2));
  }
}

TEST_F(RolodexTest, OpeningWhatIsNoDatabase) {
  std::string newer = Content();
  newer[4] = 1;
  std::pair<std::string, int32_t> const cases[] = {
      {"", -8995}, {Front().substr(0, 7), -8995}, {Front().substr(0, 8), -8995},
      {newer, -1}, {std::string(20000, 'x'), -1}, {Front().substr(0, kArea - 1), -8995}};
  for (auto const &[content, code] : cases) {
    Put(content);
    for (int32_t const readOnly : {1, 0}) EXPECT_EQ(Open(readOnly), code);
    EXPECT_EQ(Content(), content);
  }
  EXPECT_EQ(book_.Open((path_ + "none").c_str(), 0), -8991);
  EXPECT_EQ(book_.LoadCard(1, nullptr), 0);
  EXPECT_EQ(book_.Add("none"), 0U);
  EXPECT_EQ(book_.CardIndex(1), -1);
}

TEST_F(RolodexTest, NothingGivenAndMoreThanFits) {
  PCardStorage card;
  EXPECT_EQ(book_.CreateCard(&card, nullptr, nullptr, nullptr, nullptr), 1U);
  EXPECT_EQ(book_.Card(1), (CardContent{BodyOf(4, 'x'), {}}));
  EXPECT_EQ(book_.GetCardName(1, nullptr, nullptr, nullptr), 1);
  card.SetModified(1);
  EXPECT_EQ(book_.SaveCard(1, &card), 1);
  EXPECT_EQ(card.Modified(), 0);
  EXPECT_NE(book_.GetCategoryInfo(127), nullptr);
  EXPECT_EQ(book_.GetCategoryInfo(128), nullptr);
  CategoryInfo const info = {"friends", 7, ""};
  std::string const content = Content();
  book_.SetCategoryInfo(128, &info);
  EXPECT_EQ(Content(), content);
  // A record that the object gave is written with the next one.
  book_.GetCategoryInfo(5)->number = 55;
  book_.SetCategoryInfo(3, &info);
  Reopen(1);
  EXPECT_EQ(book_.GetCategoryInfo(5)->number, 55U);
  EXPECT_EQ(book_.GetCategoryInfo(3)->number, 7U);
}

TEST_F(RolodexTest, WhatChangesNothingKeepsTheIndex) {
  book_.Add(BodyOf(4, 'x'), {}, {1, 5});
  Reopen();
  std::string const clean = Content();
  unsigned char const five[] = {1, 5};
  EXPECT_EQ(book_.ApplyCategory(five, nullptr, nullptr), 0);
  EXPECT_EQ(book_.Compact(1), 0);
  EXPECT_EQ(book_.Save(9, "none"), 0);
  EXPECT_EQ(book_.DeleteCard(9), 0);
  book_.SetCardName(9, "none", nullptr, nullptr);
  book_.SetCardCategories(9, five);
  EXPECT_EQ(Content(), clean);
}

TEST_F(RolodexTest, SelectingByCategory) {
  EXPECT_EQ(book_.By(nullptr, nullptr, nullptr), Ids{});
  for (Categories const &set : {Categories{2, 1, 2}, {2, 1, 3}, {255}, {0}})
    book_.Add(BodyOf(4, 'x'), {}, set);
  unsigned char const one[] = {1, 1}, both[] = {2, 1, 2}, three[] = {1, 3}, all[] = {255};
  EXPECT_EQ(book_.By(nullptr, nullptr, nullptr), (Ids{1, 2, 3, 4}));
  EXPECT_EQ(book_.By(both, nullptr, nullptr), (Ids{1, 3}));
  EXPECT_EQ(book_.By(all, nullptr, nullptr), (Ids{3}));
  EXPECT_EQ(book_.By(nullptr, nullptr, three), (Ids{1, 4}));
  EXPECT_EQ(book_.By(nullptr, three, three), (Ids{1, 2, 3, 4}));
  EXPECT_EQ(book_.By(nullptr, both, all), (Ids{1, 2, 3, 4}));
  EXPECT_EQ(book_.By(nullptr, three, nullptr), (Ids{1, 2, 3, 4}));
  EXPECT_EQ(book_.By(one, nullptr, all), Ids{});
}

TEST_F(RolodexTest, SelectingByProperty) {
  PCardStorage card;
  card.AddProp("ORG", PropertyAscii, 0, "Acme", 5);
  card.AddProp("PHOTO", PropertyBitmap, 0, "Acme", 5);
  for (char const *label : {"ABC", "xabx", "\xC4", ""})
    book_.CreateCard(&card, label, nullptr, nullptr, nullptr);
  book_.DeleteCard(2);
  Reopen(1);  // marks need no right to write
  Ids const all = book_.By(nullptr, nullptr, nullptr);
  unsigned char const marked[] = {1, 77};
  std::tuple<char const *, int, char const *, Ids> const cases[] = {
      {"_label", CSBeginsWith, "ab", {1}},
      {"_Label", CSEndsWith, "bc", {1}},
      {"_Label", CSEquals, "ab", {}},
      {"_Label", CSEquals, "abc", {1}},
      {"_Label", CSContains, "b", {1}},
      {"_Label", CSContains, "", {1, 3, 4}},
      {"_Label", CSContains, "abcd", {}},
      {"_Label", CSEquals, "\xE4", {}},
      {"_Label", 4, "abc", {}},
      {"ORG", CSContains, "CM", {1, 3, 4}},
      {"PHOTO", CSContains, "Acme", {}}};
  for (auto const &[property, oper, value, ids] : cases) {
    EXPECT_EQ(book_.Mark(all, property, oper, value, 77), ids.size()) << value;
    EXPECT_EQ(book_.By(marked, nullptr, nullptr), ids) << property << value;
  }
  EXPECT_EQ(book_.Mark(all, "_Label", CSContains, "", 128), 0U);
  EXPECT_EQ(book_.Mark({1, 0, 3, 4}, "_Label", CSContains, "", 77), 3U)
      << "0 is no card, nor the deleted one";
}

TEST_F(RolodexTest, CompactingWhenItPays) {
  std::tuple<uint32_t, uint32_t, Ids, int32_t, int32_t> const cases[] = {
      {0, 4, {}, 0, 1},     {20, 4, {}, 1, 0},      {21, 4, {5}, 2, 0},    {21, 4, {5}, 3, 1},
      {4, 4, {1, 3}, 0, 1}, {11, 49876, {3}, 0, 0}, {6, 49875, {3}, 0, 0}, {6, 49876, {3}, 0, 1}};
  for (auto const &[cards, bodySize, deleted, force, result] : cases) {
    Begin();
    for (uint32_t i = 0; i < cards; i++) book_.Add(BodyOf(bodySize, 'x'));
    for (uint32_t const id : deleted) book_.DeleteCard(id);
    EXPECT_EQ(book_.Compact(force), result) << cards << " " << bodySize;
  }
}

TEST_F(RolodexTest, ReadersChangeNothing) {
  book_.Add(BodyOf(50, 'a'), {"Al"});
  book_.Add(BodyOf(50, 'b'), {"Bo"});
  Reopen(1);
  Book other;
  EXPECT_EQ(other.Open(path_.c_str(), 1), 0);
  EXPECT_EQ(other.Body(1), BodyOf(50, 'a'));
  Book writer;
  EXPECT_EQ(writer.Open(path_.c_str(), 0), -8991);
  EXPECT_EQ(LastFailure(), 2);
  EXPECT_EQ(book_.IsReadOnly(), 1);
  std::string const clean = Content();
  Cards const all = book_.All();
  EXPECT_EQ(book_.Add(BodyOf(4, 'x')), 0U);
  EXPECT_EQ(LastFailure(), 1);
  EXPECT_EQ(book_.Save(1, BodyOf(4, 'x')), 0);
  EXPECT_EQ(book_.DeleteCard(1), 0);
  EXPECT_EQ(book_.Compact(1), 0);
  unsigned char const one[] = {1, 1};
  EXPECT_EQ(book_.ApplyCategory(one, nullptr, nullptr), 0);
  book_.SetCardName(1, "x", nullptr, nullptr);
  CategoryInfo const info = {"friends", 7, ""};
  book_.SetCategoryInfo(2, &info);
  EXPECT_EQ(book_.GetCategoryInfo(2)->number, 0U);
  EXPECT_EQ(book_.All(), all);
  book_.Close();
  EXPECT_EQ(Content(), clean);
}

TEST_F(RolodexTest, BigEndianFiles) {
  CategoryInfo const info = {"text", 0x01020304, "more"};
  book_.SetCategoryInfo(127, &info);
  for (char c = 'a'; c < 'f'; c++) book_.Add(BodyOf(70000, c), {std::string(1, c)}, {2, 1, 100});
  book_.DeleteCard(2);
  book_.Close();
  std::string const little = Content();
  std::string const big = BigEndian(little);
  ASSERT_EQ(chmod(path_.c_str(), 0640), 0);
  Put(big);
  EXPECT_EQ(Open(1), -1);
  EXPECT_EQ(Content(), big);
  ASSERT_EQ(Open(), 0);
  EXPECT_EQ(book_.GetCategoryInfo(127)->number, 0x01020304U);
  EXPECT_EQ(book_.AllIds(), (Ids{1, 3, 4, 5}));
  Book other;
  EXPECT_EQ(other.Open(path_.c_str(), 1), -8991) << "the new file is locked, too";
  EXPECT_EQ(Content(), little);
  EXPECT_EQ(std::filesystem::status(path_).permissions(), std::filesystem::perms(0640));
  // A file with two names keeps them.
  Put(big);
  std::string const second = path_ + "2";
  ASSERT_EQ(link(path_.c_str(), second.c_str()), 0);
  ASSERT_EQ(Open(), 0);
  EXPECT_EQ(book_.GetCategoryInfo(127)->number, 0x01020304U);
  EXPECT_EQ(book_.AllIds(), (Ids{1, 3, 4, 5}));
  book_.Close();
  EXPECT_EQ(ContentOf(second), little);
  std::string newer = big;
  newer[7] = 1;
  Put(newer);
  EXPECT_EQ(Open(), -1);
  EXPECT_EQ(Content(), newer);
}

}  // namespace
}  // namespace zolt::testing
