#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/resource.h>

#include <chrono>
#include <csignal>
#include <deque>
#include <random>

#include "tests/support/child.h"
#include "tests/support/key.h"
#include "tests/support/raw_hive.h"
#include "tests/support/temp_home.h"
#include "zolt41/platform/registry/generation.h"
#include "zolt41/platform/registry/hive_file.h"
#include "zolt41/platform/registry/hive_status.h"
#include "zolt41/platform/registry/registry.h"

namespace zolt::testing {
namespace {

using Clock = std::chrono::steady_clock;

// Several processes on one home.
class HiveProcessesTest : public ::testing::Test {
 protected:
  // Long trials take their full length when the suite is asked for it.
  static std::chrono::seconds TrialLength() {
    return std::chrono::seconds(std::getenv("ZOLT_SLOW") != nullptr ? 60 : 2);
  }

  void Poke(off_t offset, uint32_t value) const {
    int const file = open(home_.UserSync().c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(pwrite(file, &value, sizeof value, offset), 4);
    close(file);
  }

  void CheckIntegrity() const {
    EXPECT_EQ(RawHive(home_.UserHive()).Run("PRAGMA integrity_check"), "ok");
  }

  TempHome home_;
  std::deque<Child> children_;
};

TEST_F(HiveProcessesTest, WhatOneWritesAnotherReads) {
  for (HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
    Key const key(root);
    EXPECT_EQ(key.Get("v"), "!2");
    Child writer([&](Child::Pipe &pipe) {
      Key const mine(root);
      for (std::string line = pipe.Hear(); !line.empty(); line = pipe.Hear()) {
        pipe.Say(std::to_string(line == "gone" ? RegDeleteValueA(mine.handle, "v")
                                               : mine.Set("v", line)));
      }
      return 0;
    });
    for (std::string const text : {"1", "2", "gone", "3"}) {
      writer.pipe().Say(text);
      ASSERT_EQ(writer.pipe().Hear(), "0");
      for (char const *from : {"the hive", "the cache"})
        EXPECT_EQ(key.Get("v"), text == "gone" ? "!2" : text) << from;
      EXPECT_EQ(key.ValueNames().size(), text == "gone" ? 0u : 1u);
    }
  }
}

TEST_F(HiveProcessesTest, SixtyFourStartAtOnceOnAnEmptyHome) {
  for (int i = 0; i < 64; i++) {
    children_.emplace_back([i](Child::Pipe &pipe) {
      pipe.Hear();
      for (HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        Key const key(root, "Shared");
        std::string const name = "n" + std::to_string(i);
        if (key.opened != 0) return 1;
        if (key.Set(name, name) != 0) return 2;
        if (key.Get(name) != name) return 3;
        // The same new value is refused to none of them.
        for (int same = 0; same < 10; same++)
          if (key.Set("s" + std::to_string(same), "x") != 0) return 4;
      }
      LeaveHives();
      return 0;
    });
  }
  for (Child &child : children_) child.pipe().Say("go");
  for (Child &child : children_) EXPECT_EQ(child.Wait(), 0);
  EXPECT_EQ(Key(HKEY_CURRENT_USER, "Shared").ValueNames().size(), 74u);
  EXPECT_EQ(Key(HKEY_LOCAL_MACHINE, "Shared").ValueNames().size(), 74u);
  CheckIntegrity();
}

// It stands still between the making of the file and its filling, until the other has waited in
// vain for the lock and looks for something to copy.
TEST_F(HiveProcessesTest, AReaderWaitsForWhoIsStillMakingTheHive) {
  setenv("TMPDIR", home_.path().c_str(), 1);
  Child maker([this](Child::Pipe &pipe) {
    int const watch = inotify_init1(IN_CLOEXEC);
    Generation words;
    bool const made = words.Attach(home_.UserSync()) == Failure::none && words.Lock(1000) &&
                      MakeHiveFile(home_.UserHive(), 0600) == Failure::none &&
                      inotify_add_watch(watch, home_.path().c_str(), IN_CREATE) != -1;
    pipe.Say(made ? "made" : "not made");
    char event[4096];
    bool const looked = read(watch, event, sizeof event) > 0;
    words.Unlock();
    return looked ? 0 : 1;
  });
  ASSERT_EQ(maker.pipe().Hear(), "made");
  HKEY key = 0;
  EXPECT_EQ(RegOpenKeyA(HKEY_CURRENT_USER, "Absent", &key), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(maker.Wait(), 0);
  EXPECT_EQ(Key(HKEY_CURRENT_USER, "Made").opened, 0);
  unsetenv("TMPDIR");
}

TEST_F(HiveProcessesTest, AKilledWriterLosesNothingThatItWasToldIsKept) {
  Key const key(HKEY_CURRENT_USER);
  std::mt19937 random(41);
  int told = 0;
  for (int round = 0; round < 60; round++) {
    Child writer([told](Child::Pipe &pipe) {
      Key const mine(HKEY_CURRENT_USER);
      for (int i = told + 1;; i++) {
        HiveTransaction pair(HKEY_CURRENT_USER);
        bool const two = i % 3 == 0 && pair.Begin() == 0;
        int32_t result = mine.Set("a", std::to_string(i));
        if (two) result = mine.Set("b", std::to_string(i)) | pair.Commit();
        if (result != 0) return 1;
        pipe.Say(std::to_string(i));
      }
    });
    std::string const first = writer.pipe().Hear();
    ASSERT_NE(first, "");
    told = std::stoi(first);
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 4000));
    writer.Signal(SIGKILL);
    for (std::string line; !(line = writer.pipe().Hear()).empty();) told = std::stoi(line);
    EXPECT_EQ(writer.Wait(), -SIGKILL);
    int const a = std::stoi(key.Get("a"));
    EXPECT_TRUE(a == told || a == told + 1) << a << " after " << told;
    if (int const lastThird = a / 3 * 3; lastThird > told) {
      EXPECT_EQ(key.Get("b"), std::to_string(lastThird)) << "both values of a transaction or none";
    }
    told = a;
  }
  CheckIntegrity();
}

TEST_F(HiveProcessesTest, AStoppedWriterCostsTheWaitAndReadsGoOn) {
  Key const key(HKEY_CURRENT_USER);
  for (char const *name : {"cached", "uncached"}) key.Set(name, "1");
  EXPECT_EQ(key.Get("cached"), "1");
  Child writer([](Child::Pipe &pipe) {
    Key const mine(HKEY_CURRENT_USER);
    HiveTransaction transaction(HKEY_CURRENT_USER);
    if (transaction.Begin() != 0) return 1;
    mine.Set("cached", "2");
    pipe.Say("in the middle");
    raise(SIGSTOP);
    return transaction.Commit();
  });
  ASSERT_EQ(writer.pipe().Hear(), "in the middle");
  EXPECT_TRUE(HoldsInChild([] {
    auto const opening = Clock::now();
    Key const mine(HKEY_CURRENT_USER);
    bool const read = mine.GetAll({"cached", "uncached"}) == "1 1";
    return read && Clock::now() - opening < std::chrono::seconds(2);
  })) << "who only reads hardly waits";
  ZOLTSetLockWait(1000);
  auto const start = Clock::now();
  EXPECT_EQ(key.GetAll({"cached", "uncached"}), "1 1");
  EXPECT_EQ(key.Set("mine", "x"), ERROR_LOCK_VIOLATION);
  EXPECT_EQ(LastFailure(), 2);
  for (int i = 0; i < 20; i++) key.Set("mine", "x");
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(10)) << "not a wait for each";
  ZOLTSetLockWait(60000);
  writer.Signal(SIGCONT);
  EXPECT_EQ(writer.Wait(), 0);
  EXPECT_EQ(key.Set("mine", "x"), ERROR_SUCCESS);
  EXPECT_EQ(key.Get("cached"), "2");
}

TEST_F(HiveProcessesTest, AStoppedAdministratorCostsTheWaitOnceAndNotForEachKey) {
  { Key const key(HKEY_LOCAL_MACHINE); }
  LeaveHives();
  Child administrator([&](Child::Pipe &pipe) {
    RawHive raw(home_.MachineHive());
    raw.Run("PRAGMA locking_mode=EXCLUSIVE; BEGIN EXCLUSIVE");
    pipe.Hold();
    return 0;
  });
  ASSERT_EQ(administrator.pipe().Hear(), "held");
  ZOLTSetLockWait(1000);
  auto const start = Clock::now();
  for (int i = 0; i < 100; i++) {
    EXPECT_EQ(Key(HKEY_LOCAL_MACHINE, "K" + std::to_string(i)).opened, ERROR_LOCK_VIOLATION);
    EXPECT_EQ(LastFailure(), 2);
  }
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(20));
  administrator.pipe().Say("go");
  EXPECT_EQ(administrator.Wait(), 0);
  EXPECT_EQ(Key(HKEY_LOCAL_MACHINE).Set("v", "1"), ERROR_SUCCESS);
}

