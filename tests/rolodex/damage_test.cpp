// Files that lie, are broken, or change under an open database.

#include "tests/rolodex/book.h"
#include "tests/support/file_shim.h"
#include "tests/support/key.h"

namespace zolt::testing {
namespace {

constexpr uint32_t kEnd = kArea + 4 * kRecord;

class DamageTest : public BookTest {
 protected:
  // Four cards, the third of which is deleted, closed.
  DamageTest() {
    for (char c = 'a'; c < 'e'; c++) book_.Add(BodyOf(50, c), {std::string(1, c)});
    book_.DeleteCard(3);
    all_ = book_.All();
    book_.Close();
    clean_ = Content();
    dirty_ = clean_.substr(0, kEnd + 4);
  }
  template <typename Trial>
  static void ForLyingNumbers(Trial const &trial) {
    for (uint32_t const number : {0U, 1U, 4U, 123U, 124U, 125U, 10247U, 10248U, 10252U, 0x7FFFFFFFU,
                                  0x80000000U, 0xFFFFFFFFU}) {
      SCOPED_TRACE(number);
      trial(number);
    }
  }
  // A file that is opened for writing only, and is then as it was when it was closed.
  void ExpectMended(std::string const &content) {
    Put(content);
    EXPECT_EQ(Open(1), -1);
    EXPECT_EQ(LastFailure(), 4);
    EXPECT_EQ(Content(), content);
    ASSERT_EQ(Open(), 0);
    EXPECT_EQ(Content(), clean_);
    EXPECT_EQ(book_.All(), all_);
    book_.Close();
    EXPECT_EQ(Content(), clean_);
  }
  // So often that tables of the names are made, through all that have the name. Gives how many.
  int Search() {
    int found = 0;
    for (int i = 0; i < 4; i++)
      for (uint32_t cursor = 0; book_.FindCard("a", "", nullptr, &cursor) != 0;) found++;
    return found;
  }
  // Reads and changes all that there is; only that it comes back is looked at.
  void UseAll() {
    Cards const cards = book_.All();
    char *block = NewMem(0);
    book_.SelectByCategory(nullptr, nullptr, nullptr, &block);
    _DisposeMem(block);
    book_.Mark(book_.AllIds(), "_Label", CSContains, "a", 3);
    Search();
    for (auto const &[id, card] : cards) {
      book_.SetCardName(id, "new", nullptr, nullptr);
      book_.Save(id, BodyOf(60, 'n'));
    }
    if (!cards.empty()) book_.DeleteCard(cards.begin()->first);
    book_.Add(BodyOf(50, 'm'));
    book_.Compact(1);
  }

