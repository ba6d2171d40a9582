// The database beside a model of it over random operations: the same results, and the same bytes.

#include "tests/rolodex/random_steps.h"

namespace zolt::testing {
namespace {

class ModelTest : public BookTest {
 protected:
  void Do(CardStep const &step) { ASSERT_EQ(step.run(&book_), step.results); }
  void Select() {
    std::string const label = steps_.PickName();
    uint32_t const category = steps_.Pick(128);
    Ids ids = steps_.model().AllIds();
    ids.push_back(steps_.PickId());
    ASSERT_EQ(book_.Mark(ids, "_LABEL", CSEquals, label.c_str(), category),
              steps_.model().SelectLabel(ids, label, category));
  }
  void Find() {
    SomeNames names;
    char const *texts[3] = {};
    for (size_t i = 0; i < 3; i++)
      if (steps_.Pick(2) == 0) texts[i] = names[i].emplace(steps_.PickName()).c_str();
    uint32_t cursor = steps_.Pick(3) == 0 ? steps_.Pick(100) : 0;
    uint32_t expectedCursor = cursor;
    uint32_t expected = 0;
    do {
      expected = steps_.model().FindCard(names, &expectedCursor);
      ASSERT_EQ(book_.FindCard(texts[0], texts[1], texts[2], &cursor), expected);
      ASSERT_EQ(cursor, expectedCursor);
    } while (expected != 0);
  }
  void Read() {
    uint32_t const id = steps_.PickId();
    ASSERT_EQ(book_.Card(id), steps_.model().Card(id));
    ASSERT_EQ(book_.CardIndex(id), steps_.model().CardIndex(id));
    ASSERT_EQ(book_.All(), steps_.cards());
  }
  void SetCategory() {
    CategoryInfo const info = {"a category", steps_.Pick(100), "more"};
    uint32_t const number = steps_.Pick(128);
    book_.SetCategoryInfo(number, &info);
    std::string bytes(80, '\0');
    bytes.replace(0, 10, "a category").replace(68, 4, "more");
    PutNumber(&bytes, 64, info.number);
    steps_.model().SetCategory(number, bytes);
  }
  void CloseAndOpen() {
    book_.Close();
    ASSERT_EQ(Content(), steps_.model().Closed());
    steps_.model().Reopen();
    ASSERT_EQ(Open(), 0);
  }
  void Run(int count) {
    for (int i = 0; i < count && !HasFatalFailure(); i++) {
      uint32_t const kind = steps_.Pick(40);
      kind < 30   ? Do(steps_.Next())
      : kind < 32 ? Select()
      : kind < 36 ? Find()
      : kind < 38 ? Read()
      : kind < 39 ? SetCategory()
                  : CloseAndOpen();
    }
    if (HasFatalFailure()) return;
    ASSERT_EQ(book_.AllIds(), steps_.model().AllIds());
    Read();
    CloseAndOpen();
  }

  RandomSteps steps_{0};
};

TEST_F(ModelTest, SameResultsAndBytes) {
  for (uint32_t seed = 1; seed <= Often(60) && !HasFatalFailure(); seed++) {
    SCOPED_TRACE(seed);
    Begin();
    steps_ = RandomSteps(seed);
    Run(300);
  }
}

// As many free records and cards as fill several leaves of every table.
TEST_F(ModelTest, SameWithManyCards) {
  for (int i = 0; i < 4000; i++) Do(steps_.Create());
  for (int i = 0; i < 3000 && !HasFatalFailure(); i++) {
    uint32_t const id = 1 + steps_.Pick(4000);
    Do(steps_.Pick(3) == 0 ? steps_.Save(id) : steps_.Delete(id));
    if (steps_.Pick(4) == 0) Do(steps_.Create());
    if (steps_.Pick(200) == 0) Find();
  }
  Run(200);
}

}  // namespace
}  // namespace zolt::testing
