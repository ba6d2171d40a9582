#include "zolt41/platform/registry/generation.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <vector>

#include "tests/support/child.h"
#include "tests/support/temp_home.h"

namespace zolt {
namespace {

using testing::Child;

class GenerationTest : public ::testing::Test {
 protected:
  testing::TempHome home_;
  Generation words_;
};

TEST_F(GenerationTest, WhatADeadWriterLeftIsMendedByTheNextOwner) {
  ASSERT_EQ(words_.Attach(home_.UserSync()), Failure::none);
  struct Case {
    std::vector<uint16_t> words;
    bool all;
    bool epochMoves;
  };
  for (Case const &c : {Case{{9}, false, false}, Case{{9, 9, 100}, false, false},
                        Case{{}, true, true}, Case{std::vector<uint16_t>(257, 9), false, true}}) {
    Stamp const before = words_.Words().Read(9);
    Child dying([&](Child::Pipe &) {
      if (!words_.Lock(1000)) return 1;
      words_.BeginChange(c.words, c.all);
      return 0;  // ends with the mutex in hand
    });
    ASSERT_EQ(dying.Wait(), 0);
    Stamp const odd = words_.Words().Read(9);
    EXPECT_EQ((odd.word | odd.epoch) & 1, 1u);
    ASSERT_TRUE(words_.Lock(1000));
    Stamp const after = words_.Words().Read(9);
    EXPECT_EQ((after.word | after.epoch) & 1, 0u);
    EXPECT_NE(after, before) << "a copy from before must not come back to life";
    EXPECT_EQ(after.epoch != before.epoch, c.epochMoves);
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
  struct Case {
    char const *what;
    std::function<void(std::string const &)> make;
    Failure failure;
  };
  Case const cases[] = {
      {"open to others",
       [](std::string const &path) {
         std::ofstream(path) << "x";
         chmod(path.c_str(), 0644);
       },
       Failure::denied},
      {"a link",
       [](std::string const &path) {
         std::ofstream(path + ".real") << "";
         symlink((path + ".real").c_str(), path.c_str());
       },
       Failure::denied},
      {"two names",
       [](std::string const &path) {
         std::ofstream(path + ".real") << "";
         chmod((path + ".real").c_str(), 0600);
         link((path + ".real").c_str(), path.c_str());
       },
       Failure::denied},
      {"a directory", [](std::string const &path) { mkdir(path.c_str(), 0700); }, Failure::io},
  };
  for (Case const &c : cases) {
    std::string const path = home_.path() + "/sync-" + c.what;
    c.make(path);
    Generation words;
    EXPECT_EQ(words.Attach(path), c.failure) << c.what;
    EXPECT_FALSE(words.attached());
  }
}

TEST_F(GenerationTest, GarbageOfADeadRunIsMadeAnewAndAnotherLayoutInUseIsRefused) {
  std::ofstream(home_.UserSync()) << std::string(100000, 'G');
  chmod(home_.UserSync().c_str(), 0600);
  ASSERT_EQ(words_.Attach(home_.UserSync()), Failure::none);
  EXPECT_EQ(words_.Words().Read(5), Stamp{});
  SharedFile newer;
  EXPECT_EQ(newer.Attach(home_.UserSync(), SharedFile::Owner::self,
                         {0x315F434E59535A5A, 2, 4096, 4096}, [](void *, bool) {}),
            Failure::newer);
}

}  // namespace
}  // namespace zolt