  Cards all_;
  std::string clean_;
  std::string dirty_;
};

TEST_F(DamageTest, TrailersThatLie) {
  size_t const size = clean_.size();
  for (std::string const &cut :
       {With(clean_, size - 4, 0), dirty_, clean_.substr(0, kEnd), clean_.substr(0, kEnd + 2),
        clean_.substr(0, kEnd + 100), dirty_ + std::string(100, 'x')})
    ExpectMended(cut);
  EXPECT_NE(access((path_ + ".lost-1").c_str(), F_OK), 0);
  // Offset and size of the index, its count, the end mark.
  for (size_t const at : {size - 12, size - 8, size_t{kEnd} + 4, size_t{kEnd}}) {
    SCOPED_TRACE(at);
    ForLyingNumbers([&](uint32_t number) {
      std::string const lying = With(clean_, at, number);
      if (lying != clean_) ExpectMended(lying);
    });
  }
}

TEST_F(DamageTest, IndexesThatLieAreMadeAnew) {
  for (uint32_t const field : {0U, 4U, 8U, 124U, 128U, 132U, 248U, 252U, 256U, 372U, 376U, 380U}) {
    SCOPED_TRACE(field);
    ForLyingNumbers([&](uint32_t number) {
      std::string const lying = With(clean_, kEnd + 12 + field, number);
      if (lying == clean_) return;
      Put(lying);
      ASSERT_EQ(Open(1), 0);
      UseAll();
      book_.Close();
      EXPECT_EQ(Content(), lying);
      ASSERT_EQ(Open(), 0);
      // A lie that still fits can only be about ids.
      if (field % 124 != 4) {
        EXPECT_EQ(book_.Add(BodyOf(1000, 'x')), 5U);
        book_.DeleteCard(5);
        EXPECT_EQ(book_.All(), all_);
      }
      UseAll();
    });
  }
  // Entries that are not in file order.
  std::string swapped = clean_;
  for (size_t i = 0; i < 124; i++) std::swap(swapped[kEnd + 12 + i], swapped[kEnd + 136 + i]);
  Put(swapped);
  ASSERT_EQ(Open(1), 0);
  EXPECT_EQ(Search(), 4);
  UseAll();
  // No id is left.
  Put(With(clean_, kEnd + 8, 0xFFFFFFFF));
  ASSERT_EQ(Open(), 0);
  EXPECT_EQ(book_.Add(BodyOf(4, 'x')), 0U);
  EXPECT_EQ(LastFailure(), 3);
  EXPECT_TRUE(book_.AddMany({{BodyOf(4, 'x'), {}}}).empty());
  EXPECT_EQ(LastFailure(), 3);
  // The last id is below one that is there.
  Put(With(clean_, kEnd + 8, 2));
  ASSERT_EQ(Open(), 0);
  EXPECT_EQ(book_.Add(BodyOf(4, 'x')), 5U);
}

TEST_F(DamageTest, BrokenRecordsEndTheChainAndAreKept) {
  int losts = 0;
  for (uint32_t const field : {0U, 8U}) {
    ForLyingNumbers([&](uint32_t number) {
      // What has its own size, or an end mark in its place, is no broken record.
      if ((field == 0 && number == 0xFFFFFFFF) || (field == 8 && (number == 124 || number == 125)))
        return;
      std::string const broken = With(dirty_, kThird + field, number);
      Put(broken);
      ASSERT_EQ(Open(), 0);
      EXPECT_EQ(book_.AllIds(), (Ids{1, 2}));
      std::string const lost = path_ + ".lost-" + std::to_string(++losts);
      EXPECT_EQ(ContentOf(lost), std::string(kThird, '\0') + broken.substr(kThird));
    });
  }
  // An index that does not fit either is not worked with, however often it is tried.
  std::string const misfit = With(With(clean_, kEnd + 12 + 124, 10), kThird, 5);
  {
    Put(misfit);
    FileShim shim;
    shim.set_noNewFiles(true);
    ASSERT_EQ(Open(), 0);
    for (int i = 0; i < 2; i++) EXPECT_EQ(book_.DeleteCard(2), 0);
    EXPECT_EQ(LastFailure(), 1);
    book_.Close();
    EXPECT_EQ(Content(), misfit);
  }
  // Where nothing can be kept, nothing is cut.
  for (std::string const &content : {With(dirty_, kThird, 5), With(BigEndian(clean_), kThird, 5)}) {
    Put(content);
    FileShim shim;
    shim.set_noNewFiles(true);
    EXPECT_EQ(Open(), -1);
    EXPECT_EQ(LastFailure(), 1);
    EXPECT_EQ(Content(), content);
  }
}

// One card with a body of any size, which no list gives.
std::string OneCard(std::string const &body) {
  std::string head(124, 'n');
  PutNumber(&head, 0, kArea);
  PutNumber(&head, 4, 1);
  PutNumber(&head, 8, static_cast<uint32_t>(124 + body.size()));
  std::string front(kArea, '\0');
  PutNumber(&front, 0, 0x526F6C6F);
  return front + head + body + "\xFF\xFF\xFF\xFF";
}

TEST_F(DamageTest, OddBodiesAndNames) {
  std::string const whole = BodyOf(4, 'x');
  for (std::string const &body : {std::string(), std::string("abc"), std::string(500, '\xFF')}) {
    Put(OneCard(body));
    ASSERT_EQ(Open(), 0);
    EXPECT_EQ(book_.Body(1), whole) << "an empty list";
    EXPECT_EQ(book_.NamesOf(1)[0], std::string(31, 'n')) << "there is no NUL";
    EXPECT_EQ(book_.FindCard(std::string(31, 'N').c_str(), nullptr, nullptr, nullptr), 1U);
  }
  Begin();
  std::string const large = BodyOf(Often(1'000'000), 'L');
  EXPECT_EQ(book_.Add(large), 1U);
  EXPECT_EQ(book_.Save(1, large), 1);
  EXPECT_EQ(book_.Add(whole), 2U);
  EXPECT_TRUE(book_.Body(1) == large);
}

TEST_F(DamageTest, AFileThatIsCutWhileItIsOpen) {
  ASSERT_EQ(Open(), 0);
  ASSERT_EQ(book_.Body(1), BodyOf(50, 'a'));
  std::filesystem::resize_file(path_, kArea + 150);
  EXPECT_EQ(book_.Body(1), "!");
  EXPECT_EQ(book_.Body(4), "!");
  UseAll();
  book_.Close();
  std::filesystem::resize_file(path_, kArea + 130);
  EXPECT_EQ(Open(), 0);
}

TEST_F(DamageTest, TheLimitOfSize) {
  uint32_t const size = 0x7FFFFFFF - 401 - kArea;
  Put(With(OneCard(""), kArea + 8, size).substr(0, kArea + 124));
  std::filesystem::resize_file(path_, kArea + size);
  ASSERT_EQ(Open(), 0);
  // Head, end mark, and with two entries an index of 256 bytes and a trailer of 12 leave 5.
  EXPECT_EQ(book_.Add(BodyOf(8, 'x')), 0U);
  EXPECT_EQ(LastFailure(), 3);
  EXPECT_EQ(book_.Add(BodyOf(4, 'x')), 2U);
  book_.SetCardName(1, "still", nullptr, nullptr);
  Reopen(1);
  EXPECT_EQ(book_.NamesOf(1)[0], "still");
  // Cards up to the end leave no room for an index, and every opening is like the first.
  uint32_t const largest = 0x7FFFFFFF - kArea - 4;
  Put(With(OneCard(""), kArea + 8, largest).substr(0, kArea + 124));
  std::filesystem::resize_file(path_, kArea + largest);
  for (int i = 0; i < 2; i++) {
    ASSERT_EQ(Open(), 0);
    EXPECT_EQ(LastFailure(), 3);
    EXPECT_EQ(book_.NamesOf(1)[0], std::string(31, 'n'));
    book_.Close();
    EXPECT_EQ(std::filesystem::file_size(path_), 0x7FFFFFFF);
  }
  std::filesystem::resize_file(path_, 0x80000001);
  for (int32_t const readOnly : {1, 0}) EXPECT_EQ(Open(readOnly), -1);
  EXPECT_EQ(std::filesystem::file_size(path_), 0x80000001);
}

}  // namespace
}  // namespace zolt::testing