TEST_F(HiveProcessesTest, AReaderInTheMiddleOfACommitKeepsNothing) {
  Key const key(HKEY_CURRENT_USER);
  key.Set("v", "old");
  EXPECT_EQ(key.Get("v"), "old");
  LeaveHives();
  int64_t const id =
      std::stoll(RawHive(home_.UserHive()).Run("SELECT id FROM key WHERE name='Test'"));
  for (bool all : {false, true}) {
    key.Set("v", "old");
    EXPECT_EQ(key.Get("v"), "old");
    Child writer([&](Child::Pipe &pipe) {
      Generation words;
      pipe.Hear();
      if (words.Attach(home_.UserSync()) != Failure::none || !words.Lock(1000)) return 1;
      std::array<uint16_t, 1> const changed = {static_cast<uint16_t>(ValueWord(id, "v"))};
      words.BeginChange(changed, all);
      pipe.Say("odd");
      pipe.Hear();
      RawHive(home_.UserHive()).Run("UPDATE value SET data=x'6E657700' WHERE name='v'");
      pipe.Say("committed");
      pipe.Hear();
      return 0;
    });
    // The fork closed the hive; with the mutex taken it would be opened as a copy, which keeps
    // nothing in any case.
    EXPECT_EQ(key.Get("opens it"), "!2");
    writer.pipe().Say("go");
    ASSERT_EQ(writer.pipe().Hear(), "odd");
    ZOLTSetLockWait(20);
    EXPECT_EQ(key.Get("v"), "old") << "not committed yet";
    writer.pipe().Say("");
    ASSERT_EQ(writer.pipe().Hear(), "committed");
    EXPECT_EQ(key.Get("v"), "new");
    ZOLTSetLockWait(1000);
    auto const start = Clock::now();
    for (int i = 0; i < 6; i++) EXPECT_EQ(key.Get("miss" + std::to_string(i)), "!2");
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(4)) << "not a wait for each";
    writer.Signal(SIGKILL);
    EXPECT_EQ(writer.Wait(), -SIGKILL);
    ZOLTSetLockWait(60000);
    EXPECT_EQ(key.Get("v"), "new");
    EXPECT_EQ(key.Set("v", "newer"), ERROR_SUCCESS);
    EXPECT_EQ(key.Get("v"), "newer");
  }
}

