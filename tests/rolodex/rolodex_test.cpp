#include "zolt41/rolodex/rolodex.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>

#include "tests/rolodex/book.h"
#include "tests/support/format_page.h"
#include "tests/support/key.h"
#include "tests/support/temp_home.h"
#include "zolt41/cards/property_format.h"
#include "zolt41/rolodex/redo_block.h"

namespace zolt::testing {
namespace {

constexpr uint32_t kArea = 10248;
constexpr char kEnd[] = "\xFF\xFF\xFF\xFF";

std::string Example(int number) {
  return FromHex(ExampleOf("rolodex.md", number));
}

std::string Front() {
  return std::string("\x6F\x6C\x6F\x52", 4) + std::string(kArea - 4, '\0');
}

class RolodexTest : public ::testing::Test {
 protected:
  void SetUp() override {
    path_ = home_.path() + "/book";
    ASSERT_EQ(Rolodex::Create(path_.c_str()), 0);
  }
  int32_t Open(int32_t readOnly = 0) { return book_.Open(path_.c_str(), readOnly); }
  void Reopen(int32_t readOnly = 0) {
    book_.Close();
    ASSERT_EQ(Open(readOnly), 0);
  }
  std::string Content() const { return ContentOf(path_); }
  void Put(std::string const &content) const { WriteContent(path_, content); }
  uint32_t PositionOf(uint32_t id) {
    auto const head = Content().find(std::string(reinterpret_cast<char *>(&id), 4), kArea);
    return static_cast<uint32_t>(head) - 4;
  }
  // Records from the front up to the end mark: ids and sizes.
  std::vector<std::pair<uint32_t, uint32_t>> Records() const {
    std::vector<std::pair<uint32_t, uint32_t>> records;
    std::string const bytes = Content();
    for (uint32_t p = kArea; NumberAt(bytes, p) == p; p += records.back().second)
      records.emplace_back(NumberAt(bytes, p + 4), NumberAt(bytes, p + 8));
    return records;
  }

