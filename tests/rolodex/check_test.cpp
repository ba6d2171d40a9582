#include <unistd.h>

#include <tuple>

#include "tests/rolodex/book.h"
#include "zolt41/rolodex/redo_block.h"
#include "zolt41/rolodex/rolodex_check.h"

namespace zolt::testing {
namespace {

class CheckTest : public BookTest {
 protected:
  // Five cards, of which the second is deleted.
  CheckTest() {
    CategoryInfo const info = {"friends", 7, ""};
    book_.SetCategoryInfo(100, &info);
    for (char c = 'a'; c < 'f'; c++) book_.Add(BodyOf(50, c), {std::string(1, c), "x"}, {1, 9});
    book_.DeleteCard(2);
    all_ = book_.All();
    book_.Close();
    clean_ = Content();
    dirty_ = clean_.substr(0, kArea + 5 * kRecord + 4);
  }

  // "1 sound 3 cut" and so on, a "!" behind what is not whole.
  std::string Check(std::string const &content) {
    Put(content);
    std::string told;
    auto const tell = [](void *context, CardFinding const &finding) {
      constexpr char const *kStates[] = {"sound", "cut", "lost"};
      *static_cast<std::string *>(context) += " " + std::to_string(finding.id) +
                                              kStates[static_cast<int>(finding.state)] +
                                              (finding.whole ? "" : "!");
    };
    EXPECT_EQ(CheckRolodex(path_.c_str(), tell, &told, &report_), 0);
    EXPECT_EQ(Content(), content);
    return told;
  }
  // What is in a database that was made of files.
  Cards Repaired(std::vector<std::string> const &files) {
    std::vector<char const *> paths;
    for (std::string const &file : files) paths.push_back(file.c_str());
    unlink(target_.c_str());
    auto const size = static_cast<uint32_t>(paths.size());
    uint32_t count = 0;
    EXPECT_EQ(RepairRolodex(paths.data(), size, target_.c_str(), &count), 0);
    Book book;
    EXPECT_EQ(book.Open(target_.c_str(), 1), 0);
    EXPECT_EQ(book.GetCategoryInfo(100)->number, 7U);
    EXPECT_EQ(book.AllIds().size(), count);
    return book.All();
  }

