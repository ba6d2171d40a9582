#include "zolt41/platform/registry/generation.h"

#include <sys/stat.h>

#include <tuple>

#include "tests/support/child.h"
#include "tests/support/files.h"

namespace zolt::testing {
namespace {

class GenerationTest : public FileTest {
 protected:
  Generation words_;
};

TEST_F(GenerationTest, WhatADeadWriterLeftIsMendedByTheNextOwner) {
  ASSERT_EQ(words_.Attach(home_.UserSync()), Failure::none);
  std::tuple<std::vector<uint16_t>, bool, bool> const cases[] = {
      {{9}, false, false},
      {{9, 9, 100}, false, false},
      {{}, true, true},
      {std::vector<uint16_t>(257, 9), false, true}};
  for (auto const &[words, all, epochMoves] : cases) {
    Stamp const before = words_.Words().Read(9);
    ASSERT_TRUE(HoldsInChild([this, words = words, all = all] {
      if (!words_.Lock(1000)) return false;
      words_.BeginChange(words, all);
      return true;  // ends with the mutex in hand
    }));
    Stamp const odd = words_.Words().Read(9);
    EXPECT_EQ((odd.word | odd.epoch) & 1, 1u);
    ASSERT_TRUE(words_.Lock(1000));
    Stamp const after = words_.Words().Read(9);
    EXPECT_EQ((after.word | after.epoch) & 1, 0u);
    EXPECT_NE(after, before) << "a copy from before must not come back to life";
    EXPECT_EQ(after.epoch != before.epoch, epochMoves);
    words_.Unlock();
  }
}

TEST_F(GenerationTest, MadeAnewOnlyWhenNobodyIsAttached) {
  ASSERT_EQ(words_.Attach(home_.UserSync()), Failure::none);
  ASSERT_TRUE(words_.Lock(0));
  words_.FlushAll();
  words_.SetIdentity({1, 2, 3});
  words_.Unlock();
  uint64_t const epoch = words_.Words().Read(0).epoch;
  Generation second;
  ASSERT_EQ(second.Attach(home_.UserSync()), Failure::none);
  EXPECT_EQ(second.Words().Read(0).epoch, epoch) << "attached beside the first";
  EXPECT_FALSE(second.TakeAlone());
  second.Detach();
  EXPECT_TRUE(words_.TakeAlone());
  words_.Share();
  words_.Detach();
  ASSERT_EQ(second.Attach(home_.UserSync()), Failure::none);
  EXPECT_EQ(second.Words().Read(0).epoch, 0u) << "made anew";
  EXPECT_EQ(second.identity(), (Generation::Identity{1, 2, 3})) << "but it knows the hive it saw";
}

TEST_F(GenerationTest, RefusesWhatItMustNotTrust) {
  auto const make = [this](char const *name, mode_t mode) {
    WriteContent(Path(name), "x");
    chmod(Path(name).c_str(), mode);
  };
  make("open to others", 0644);
  make("own", 0600);
  ASSERT_EQ(symlink("own", Path("a link").c_str()), 0);
  make("first name", 0600);
  ASSERT_EQ(link(Path("first name").c_str(), Path("second name").c_str()), 0);
  ASSERT_EQ(mkdir(Path("a directory").c_str(), 0700), 0);
  for (char const *what : {"open to others", "a link", "second name", "a directory"}) {
    Generation words;
    EXPECT_EQ(words.Attach(Path(what)), what[2] == 'd' ? Failure::io : Failure::denied) << what;
    EXPECT_FALSE(words.attached());
  }
}

TEST_F(GenerationTest, GarbageOfADeadRunIsMadeAnewAndAnotherLayoutInUseIsRefused) {
  WriteContent(home_.UserSync(), std::string(100000, 'G'));
  chmod(home_.UserSync().c_str(), 0600);
  ASSERT_EQ(words_.Attach(home_.UserSync()), Failure::none);
  EXPECT_EQ(words_.Words().Read(5), Stamp{});
  SharedFile newer;
  EXPECT_EQ(newer.Attach(home_.UserSync(), SharedFile::Owner::self,
                         {0x315F434E59535A5A, 2, 4096, 4096}, [](void *, bool) {}),
            Failure::newer);
}

}  // namespace
}  // namespace zolt::testing