  TempHome home_;
  std::string path_;
  Book book_;
};

using Layout = std::vector<std::pair<uint32_t, uint32_t>>;

TEST_F(RolodexTest, BytesOfTheFormatPage) {
  std::string const empty = Front() + Example(0);
  EXPECT_EQ(Content(), empty);
  EXPECT_EQ(empty.size(), 10272U);
  ASSERT_EQ(Open(), 0);
  EXPECT_EQ(Rolodex::Create(path_.c_str()), -8991) << "it is open";
  book_.Close();
  EXPECT_EQ(Content(), empty);

  ASSERT_EQ(Open(), 0);
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
  EXPECT_TRUE(book_.Ids().empty());
  book_.Close();
  EXPECT_EQ(Records(), (Layout{{0, 152}}));
  // One that lies anywhere is not done, and not kept.
  struct Lie {
    size_t at;
    uint32_t number;
  };
  for (Lie const lie : {Lie{0, 4},
                        {0, start - 4},
                        {4, 9},
                        {4, 0xFFFFFFF8},
                        {16, 10252},
                        {20, 17},
                        {24, 0},
                        {32, 0}}) {
    std::string block = Example(3);
    PutNumber(&block, lie.at, lie.number);
    Put(open + block);
    ASSERT_EQ(Open(), 0);
    EXPECT_EQ(book_.Ids(), std::vector<uint32_t>{1}) << lie.at << " " << lie.number;
    book_.Close();
    EXPECT_EQ(Content(), open + Example(2));
  }
}

TEST_F(RolodexTest, OpeningWhatIsNotClean) {
  ASSERT_EQ(Open(), 0);
  EXPECT_EQ(Open(), -1) << "it is open";
  book_.Add(BodyOf(20, 'a'), {"Al"});
  book_.Add(BodyOf(30, 'b'), {"Bo"});
  EXPECT_EQ(Content().substr(Content().size() - 4), kEnd);
  book_.Close();
  std::string const clean = Content();
  size_t const end = kArea + 144 + 154;
  std::string noTrailer = clean;
  noTrailer.replace(clean.size() - 12, 12, "twelve bytes");
  for (std::string const &dirty :
       {noTrailer, clean.substr(0, end + 4), clean.substr(0, end), clean.substr(0, end + 2),
        clean.substr(0, end + 100), clean.substr(0, end + 4) + std::string(100, 'x')}) {
    Put(dirty);
    EXPECT_EQ(Open(1), -1);
    EXPECT_EQ(Content(), dirty);
    ASSERT_EQ(Open(), 0);
    EXPECT_EQ(Content(), clean);
    book_.Close();
    EXPECT_EQ(Content(), clean);
  }
  EXPECT_NE(access((path_ + ".lost-1").c_str(), F_OK), 0);
}

TEST_F(RolodexTest, OpeningWhatIsNoDatabase) {
  std::string const front = Front();
  std::string newer = Content();
  newer[4] = 1;
  struct Row {
    std::string content;
    int32_t code;
  };
  for (Row const &row : {Row{"", -8995},
                         {front.substr(0, 7), -8995},
                         {front.substr(0, 8), -8995},
                         {front.substr(0, kArea - 1), -8995},
                         {newer, -1},
                         {std::string(20000, 'x'), -1}}) {
    Put(row.content);
    for (int32_t const readOnly : {1, 0}) EXPECT_EQ(Open(readOnly), row.code);
    EXPECT_EQ(Content(), row.content);
  }
  EXPECT_EQ(book_.Open((path_ + "none").c_str(), 0), -8991);
  EXPECT_EQ(book_.LoadCard(1, nullptr), 0);
  EXPECT_EQ(book_.Add("none"), 0U);
  EXPECT_EQ(book_.CardIndex(1), -1);
}

TEST_F(RolodexTest, Placing) {
  struct Row {
    std::vector<uint32_t> sizes;    // of the bodies of cards 1, 2, ...
    std::vector<uint32_t> deleted;  // ids
    uint32_t added;                 // the body of one more
    Layout records;
  };
  for (Row const &row : {
           Row{{100, 50}, {1}, 100, {{3, 224}, {2, 174}}},
           // A rest of 124 bytes is none, one of 125 is.
           Row{{148, 50}, {1}, 24, {{0, 272}, {2, 174}, {3, 148}}},
           Row{{149, 50}, {1}, 24, {{3, 148}, {0, 125}, {2, 174}}},
           // The tightest, the first of equals, and an exact one behind.
           Row{{524, 4, 224, 4}, {1, 3}, 24, {{0, 648}, {2, 128}, {5, 148}, {0, 200}, {4, 128}}},
           Row{{224, 4, 224, 4}, {1, 3}, 24, {{5, 148}, {0, 200}, {2, 128}, {0, 348}, {4, 128}}},
           Row{{224, 4, 24, 4}, {1, 3}, 24, {{0, 348}, {2, 128}, {5, 148}, {4, 128}}},
           // Neighbours merge in every order.
           Row{{10, 20, 30, 4}, {1, 2, 3}, 4000, {{0, 432}, {4, 128}, {5, 4124}}},
           Row{{10, 20, 30, 4}, {1, 3, 2}, 4000, {{0, 432}, {4, 128}, {5, 4124}}},
           Row{{10, 20, 30, 4}, {3, 2, 1}, 4000, {{0, 432}, {4, 128}, {5, 4124}}},
           Row{{10, 20}, {2}, 30, {{1, 134}, {0, 144}, {3, 154}}},
       }) {
    ASSERT_EQ(Rolodex::Create(path_.c_str()), 0);
    ASSERT_EQ(Open(), 0);
    for (uint32_t const size : row.sizes) book_.Add(BodyOf(size, 'x'));
    for (uint32_t const id : row.deleted) EXPECT_EQ(book_.DeleteCard(id), 1);
    EXPECT_EQ(book_.Add(BodyOf(row.added, 'y')), row.sizes.size() + 1);
    EXPECT_EQ(Records(), row.records);
    EXPECT_EQ(book_.DeleteCard(row.deleted[0]), 0);
    EXPECT_EQ(book_.CardIndex(row.deleted[0]), -1);
    book_.Close();
  }
}

TEST_F(RolodexTest, SavingMovesAndKeeps) {
  ASSERT_EQ(Open(), 0);
  book_.Add(BodyOf(100, 'a'), {"Al", "Acme", "a@b"}, {1, 7});
  book_.Add(BodyOf(4, 'b'));
  PCardStorage card;
  Book::SetBody(&card, BodyOf(300, 'c'));
  card.SetModified(1);
  EXPECT_EQ(book_.SaveCard(1, &card), 1);
  EXPECT_EQ(card.Modified(), 0);
  EXPECT_EQ(Records(), (Layout{{0, 224}, {2, 128}, {1, 424}}));
  EXPECT_EQ(book_.CardIndex(1), 2);
  EXPECT_EQ(book_.All()[1], (CardContent{BodyOf(300, 'c'), {"Al", "Acme", "a@b"}, {1, 7}}));
  EXPECT_EQ(book_.Save(9, "none"), 0);
  // Within its own place and the free ones beside it.
  EXPECT_EQ(book_.DeleteCard(2), 1);
  EXPECT_EQ(book_.Save(1, BodyOf(652, 'd')), 1);
  EXPECT_EQ(Records(), (Layout{{1, 776}}));
  EXPECT_EQ(book_.Body(1), BodyOf(652, 'd'));
}

TEST_F(RolodexTest, NamesAndCategories) {
  ASSERT_EQ(Open(), 0);
  std::string const longName(40, 'n');
  uint32_t const id = book_.Add(BodyOf(4, 'x'), {longName, "", "third"}, {3, 5, 200, 64});
  EXPECT_EQ(book_.NamesOf(id), (Names{std::string(31, 'n'), "", "third"}));
  EXPECT_EQ(book_.CategoriesOf(id), (Categories{2, 5, 64}));
  book_.SetCardName(id, nullptr, "second", nullptr);
  EXPECT_EQ(book_.NamesOf(id)[1], "second");
  Categories all = {0};
  for (int category = 127; category >= 0; category--) {
    all.push_back(static_cast<unsigned char>(category));
    all[0]++;
    book_.SetCardCategories(id, all.data());
  }
  EXPECT_EQ(book_.CategoriesOf(id), Categories{255});
  EXPECT_EQ(book_.CategoriesOf(9), Categories{0});
  EXPECT_EQ(book_.GetCardName(9, nullptr, nullptr, nullptr), 0);
  PCardStorage card;
  EXPECT_EQ(book_.CreateCard(&card, nullptr, nullptr, nullptr, nullptr), id + 1);
  EXPECT_EQ(book_.NamesOf(id + 1), Names{});
  EXPECT_EQ(book_.CategoriesOf(id + 1), Categories{0});
}

TEST_F(RolodexTest, FindingByName) {
  ASSERT_EQ(Open(), 0);
  book_.Add(BodyOf(4, 'x'), {"SMITH", "Acme"});
  book_.Add(BodyOf(4, 'x'), {"gone", "Acme"});
  book_.Add(BodyOf(4, 'x'), {"sm\xE9th", "Acme"});
  book_.Add(BodyOf(4, 'x'), {"Smith\x80y", "acme"});
  book_.DeleteCard(2);
  // Often enough that it is found in both ways.
  for (int round = 0; round < 5; round++) {
    uint32_t cursor = 0;
    EXPECT_EQ(book_.FindCard("smith", nullptr, nullptr, &cursor), 1U);
    EXPECT_EQ(cursor, 1U);
    EXPECT_EQ(book_.FindCard("smith", nullptr, nullptr, &cursor), 3U) << "0xE9 counts as i";
    EXPECT_EQ(book_.FindCard("smith", nullptr, nullptr, &cursor), 4U) << "0x80 ends a name";
    EXPECT_EQ(cursor, 4U);
    EXPECT_EQ(book_.FindCard("smith", nullptr, nullptr, &cursor), 0U);
    EXPECT_EQ(cursor, 4U);
    EXPECT_EQ(book_.FindCard("smi", nullptr, nullptr, nullptr), 0U);
    EXPECT_EQ(book_.FindCard("gone", nullptr, nullptr, nullptr), 0U);
    EXPECT_EQ(book_.FindCard("smith", "other", nullptr, nullptr), 0U);
    cursor = 1;
    EXPECT_EQ(book_.FindCard(nullptr, "ACME", nullptr, &cursor), 3U);
    cursor = 99;
    EXPECT_EQ(book_.FindCard(nullptr, nullptr, nullptr, &cursor), 0U);
  }
}

// A memory block of ids, and the queries that take one.
class Selection {
 public:
  explicit Selection(Book *book) : book_(book), block_(NewMem(0)) {}
  ~Selection() { _DisposeMem(block_); }
  Selection(Selection const &) = delete;
  Selection &operator=(Selection const &) = delete;