TEST_F(HiveProcessesTest, AStormDamagesNothingAndNobodyReadsBackwards) {
  constexpr int kWriters = 4;
  constexpr int kNames = 20;
  // A value vouches for itself.
  auto const value = [](int number) {
    return std::to_string(number) + ":" + std::to_string(number) +
           std::string(static_cast<size_t>(number) % 200, 'x');
  };
  auto const name = [](int writer, int number) {
    return "w" + std::to_string(writer) + "n" + std::to_string(number % kNames);
  };
  Key const key(HKEY_CURRENT_USER);
  for (bool const checkpointsAtEveryCommit : {false, true}) {
    for (int i = 0; i < kWriters * kNames; i++)
      RegDeleteValueA(key.handle, name(i / kNames, i).c_str());
    if (checkpointsAtEveryCommit)
      for (off_t const word : {44, 48}) Poke(word, 1);
    for (int w = 0; w < kWriters; w++) {
      children_.emplace_back([=](Child::Pipe &pipe) {
        Key const mine(HKEY_CURRENT_USER);
        auto const end = Clock::now() + TrialLength();
        int i = 1;
        for (; Clock::now() < end; i++) {
          if (mine.Set(name(w, i), value(i)) != 0) return 1;
          if (i % 7 == 0) mine.Get("miss" + std::to_string(i % 13));
          if (i % 50 == 0) RegDeleteValueA(mine.handle, "x");
          if (i % 100 == 0) LeaveHives();
        }
        pipe.Say(std::to_string(i - 1));
        return 0;
      });
    }
    std::atomic<bool> stop{false};
    auto watch = [&] {
      std::array<int, kWriters * kNames> seen{};
      while (!stop) {
        for (int n = 0; n < kWriters * kNames; n++) {
          std::string const text = key.Get(name(n / kNames, n));
          if (text == "!2") continue;
          int const number = std::atoi(text.c_str());
          ASSERT_EQ(text, value(number));
          ASSERT_GE(number, std::exchange(seen[static_cast<size_t>(n)], number));
        }
      }
    };
    std::thread first(watch);
    std::thread second(watch);
    for (int w = 0; w < kWriters; w++) {
      int const last = std::atoi(children_[static_cast<size_t>(w)].pipe().Hear().c_str());
      EXPECT_EQ(children_[static_cast<size_t>(w)].Wait(), 0);
      for (int i = std::max(1, last - kNames + 1); i <= last; i++)
        EXPECT_EQ(key.Get(name(w, i)), value(i));
    }
    stop = true;
    first.join();
    second.join();
    children_.clear();
    CheckIntegrity();
  }
}

