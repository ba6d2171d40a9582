// A disk that fails or is full, at every call in turn; and programs that are killed.

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "tests/rolodex/random_steps.h"
#include "tests/support/child.h"
#include "tests/support/file_shim.h"
#include "tests/support/key.h"
#include "tests/support/temp_home.h"

namespace zolt::testing {
namespace {

bool Slow() {
  return std::getenv("ZOLT_SLOW") != nullptr;
}

class FaultTest : public ::testing::Test {
 protected:
  FaultTest() : path_(home_.path() + "/book") {}

  FilesInMemory const inMemory_;
  TempHome home_;
  std::string path_;
};

struct Fault {
  int error;
  bool part;
  bool forever;
};

// Cards as after some operations, then one whose call of that number fails. False if it has not so
// many calls.
bool FailOneCall(std::string const &path, uint32_t seed, int number, Fault const &fault) {
  FileShim shim;
  RandomSteps steps(seed);
  EXPECT_EQ(Rolodex::Create(path.c_str()), 0);
  Book book;
  EXPECT_EQ(book.Open(path.c_str(), 0), 0);
  for (uint32_t i = 0; i < 8 + seed % 5; i++) steps.Next().run(&book);
  if (seed % 3 == 0) {
    book.Close();
    book.Open(path.c_str(), 0);
  }
  Cards const before = steps.cards();
  CardStep const step = steps.Next();
  shim.set_noNewFiles(seed % 2 == 0);
  int const calls = shim.calls();
  shim.FailAt(number, fault.error, fault.part, fault.forever);
  step.run(&book);
  bool const reached = shim.calls() - calls >= number;
  int32_t const failure = LastFailure();
  book.Close();
  shim.FailNothing();
  EXPECT_EQ(book.Open(path.c_str(), 0), 0);
  EXPECT_EQ(Between(book.All(), before, step.after), "");
  if (reached && fault.forever && book.All() != step.after) {
    EXPECT_EQ(failure, fault.error == ENOSPC ? 3 : 6);
  }
  EXPECT_NE(book.Add(BodyOf(50, 'z')), 0U);
  return reached;
}

// A long trial is several tests, each with its share of the seeds.
constexpr uint32_t kShares = 4;

class FaultSequenceTest : public FaultTest, public ::testing::WithParamInterface<uint32_t> {};

INSTANTIATE_TEST_SUITE_P(Shares, FaultSequenceTest, ::testing::Range(0U, kShares));

TEST_P(FaultSequenceTest, EveryCallInTurn) {
  for (uint32_t seed = 1 + GetParam(); seed <= (Slow() ? 20000 : 200); seed += kShares) {
    for (Fault const &fault :
         {Fault{EIO, false, true}, Fault{EIO, false, false}, Fault{EIO, true, true},
          Fault{ENOSPC, true, false}, Fault{ENOSPC, true, true}}) {
      for (int number = 1; FailOneCall(path_, seed, number, fault); number++)
        ASSERT_FALSE(HasFailure()) << seed << " " << number << " " << fault.error << fault.part;
      ASSERT_FALSE(HasFailure()) << seed;
    }
  }
}

// After a full disk the same object works on once there is room.
TEST_F(FaultTest, AFullDiskIsNotTheEnd) {
  ASSERT_EQ(Rolodex::Create(path_.c_str()), 0);
  FileShim shim;
  Book book;
  ASSERT_EQ(book.Open(path_.c_str(), 0), 0);
  ASSERT_EQ(book.Add(BodyOf(10, 'a')), 1U);
  shim.FailAt(1, ENOSPC, true, false);
  EXPECT_EQ(book.Add(BodyOf(5000, 'b')), 0U);
  EXPECT_EQ(LastFailure(), 3);
  shim.FailAt(1, ENOSPC, true, false);
  EXPECT_EQ(book.Save(1, BodyOf(10, 'c')), 0);
  EXPECT_EQ(book.Body(1), BodyOf(10, 'a'));
  EXPECT_EQ(book.Add(BodyOf(5000, 'b')), 2U);
  EXPECT_EQ(book.Save(1, BodyOf(10, 'c')), 1);
  Cards const all = book.All();
  book.Close();
  ASSERT_EQ(book.Open(path_.c_str(), 1), 0);
  EXPECT_EQ(book.All(), all);
}

TEST_F(FaultTest, AnIndexThatCannotBeWrittenIsMadeAnew) {
  ASSERT_EQ(Rolodex::Create(path_.c_str()), 0);
  FileShim shim;
  Book book;
  ASSERT_EQ(book.Open(path_.c_str(), 0), 0);
  book.Add(BodyOf(10, 'a'));
  shim.FailAt(1, ENOSPC, true, true);
  book.Close();
  EXPECT_EQ(LastFailure(), 3);
  shim.FailNothing();
  EXPECT_EQ(book.Open(path_.c_str(), 1), -1);
  ASSERT_EQ(book.Open(path_.c_str(), 0), 0);
  EXPECT_EQ(book.Body(1), BodyOf(10, 'a'));
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
  ASSERT_EQ(Rolodex::Create(path_.c_str()), 0);
  std::mt19937 random(1);
  Cards cards;
  for (uint32_t seed = 1; seed <= (Slow() ? 3000 : 30); seed++) {
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
    Cards const after = steps.Next().after;
    Book book;
    ASSERT_EQ(book.Open(path_.c_str(), 0), 0);
    cards = book.All();
    ASSERT_EQ(Between(cards, before, after), "") << seed;
    // The ids that the next program gives go on from the highest that is there.
    while (cards.size() > 40) {
      book.DeleteCard(cards.begin()->first);
      cards.erase(cards.begin());
    }
  }
}

}  // namespace
}  // namespace zolt::testing
