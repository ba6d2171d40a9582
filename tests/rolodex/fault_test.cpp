// A disk that fails or is full, at every call in turn; and programs that are killed.

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>

#include "tests/rolodex/random_steps.h"
#include "tests/support/child.h"
#include "tests/support/file_shim.h"
#include "tests/support/key.h"

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

// After a full disk the same object works on once there is room.
TEST_F(FaultTest, AFullDiskIsNotTheEnd) {
  FileShim shim;
  ASSERT_EQ(book_.Add(BodyOf(10, 'a')), 1U);
  shim.FailAt(1, ENOSPC, true, false);
  EXPECT_EQ(book_.Add(BodyOf(5000, 'b')), 0U);
  EXPECT_EQ(LastFailure(), 3);
  shim.FailAt(1, ENOSPC, true, false);
  EXPECT_EQ(book_.Save(1, BodyOf(10, 'c')), 0);
  EXPECT_EQ(book_.Body(1), BodyOf(10, 'a'));
  EXPECT_EQ(book_.Add(BodyOf(5000, 'b')), 2U);
  EXPECT_EQ(book_.Save(1, BodyOf(10, 'c')), 1);
  Cards const all = book_.All();
  Reopen(1);
  EXPECT_EQ(book_.All(), all);
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