  std::vector<uint32_t> By(unsigned char const *required, unsigned char const *keep,
                           unsigned char const *exclude) {
    uint32_t const count = book_->SelectByCategory(required, keep, exclude, &block_);
    EXPECT_EQ(GetMemSize(block_), 4 * count);
    std::vector<uint32_t> ids;
    for (uint32_t i = 0; i < count; i++) ids.push_back(NumberAt({block_, 4 * count}, 4 * i));
    return ids;
  }
  uint32_t Mark(char const *property, int oper, char const *value, uint32_t category) {
    return book_->Select(block_, property, static_cast<CSOper>(oper), value, category);
  }

 private:
  Book *book_;
  char *block_;
};

TEST_F(RolodexTest, SelectingByCategory) {
  ASSERT_EQ(Open(), 0);
  Selection cards(&book_);
  EXPECT_EQ(cards.By(nullptr, nullptr, nullptr), Ids{});
  book_.Add(BodyOf(4, 'x'), {}, {2, 1, 2});
  book_.Add(BodyOf(4, 'x'), {}, {2, 1, 3});
  book_.Add(BodyOf(4, 'x'), {}, {255});
  book_.Add(BodyOf(4, 'x'));
  unsigned char const one[] = {1, 1}, both[] = {2, 1, 2}, three[] = {1, 3}, all[] = {255};
  EXPECT_EQ(cards.By(nullptr, nullptr, nullptr), (Ids{1, 2, 3, 4}));
  EXPECT_EQ(cards.By(both, nullptr, nullptr), (Ids{1, 3}));
  EXPECT_EQ(cards.By(all, nullptr, nullptr), (Ids{3}));
  EXPECT_EQ(cards.By(nullptr, nullptr, three), (Ids{1, 4}));
  EXPECT_EQ(cards.By(nullptr, three, three), (Ids{1, 2, 3, 4}));
  EXPECT_EQ(cards.By(nullptr, both, all), (Ids{1, 2, 3, 4}));
  EXPECT_EQ(cards.By(nullptr, three, nullptr), (Ids{1, 2, 3, 4}));
  EXPECT_EQ(cards.By(one, nullptr, all), Ids{});
}

TEST_F(RolodexTest, SelectingByProperty) {
  ASSERT_EQ(Open(), 0);
  PCardStorage card;
  card.AddProp("ORG", PropertyAscii, 0, "Acme", 5);
  card.AddProp("PHOTO", PropertyBitmap, 0, "Acme", 5);
  for (char const *label : {"ABC", "xabx", "\xC4", ""})
    book_.CreateCard(&card, label, nullptr, nullptr, nullptr);
  book_.DeleteCard(2);
  book_.Close();
  ASSERT_EQ(Open(1), 0) << "marks need no right to write";
  Selection cards(&book_);
  cards.By(nullptr, nullptr, nullptr);
  unsigned char const marked[] = {1, 77};
  struct Row {
    char const *property;
    int oper;
    char const *value;
    Ids ids;
  };
  for (Row const &row : {Row{"_label", CSBeginsWith, "ab", {1}},
                         {"_Label", CSEndsWith, "bc", {1}},
                         {"_Label", CSEquals, "ab", {}},
                         {"_Label", CSEquals, "abc", {1}},
                         {"_Label", CSContains, "b", {1}},
                         {"_Label", CSContains, "", {1, 3, 4}},
                         {"_Label", CSContains, "abcd", {}},
                         {"_Label", CSEquals, "\xE4", {}},
                         {"_Label", 4, "abc", {}},
                         {"ORG", CSContains, "CM", {1, 3, 4}},
                         {"PHOTO", CSContains, "Acme", {}}}) {
    EXPECT_EQ(cards.Mark(row.property, row.oper, row.value, 77), row.ids.size()) << row.value;
    Selection found(&book_);
    EXPECT_EQ(found.By(marked, nullptr, nullptr), row.ids) << row.property << row.value;
  }
  EXPECT_EQ(cards.Mark("_Label", CSContains, "", 128), 0U);
  EXPECT_EQ(cards.Mark("_Label", CSContains, "", 77), 3U);
  EXPECT_EQ(Selection(&book_).Mark("_Label", CSContains, "", 77), 0U) << "of none";
  EXPECT_EQ(cards.By(marked, nullptr, nullptr), Ids{}) << "but cleared of all";
}

TEST_F(RolodexTest, CompactingWhenItPays) {
  struct Row {
    uint32_t cards, size;  // bodies
    std::vector<uint32_t> deleted;
    int32_t force, result;
  };
  Ids const odd = {1, 3, 5, 7, 9, 11, 13, 15, 17, 19};
  for (Row const &row : {Row{0, 4, {}, 0, 1},
                         {20, 4, {}, 1, 0},
                         {21, 4, {5}, 0, 0},
                         {21, 4, {5}, 2, 0},
                         {21, 4, {5}, 3, 1},
                         {20, 4, odd, 0, 1},
                         {11, 49875, {3}, 0, 0},
                         {11, 49876, {3}, 0, 0},
                         {6, 49875, {3}, 0, 0},
                         {6, 49876, {3}, 0, 1},
                         {4, 100, {4}, 1, 1}}) {
    ASSERT_EQ(Rolodex::Create(path_.c_str()), 0);
    ASSERT_EQ(Open(), 0);
    for (uint32_t i = 0; i < row.cards; i++)
      book_.Add(BodyOf(row.size, static_cast<char>('a' + i)));
    for (uint32_t const id : row.deleted) book_.DeleteCard(id);
    Cards const before = book_.All();
    uint32_t const lastId = row.cards;
    EXPECT_EQ(book_.Compact(row.force), row.result);
    if (row.result == 1) {
      EXPECT_EQ(Records().size(), before.size());
      EXPECT_EQ(Content().size(), kArea + before.size() * (124 + row.size) + 4);
    }
    EXPECT_EQ(book_.All(), before);
    EXPECT_EQ(book_.Add(BodyOf(4, 'x')), lastId + 1);
    Cards const after = book_.All();
    Reopen();
    EXPECT_EQ(book_.All(), after);
    book_.Close();
  }
}

TEST_F(RolodexTest, CategoriesOfAllCards) {
  ASSERT_EQ(Open(), 0);
  book_.Add(BodyOf(4, 'x'), {}, {1, 1});
  book_.Add(BodyOf(4, 'x'));
  unsigned char const one[] = {1, 1}, five[] = {1, 5};
  EXPECT_EQ(book_.ApplyCategory(five, nullptr, one), 1);
  EXPECT_EQ(book_.CategoriesOf(1), (Categories{2, 1, 5}));
  EXPECT_EQ(book_.CategoriesOf(2), Categories{0});
  EXPECT_EQ(book_.ApplyCategory(five, five, nullptr), 1);
  EXPECT_EQ(book_.CategoriesOf(2), (Categories{1, 5}));
  Reopen();
  std::string const clean = Content();
  EXPECT_EQ(book_.ApplyCategory(five, nullptr, nullptr), 0);
  EXPECT_EQ(Content(), clean) << "nothing changed, so the index stays";
  Reopen(1);
  EXPECT_EQ(book_.ApplyCategory(one, nullptr, nullptr), 0);
}

TEST_F(RolodexTest, RecordsOfCategories) {
  EXPECT_NE(book_.GetCategoryInfo(127), nullptr);
  EXPECT_EQ(book_.GetCategoryInfo(128), nullptr);
  CategoryInfo info = {"friends", 0x01020304, "more"};
  book_.SetCategoryInfo(2, &info);
  EXPECT_EQ(book_.GetCategoryInfo(2)->number, 0U) << "it is closed";
  ASSERT_EQ(Open(), 0);
  book_.SetCategoryInfo(128, &info);
  book_.SetCategoryInfo(2, &info);
  std::string const stored = Content().substr(8 + 160, 80);
  EXPECT_EQ(stored,
            "friends" + std::string(57, '\0') + "\x04\x03\x02\x01more" + std::string(8, '\0'));
  EXPECT_EQ(Content().size(), 10272U);
  Reopen(1);
  EXPECT_EQ(book_.GetCategoryInfo(2)->number, 0x01020304U);
  info.number = 9;
  book_.SetCategoryInfo(2, &info);
  EXPECT_EQ(book_.GetCategoryInfo(2)->number, 0x01020304U);
}

TEST_F(RolodexTest, ReadersChangeNothing) {
  ASSERT_EQ(Open(), 0);
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
  EXPECT_EQ(book_.Add(BodyOf(4, 'x')), 0U);
  EXPECT_EQ(LastFailure(), 1);
  EXPECT_EQ(book_.Save(1, BodyOf(4, 'x')), 0);
  EXPECT_EQ(book_.DeleteCard(1), 0);
  EXPECT_EQ(book_.Compact(1), 0);
  book_.SetCardName(1, "x", nullptr, nullptr);
  EXPECT_EQ(book_.NamesOf(1)[0], "Al");
  EXPECT_EQ(book_.Body(2), BodyOf(50, 'b'));
  book_.Close();
  EXPECT_EQ(Content(), clean);
}

TEST_F(RolodexTest, BigEndianFiles) {
  ASSERT_EQ(Open(), 0);
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
  EXPECT_EQ(book_.Ids(), (Ids{1, 3, 4, 5}));
  Book other;
  EXPECT_EQ(other.Open(path_.c_str(), 1), -8991) << "the new file is locked, too";
  EXPECT_EQ(Content(), little);
  struct stat status {};
  ASSERT_EQ(stat(path_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640U);
  book_.Close();
  std::string newer = big;
  newer[7] = 1;
  Put(newer);
  EXPECT_EQ(Open(), -1);
  EXPECT_EQ(Content(), newer);
}

}  // namespace
}  // namespace zolt::testing
