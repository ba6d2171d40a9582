// Files that lie, are broken, or change under an open database.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "tests/rolodex/book.h"
#include "tests/support/file_shim.h"
#include "tests/support/key.h"
#include "tests/support/temp_home.h"

namespace zolt::testing {
namespace {

constexpr uint32_t kArea = 10248;

class DamageTest : public ::testing::Test {
 protected:
  // Four cards with bodies of 50 bytes, the third of which is deleted, closed.
  void SetUp() override {
    path_ = home_.path() + "/book";
    ASSERT_EQ(Rolodex::Create(path_.c_str()), 0);
    ASSERT_EQ(Open(), 0);
    for (char c = 'a'; c < 'e'; c++) book_.Add(BodyOf(50, c), {std::string(1, c)});
    book_.DeleteCard(3);
    all_ = book_.All();
    book_.Close();
    clean_ = ContentOf(path_);
    end_ = kArea + 4 * 174;
  }
  int32_t Open(int32_t readOnly = 0) { return book_.Open(path_.c_str(), readOnly); }
  void Put(std::string const &content) const { WriteContent(path_, content); }
  std::string With(size_t position, uint32_t number) const {
    std::string content = clean_;
    PutNumber(&content, position, number);
    return content;
  }
  static std::vector<uint32_t> LyingNumbers() {
    return {0, 1, 4, 123, 124, 125, 10247, 10248, 10252, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  }
  // Reads and changes all that there is; only that it comes back is looked at.
  void UseAll() {
    Cards const cards = book_.All();
    char *block = NewMem(0);
    book_.SelectByCategory(nullptr, nullptr, nullptr, &block);
    book_.Select(block, "_Label", CSContains, "a", 3);
    _DisposeMem(block);
    for (auto const &[id, card] : cards) {
      book_.SetCardName(id, "new", nullptr, nullptr);
      book_.Save(id, BodyOf(60, 'n'));
    }
    if (!cards.empty()) book_.DeleteCard(cards.begin()->first);
    book_.Add(BodyOf(50, 'm'));
    book_.Compact(1);
  }

  FilesInMemory const inMemory_;
  TempHome home_;
  std::string path_;
  Book book_;
  Cards all_;
  std::string clean_;
  uint32_t end_ = 0;
};

TEST_F(DamageTest, TrailersThatLie) {
  size_t const size = clean_.size();
  // Offset and size of the index, its count, the end mark.
  for (size_t const at : {size - 12, size - 8, size_t{end_} + 4, size_t{end_}}) {
    for (uint32_t const number : LyingNumbers()) {
      std::string const lying = With(at, number);
      if (lying == clean_) continue;
      SCOPED_TRACE(std::to_string(at) + " " + std::to_string(number));
      Put(lying);
      EXPECT_EQ(Open(1), -1);
      EXPECT_EQ(LastFailure(), 4);
      ASSERT_EQ(Open(), 0);
      EXPECT_EQ(book_.All(), all_);
      book_.Close();
      EXPECT_EQ(ContentOf(path_), clean_);
    }
  }
}

TEST_F(DamageTest, IndexesThatLieAreMadeAnew) {
  for (uint32_t entry = 0; entry < 4; entry++) {
    for (uint32_t const field : {0U, 4U, 8U}) {
      for (uint32_t const number : LyingNumbers()) {
        std::string const lying = With(end_ + 12 + 124 * entry + field, number);
        if (lying == clean_) continue;
        SCOPED_TRACE(std::to_string(entry) + " " + std::to_string(field) + " " +
                     std::to_string(number));
        Put(lying);
        ASSERT_EQ(Open(1), 0);
        UseAll();
        book_.Close();
        EXPECT_EQ(ContentOf(path_), lying);
        ASSERT_EQ(Open(), 0);
        // A lie that still fits can only be about ids.
        if (field != 4) {
          EXPECT_EQ(book_.Add(BodyOf(1000, 'x')), 5U);
          book_.DeleteCard(5);
          EXPECT_EQ(book_.All(), all_);
        }
        UseAll();
        book_.Close();
      }
    }
  }
  // The last id is below one that is there.
  Put(With(end_ + 8, 2));
  ASSERT_EQ(Open(), 0);
  EXPECT_EQ(book_.Add(BodyOf(4, 'x')), 5U);
}

TEST_F(DamageTest, BrokenRecordsEndTheChainAndAreKept) {
  std::string const dirty = clean_.substr(0, end_ + 4);
  uint32_t const third = kArea + 2 * 174;
  int losts = 0;
  for (uint32_t const field : {0U, 8U}) {
    for (uint32_t const number : LyingNumbers()) {
      SCOPED_TRACE(std::to_string(field) + " " + std::to_string(number));
      std::string broken = dirty;
      PutNumber(&broken, third + field, number);
      // What has its own size, or an end mark in its place, is no broken record.
      if ((field == 0 && number == 0xFFFFFFFF) || (field == 8 && (number == 124 || number == 125)))
        continue;
      Put(broken);
      ASSERT_EQ(Open(), 0);
      EXPECT_EQ(book_.Ids(), (std::vector<uint32_t>{1, 2}));
      book_.Close();
      std::string const lost = path_ + ".lost-" + std::to_string(++losts);
      EXPECT_EQ(ContentOf(lost), std::string(third, '\0') + broken.substr(third));
    }
  }
  // Where nothing can be kept, nothing is cut.
  std::string broken = dirty;
  PutNumber(&broken, third, 5);
  Put(broken);
  FileShim shim;
  shim.set_noNewFiles(true);
  EXPECT_EQ(Open(), -1);
  EXPECT_EQ(LastFailure(), 1);
  EXPECT_EQ(ContentOf(path_), broken);
  Put(BigEndian(clean_));
  EXPECT_EQ(Open(), -1);
  EXPECT_EQ(ContentOf(path_), BigEndian(clean_));
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
    book_.Close();
  }
  ASSERT_EQ(Rolodex::Create(path_.c_str()), 0);
  ASSERT_EQ(Open(), 0);
  std::string const large =
      BodyOf(std::getenv("ZOLT_SLOW") != nullptr ? 100'000'000 : 10'000'000, 'L');
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
  std::string card = OneCard("");
  uint32_t const size = 0x7FFFFFFF - 401 - kArea;
  PutNumber(&card, kArea + 8, size);
  Put(card.substr(0, kArea + 124));
  std::filesystem::resize_file(path_, kArea + size);
  ASSERT_EQ(Open(), 0);
  // Head, end mark, and with two entries an index of 256 bytes and a trailer of 12 leave 5.
  EXPECT_EQ(book_.Add(BodyOf(8, 'x')), 0U);
  EXPECT_EQ(LastFailure(), 3);
  EXPECT_EQ(book_.Add(BodyOf(4, 'x')), 2U);
  book_.SetCardName(1, "still", nullptr, nullptr);
  book_.Close();
  ASSERT_EQ(Open(1), 0);
  EXPECT_EQ(book_.NamesOf(1)[0], "still");
  book_.Close();
  std::filesystem::resize_file(path_, 0x80000001);
  EXPECT_EQ(Open(1), -1);
  EXPECT_EQ(Open(), -1);
  EXPECT_EQ(std::filesystem::file_size(path_), 0x80000001);
}

}  // namespace
}  // namespace zolt::testing