TEST_F(HiveProcessesTest, ForkLeavesParentAndChildSoundWhileThreadsWork) {
  Key const key(HKEY_CURRENT_USER);
  std::atomic<bool> stop{false};
  std::atomic<int> written{0};
  std::thread worker([&] {
    for (int i = 1; !stop; i++) {
      if (key.Set("worker", std::to_string(i)) != 0) break;
      key.Get("miss" + std::to_string(i % 200));
      written = i;
    }
  });
  for (int i = 0; i < 40; i++) {
    std::string const name = "child" + std::to_string(i);
    Child child([&](Child::Pipe &) {
      bool const good =
          key.Set(name, name) == 0 && key.Get(name) == name && !key.ValueNames().empty();
      LeaveHives();
      return good ? 0 : 1;
    });
    EXPECT_EQ(key.Set("parent", std::to_string(i)), ERROR_SUCCESS);
    EXPECT_EQ(child.Wait(), 0);
    EXPECT_EQ(key.Get(name), name);
  }
  stop = true;
  worker.join();
  EXPECT_EQ(key.Get("worker"), std::to_string(written));
  CheckIntegrity();
}

TEST_F(HiveProcessesTest, AForkInsideATransactionLosesItInBoth) {
  Key const key(HKEY_CURRENT_USER);
  key.Set("v", "before");
  HiveTransaction transaction(HKEY_CURRENT_USER);
  ASSERT_EQ(transaction.Begin(), ERROR_SUCCESS);
  key.Set("v", "inside");
  EXPECT_TRUE(HoldsInChild([&] { return transaction.Commit() != 0 && key.Get("v") == "before"; }));
  HiveTransaction next(HKEY_CURRENT_USER);
  ASSERT_EQ(next.Begin(), ERROR_SUCCESS);
  key.Set("w", "next");
  EXPECT_NE(transaction.Commit(), ERROR_SUCCESS) << "the next one is not its to commit";
  EXPECT_EQ(next.Commit(), ERROR_SUCCESS);
  EXPECT_EQ(key.Get("v"), "before");
  EXPECT_EQ(key.Set("v", "after"), ERROR_SUCCESS);
}

TEST_F(HiveProcessesTest, AChildWithoutDescriptorsLeavesItsParentsLockAlone) {
  Key const key(HKEY_CURRENT_USER);
  key.Set("v", "1");
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  rlimit const none{0, limit.rlim_max};
  setrlimit(RLIMIT_NOFILE, &none);
  pid_t const child = fork();
  if (child == 0) {
    LeaveHives();
    _exit(0);
  }
  setrlimit(RLIMIT_NOFILE, &limit);
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(HoldsInChild([this] {
    Generation words;
    return words.Attach(home_.UserSync()) == Failure::none && !words.TakeAlone();
  }));
  EXPECT_EQ(key.Set("v", "2"), ERROR_SUCCESS);
}

TEST_F(HiveProcessesTest, AnotherIdNamespaceMayOnlyRead) {
  Key(HKEY_CURRENT_USER).Set("v", "1");
  // Held by a process of ours, so that the words are not made anew.
  Child holder([](Child::Pipe &pipe) {
    Key const key(HKEY_CURRENT_USER);
    pipe.Hold();
    return 0;
  });
  ASSERT_EQ(holder.pipe().Hear(), "held");
  LeaveHives();
  Poke(32, 12345);
  Key const key(HKEY_CURRENT_USER);
  EXPECT_EQ(key.Get("v"), "1");
  EXPECT_EQ(key.Set("v", "2"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(LastFailure(), 1);
}

TEST_F(HiveProcessesTest, AResetThatNeverEndsIsNotWaitedForForEver) {
  { Key const key(HKEY_CURRENT_USER); }
  LeaveHives();
  Child holder([&](Child::Pipe &pipe) {
    int const file = open(home_.UserSync().c_str(), O_RDWR | O_CLOEXEC);
    struct flock lock {};
    lock.l_type = F_WRLCK;
    if (fcntl(file, F_OFD_SETLK, &lock) == 0) pipe.Hold();
    return 0;
  });
  ASSERT_EQ(holder.pipe().Hear(), "held");
  ZOLTSetLockWait(50);
  Key const key(HKEY_CURRENT_USER);
  EXPECT_EQ(key.opened, ERROR_LOCK_VIOLATION);
  std::string subject;
  EXPECT_EQ(LastFailure(&subject), 2);
  EXPECT_EQ(subject, home_.UserSync());
}

}  // namespace
}  // namespace zolt::testing
