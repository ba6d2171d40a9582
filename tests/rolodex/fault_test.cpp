// A disk that fails or is full, at every call in turn; and programs that are killed.

#include <csignal>
#include <tuple>

#include "tests/rolodex/random_steps.h"
#include "tests/support/child.h"
#include "tests/support/file_shim.h"
#include "tests/support/key.h"
#include "zolt41/rolodex/redo_block.h"
#include "zolt41/rolodex/rolodex_check.h"

namespace zolt::testing {
namespace {

struct Fault {
  int error;
  bool part;
  bool forever;
};

class FaultTest : public BookTest {
 protected:
  // Cards as after some operations, then one whose call of that number fails. False if it has not
  // so many calls.
  bool FailOneCall(uint32_t seed, int number, Fault const &fault) {
    FileShim shim;
    RandomSteps steps(seed);
    Begin();
    for (uint32_t i = 0; i < 8 + seed % 5; i++) steps.Next().run(&book_);
    if (seed % 3 == 0) Reopen();
    Cards const before = steps.cards();
    CardStep const step = steps.Next();
    shim.set_noNewFiles(seed % 2 == 0);
    int const calls = shim.calls();
    shim.FailAt(number, fault.error, fault.part, fault.forever);
    step.run(&book_);
    bool const reached = shim.calls() - calls >= number;
    int32_t const failure = LastFailure();
    book_.Close();
    shim.FailNothing();
    EXPECT_EQ(Open(), 0);
    EXPECT_EQ(Between(book_.All(), before, steps.cards()), "");
    if (reached && fault.forever && book_.All() != steps.cards()) {
      EXPECT_EQ(failure, fault.error == ENOSPC ? 3 : 6);
    }
    EXPECT_NE(book_.Add(BodyOf(50, 'z')), 0U);
    return reached;
  }
};

using FaultSequenceTest = Sharing<FaultTest>;

INSTANTIATE_TEST_SUITE_P(Shares, FaultSequenceTest, ::testing::Range(0U, kShares));

TEST_P(FaultSequenceTest, EveryCallInTurn) {
  ForSeeds(Often(200), [this](uint32_t seed) {
    for (Fault const &fault :
         {Fault{EIO, false, true}, Fault{EIO, false, false}, Fault{EIO, true, true},
          Fault{ENOSPC, true, false}, Fault{ENOSPC, true, true}}) {
      for (int number = 1; FailOneCall(seed, number, fault); number++)
        ASSERT_FALSE(HasFailure()) << number << " " << fault.error << fault.part;
    }
  });
}

// The head of the card that is saved crosses a page, so that it is freed through a redo block, for
// which there is no room; the new record, at the end or in a free place, is taken back.
TEST_F(FaultTest, AFullDiskInTheMiddleOfASave) {
  for (bool const intoFreePlace : {false, true}) {
    SCOPED_TRACE(intoFreePlace);
    int wholes = 0;
    for (int number = 1; number <= 12; number++) {
      FileShim shim;
      Begin();
      book_.Add(BodyOf(12288 - 8 - kArea - 124, 'a'));
      book_.Add(BodyOf(300, 'b'));
      for (uint32_t const size : {300U, 2000U, 300U}) book_.Add(BodyOf(size, 'c'));
      if (intoFreePlace) book_.DeleteCard(4);
      Reopen();
      Cards const all = book_.All();
      Cards saved = all;
      saved[2].body = BodyOf(1000, 'e');
      shim.FailAt(number, ENOSPC, true, false);
      int32_t const done = book_.Save(2, BodyOf(1000, 'e'));
      EXPECT_EQ(LastFailure(), done == 0 ? 3 : 0);
      shim.FailNothing();
      bool const whole = book_.Add(BodyOf(900, 'z')) == 6 && book_.DeleteCard(6) == 1;
      wholes += done == 0 && whole;
      EXPECT_TRUE(!whole || done != 0 || book_.All() == all);
      Reopen();
      EXPECT_EQ(Between(book_.All(), done == 0 ? all : saved, saved), "");
    }
    EXPECT_EQ(wholes, 4) << "no index given up, in two ways; no new record; one taken back";
  }
}

// Two batches. Where no step was left half done, the same object works on.
TEST_F(FaultTest, AFullDiskEndsACompactionBetweenTwoBatches) {
  int wholes = 0;
  for (int number = 1, done = 0; done == 0; number++) {
    SCOPED_TRACE(number);
    FileShim shim;
    Begin();
    for (int i = 0; i < 6; i++) book_.Add(BodyOf(500'000, static_cast<char>('a' + i)));
    book_.DeleteCard(1);
    book_.DeleteCard(5);
    Cards const all = book_.All();
    shim.set_noNewFiles(true);
    shim.FailAt(number, ENOSPC, true, false);
    done = book_.Compact(1);
    EXPECT_EQ(LastFailure(), done == 0 ? 3 : 0);
    bool const whole = book_.Add(BodyOf(900'000, 'z')) == 7;
    wholes += done == 0 && whole;
    EXPECT_TRUE(!whole || book_.DeleteCard(7) == 1);
    EXPECT_TRUE(!whole || book_.All() == all);
    Reopen();
    EXPECT_TRUE(book_.All() == all);
  }
  EXPECT_EQ(wholes, 6) << "no index given up; neither batch begun, or only the first; no end mark";
}

// A program that changes cards as the seed has it, and says how far it is.
int Work(Child::Pipe &pipe, std::string const &path, uint32_t seed, Cards const &cards) {
  Book book;
  if (book.Open(path.c_str(), 0) != 0) return 1;
  RandomSteps steps(seed, cards);
  for (int i = 0;; i++) {
    pipe.Say(std::to_string(i));
    steps.Next().run(&book);
  }
}

// What opening does, of a file that was not closed, with a redo block, twice the same card and a
// broken record, or of a big-endian one; and making a file. Nothing is lost that was there.
TEST_F(FaultTest, OpeningAndMaking) {
  for (char c = 'a'; c < 'f'; c++) book_.Add(BodyOf(5000, c), {std::string(1, c)});
  Cards all = book_.All();
  book_.Close();
  constexpr size_t kRecord = 5124;
  std::string const clean = Content();
  std::string dirty = clean.substr(0, kArea + 5 * kRecord + 4);
  std::string const big = BigEndian(dirty);
  PutNumber(&dirty, kArea + kRecord + 4, 1);
  PutNumber(&dirty, kArea + 4 * kRecord, 5);
  Piece const piece = {kArea + 28, std::string_view("z\0", 2)};
  std::string const block = RedoBlockOf(static_cast<uint32_t>(dirty.size()), {&piece, 1});
  Cards left = all;
  left.erase(2);
  left.erase(5);
  left[1].names[0] = "z";
  using Case = std::tuple<std::string, bool, Cards>;
  Case const cases[] = {{dirty + block, false, left}, {big, false, all}, {big, true, all}};
  for (auto const &[content, inPlace, cards] : cases) {
    for (auto const &[fault, durable] :
         {std::pair(Fault{EIO, true, true}, false), std::pair(Fault{ENOSPC, true, false}, false),
          std::pair(Fault{EIO, false, false}, true)}) {
      for (int number = 1, result = -1; result != 0 || number < 40; number++) {
        SCOPED_TRACE(number);
        Put(content);
        FileShim shim;
        shim.set_noNewFiles(inPlace);
        shim.FailAt(number, fault.error, fault.part, fault.forever);
        result = durable ? book_.OpenDurable(path_.c_str()) : Open();
        EXPECT_TRUE(result == 0 || LastFailure() == (fault.error == ENOSPC ? 3 : 6));
        book_.Close();
        shim.FailNothing();
        RolodexReport report;
        EXPECT_EQ(CheckRolodex(path_.c_str(), nullptr, nullptr, &report), 0);
        EXPECT_EQ(report.sound, cards.size());
        ASSERT_EQ(Open(), 0);
        EXPECT_TRUE(book_.All() == cards);
        book_.Close();
        for (int i = 1; unlink((path_ + ".lost-" + std::to_string(i)).c_str()) == 0;) i++;
      }
    }
  }
  FileShim shim;
  shim.FailAt(1, EIO, true, true);
  EXPECT_EQ(Rolodex::Create(path_.c_str()), -1);
  shim.FailAt(2, ENOSPC, true, true);
  EXPECT_EQ(Rolodex::Create(path_.c_str()), -1);
  EXPECT_EQ(LastFailure(), 3);
}

TEST_F(FaultTest, SettingACategoryHarmsNoOther) {
  book_.Add(BodyOf(300, 'a'), {"a"}, {1, 3});
  CategoryInfo const kept = {"kept", 0, ""};
  book_.SetCategoryInfo(2, &kept);
  Cards const all = book_.All();
  CategoryInfo const changed = {"changed", 0, ""};
  for (bool const durable : {false, true}) {
    for (Fault const &fault :
         {Fault{EIO, false, true}, Fault{EIO, true, false}, Fault{ENOSPC, true, true}}) {
      bool reached = true;
      for (int number = 1; reached; number++) {
        SCOPED_TRACE(number);
        book_.Close();
        FileShim shim;
        ASSERT_EQ(durable ? book_.OpenDurable(path_.c_str()) : Open(), 0);
        int const calls = shim.calls();
        shim.FailAt(number, fault.error, fault.part, fault.forever);
        book_.SetCategoryInfo(3, &changed);
        reached = shim.calls() - calls >= number;
        EXPECT_EQ(LastFailure(), !reached ? 0 : fault.error == ENOSPC ? 3 : 6);
        book_.Close();
        shim.FailNothing();
        ASSERT_EQ(Open(), 0);
        EXPECT_TRUE(book_.All() == all);
        EXPECT_STREQ(book_.GetCategoryInfo(2)->text, "kept");
        EXPECT_STREQ(book_.GetCategoryInfo(4)->text, "");
        EXPECT_TRUE(reached || book_.GetCategoryInfo(3)->text == std::string("changed"));
      }
    }
  }
}

TEST_F(FaultTest, KilledAtAnyMoment) {
  std::mt19937 random(1);
  Cards cards;
  for (uint32_t seed = 1; seed <= Often(30); seed++) {
    book_.Close();
    // The moment is counted in operations; where in one of them it falls is up to the machine.
    int const last = static_cast<int>(random() % 60);
    Child child([&](Child::Pipe &pipe) { return Work(pipe, path_, seed, cards); });
    int reached = 0;
    while (reached < last) reached = std::stoi(child.pipe().Hear());
    child.Signal(SIGKILL);
    ASSERT_EQ(child.Wait(), -SIGKILL);
    for (std::string line; !(line = child.pipe().Hear()).empty();) reached = std::stoi(line);
    RandomSteps steps(seed, cards);
    for (int i = 0; i < reached; i++) steps.Next();
    Cards const before = steps.cards();
    steps.Next();
    ASSERT_EQ(Open(), 0);
    cards = book_.All();
    ASSERT_EQ(Between(cards, before, steps.cards()), "") << seed;
    // The ids that the next program gives go on from the highest that is there.
    while (cards.size() > 40) {
      book_.DeleteCard(cards.begin()->first);
      cards.erase(cards.begin());
    }
  }
}

}  // namespace
}  // namespace zolt::testing