  std::string const target_ = home_.path() + "/repaired";
  Cards all_;
  std::string clean_;
  std::string dirty_;
  RolodexReport report_;
};

TEST_F(CheckTest, WhatIsSoundCutAndLost) {
  std::string const big = BigEndian(clean_);
  std::string const bigAndBroken = With(BigEndian(dirty_), kThird, 5);
  std::string const cut = dirty_.substr(0, dirty_.size() - 6);
  std::string const cutInAHead = dirty_.substr(0, kArea + 4 * kRecord + 60);
  std::string const sound = " 1sound 3sound 4sound 5sound";
  Ids const all = {1, 3, 4, 5}, withoutThird = {1, 4, 5}, withoutLast = {1, 3, 4};
  std::tuple<char const *, std::string, bool, std::string, Ids> const cases[] = {
      {"closed", clean_, true, sound, all},
      {"not closed", dirty_, false, sound, all},
      {"wrong position", With(dirty_, kThird, 5), false, " 1sound 4lost 5lost", withoutThird},
      {"closed, too", With(clean_, kThird, 5), false, " 1sound 3cut 4sound 5sound", all},
      {"large", With(dirty_, kThird + 8, 10000), false, " 1sound 3cut! 4lost 5lost", withoutThird},
      {"no list", With(dirty_, kThird + 124, 9), false, " 1sound 3cut! 4sound 5sound",
       withoutThird},
      {"big-endian", big, false, sound, all},
      {"and broken", bigAndBroken, false, " 1sound 4lost 5lost", withoutThird},
      {"a cut file", cut, false, " 1sound 3sound 4sound 5cut!", withoutLast},
      {"cut in a head", cutInAHead, false, " 1sound 3sound 4sound 5cut!", withoutLast}};
  for (auto const &[what, content, clean, told, repaired] : cases) {
    SCOPED_TRACE(what);
    EXPECT_EQ(Check(content), told);
    EXPECT_EQ(report_.clean, clean);
    Cards expected;
    for (uint32_t const id : repaired) expected[id] = all_[id];
    EXPECT_EQ(Repaired({path_}), expected);
  }
  EXPECT_EQ(report_.freeRecords, 1U);
  EXPECT_EQ(report_.freeBytes, kRecord);
}

// The fourth record has the id of the third; the last has the highest id that there is.
TEST_F(CheckTest, CopiesOfACard) {
  constexpr uint32_t kLastId = 0xFFFFFFFF;
  CardContent const first = all_[3];
  CardContent const second = all_[4];
  PutNumber(&dirty_, kThird + kRecord + 4, 3);
  PutNumber(&dirty_, kThird + 2 * kRecord + 4, kLastId);
  std::tuple<char const *, uint32_t, std::string, CardContent, Cards> const cases[] = {
      {"both are whole", 0, " 3sound", first, {{2, second}, {3, first}}},
      {"only the first", kThird + kRecord, " 3sound", first, {{3, first}}},
      {"only the second", kThird, " 3cut! 3sound", second, {{3, second}}}};
  for (auto const &[what, torn, told, opened, repaired] : cases) {
    SCOPED_TRACE(what);
    EXPECT_EQ(Check(torn == 0 ? dirty_ : With(dirty_, torn + 124, 77777)),
              " 1sound" + told + " 4294967295sound");
    Cards expected = repaired;
    expected[1] = all_[1];
    expected[kLastId] = all_[5];
    EXPECT_EQ(Repaired({path_}), expected);
    ASSERT_EQ(Open(), 0);
    EXPECT_EQ(book_.All(), (Cards{{1, all_[1]}, {3, opened}, {kLastId, all_[5]}}));
  }
}

TEST_F(CheckTest, BodiesThatAreTooShort) {
  for (uint32_t const size : {0U, 3U}) {
    std::string content = dirty_.substr(0, dirty_.size() - 4 - 50 + size) + "\xFF\xFF\xFF\xFF";
    PutNumber(&content, kThird + 2 * kRecord + 8, 124 + size);
    EXPECT_EQ(Check(content), " 1sound 3sound 4sound 5sound");
    Cards expected = all_;
    expected[5].body = BodyOf(4, 'x');
    EXPECT_EQ(Repaired({path_, path_}), expected);
  }
}

TEST_F(CheckTest, AnUnfinishedChangeCounts) {
  std::string const freed(4, '\0');
  Piece const piece = {kThird + 4, freed};
  std::string const block = RedoBlockOf(static_cast<uint32_t>(dirty_.size()), {&piece, 1});
  EXPECT_EQ(Check(dirty_ + block), " 1sound 4sound 5sound");
  EXPECT_EQ(Check(dirty_ + block + "x"), " 1sound 3sound 4sound 5sound");
}

TEST_F(CheckTest, PiecesComeBack) {
  PutNumber(&dirty_, kThird, 5);
  Put(dirty_);
  ASSERT_EQ(Open(), 0);
  EXPECT_EQ(book_.AllIds(), Ids{1});
  // Its id is one of a card that is lost.
  EXPECT_EQ(book_.Add(BodyOf(60, 'n'), {"new"}), 2U);
  EXPECT_EQ(book_.Add(BodyOf(60, 'm'), {"newer"}), 3U);
  EXPECT_EQ(book_.Add(BodyOf(60, 'o'), {"newest"}), 4U);
  Cards expected = book_.All();
  book_.Close();
  expected[6] = all_[4];
  expected[5] = all_[5];
  std::string const lost = path_ + ".lost-1";
  EXPECT_EQ(Repaired({path_, lost, lost}), expected);
  // A conversion that comes to a broken record keeps what it does not convert.
  Put(With(BigEndian(clean_), kThird, 5));
  ASSERT_EQ(Open(), 0);
  book_.Close();
  EXPECT_EQ(Repaired({path_, path_ + ".lost-2"}),
            (Cards{{1, all_[1]}, {4, all_[4]}, {5, all_[5]}}));
}

TEST_F(CheckTest, WhatIsRefused) {
  uint32_t cards = 0;
  char const *const paths[] = {path_.c_str()};
  WriteContent(target_, "mine");
  EXPECT_EQ(RepairRolodex(paths, 1, target_.c_str(), &cards), -8990);
  EXPECT_EQ(ContentOf(target_), "mine");
  unlink(target_.c_str());
  Put(std::string(20000, 'x'));
  EXPECT_EQ(CheckRolodex(path_.c_str(), nullptr, nullptr, &report_), -1);
  EXPECT_EQ(RepairRolodex(paths, 1, target_.c_str(), &cards), -1);
  EXPECT_NE(access(target_.c_str(), F_OK), 0);
  EXPECT_EQ(CheckRolodex((path_ + "none").c_str(), nullptr, nullptr, &report_), -8991);
}

}  // namespace
}  // namespace zolt::testing
