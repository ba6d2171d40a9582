// Memory that runs out, at every allocation in turn.

#include "tests/rolodex/random_steps.h"
#include "tests/support/failing_memory.h"
#include "tests/support/file_shim.h"
#include "tests/support/key.h"

namespace zolt::testing {
namespace {

class MemoryTest : public BookTest {
 protected:
  template <typename Work, typename Expect>
  void Try(Work const &work, Expect const &expect) {
    for (int number = 0; number < 200; number++) {
      SCOPED_TRACE(number);
      Begin();
      book_.AddMany({{BodyOf(5000, 'a'), {"a"}}, {BodyOf(50, 'b'), {"b"}}, {BodyOf(700, 'c'), {}}});
      book_.DeleteCard(1);
      Reopen();
      Cards const before = book_.All();
      Cards after = before;
      expect(&after);
      Reopen();
      bool const done = WithMemoryFor(number, work);
      if (!done) {
        EXPECT_EQ(LastFailure(), 3);
      }
      book_.Close();
      ASSERT_EQ(Open(), 0);
      if (done) {
        EXPECT_EQ(book_.All(), after);
        return;
      }
      EXPECT_EQ(Between(book_.All(), before, after), "");
    }
    FAIL() << "it never has enough";
  }
};

TEST_F(MemoryTest, EveryAllocationInTurn) {
  PCardStorage card;
  Book::SetBody(&card, BodyOf(900, 'n'));
  PCardStorage *const cards[] = {&card, &card};
  CardContent const made = {BodyOf(900, 'n'), {}};
  auto const nothing = [](Cards *) {};
  unsigned char const five[] = {1, 5};
  FileShim shim;
  shim.set_noNewFiles(true);
  Try([&] { return book_.CreateCard(&card, "", "", "", five) == 4; },
      [&](Cards *all) {
        (*all)[4] = {made.body, {}, {1, 5}};
      });
  Try([&] { return book_.CreateCards(2, cards, nullptr, nullptr, nullptr) == 2; },
      [&](Cards *all) { (*all)[4] = (*all)[5] = made; });
  Try([&] { return book_.SaveCard(2, &card) == 1; },
      [&](Cards *all) { (*all)[2].body = made.body; });
  Try([&] { return book_.DeleteCard(2) == 1; }, [](Cards *all) { all->erase(2); });
  Try([&] { return book_.Compact(1) == 1; }, nothing);
  Try([&] { return book_.LoadCard(2, &card) == 1; }, nothing);
  Try(
      [&] {
        uint32_t found = 0;
        for (int i = 0; i < 4; i++) found = book_.FindCard("b", "", nullptr, nullptr);
        return found == 2;
      },
      nothing);
}

}  // namespace
}  // namespace zolt::testing
