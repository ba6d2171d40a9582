// The channel between processes: who hears what, and what is left when one of them dies.
#include <sys/stat.h>

#include <csignal>
#include <deque>
#include <fstream>
#include <latch>
#include <map>

#include "tests/notify/listener.h"
#include "tests/support/child.h"
#include "tests/support/temp_home.h"
#include "zolt41/notify/channel_guard.h"
#include "zolt41/platform/kernel/shared_segment.h"
#include "zolt41/zolt41.h"

namespace zolt::testing {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr uint32_t kAudio = 0x41554449;

// How those who listen wait: for a descriptor, or in GetMessageA.
bool (*deliverUntil)(std::function<bool()> const &) = nullptr;

class Session {
 public:
  Session() {
    InitZOLT();
    InitPrefs(nullptr);
  }
  ~Session() { DisposeZOLT(); }
};

Commit Write(std::string const &name, std::string const &value) {
  Transaction transaction(PrefLevelUser);
  transaction.SetStr(kAudio, name.c_str(), value.c_str());
  return transaction.Write();
}

// Where many write at once, one may wait for longer than it does.
bool WriteInTheEnd(std::string const &name, std::string const &value) {
  Commit result = Commit::timed_out;
  while (result == Commit::timed_out || result == Commit::locked) result = Write(name, value);
  return result == Commit::done;
}

// Hears all; says so; ends when told a change of the value "end".
int Watch(Child::Pipe &pipe) {
  Session const session;
  Listener *const all = ListenToAll();
  bool ended = false;
  all->then = [&](Listener *self) {
    if (self->changedRecords.GetSize() == 0) return pipe.Say("gap");
    ended = std::string(self->Record(0).name) == "end";
    pipe.Say(std::string(self->Record(0).name) + "=" + self->Record(0).newValue);
  };
  pipe.Say("watching");
  bool const heard = deliverUntil([&] { return ended; });
  Drop(all);
  return heard ? 0 : 1;
}

class ChannelProcessesTest : public ::testing::TestWithParam<bool> {
 protected:
  ChannelProcessesTest() {
    deliverUntil = GetParam() ? GetMessagesUntil : DeliverUntil;
    // The first start makes the hive, and the watchers find it there.
    HoldsInChild([] { return Session(), true; });
  }

  ~ChannelProcessesTest() override { DetachSegment(); }

  Child &AddWatcher(std::function<int(Child::Pipe &)> const &watch = Watch) {
    Child &watcher = children_.emplace_back(watch);
    EXPECT_EQ(watcher.pipe().Hear(), "watching");
    return watcher;
  }
  void ExpectAllEndWell() {
    for (Child &child : children_) EXPECT_EQ(child.Wait(), 0);
  }

  TempHome home_;
  std::deque<Child> children_;
};

TEST_P(ChannelProcessesTest, AStoppedOrKilledWatcherCostsAtMostOneTimeOut) {
  Child &first = AddWatcher();
  Child &stopped = AddWatcher();
  Child &killed = AddWatcher();
  stopped.Signal(SIGSTOP);
  Session const session;
  auto const start = steady_clock::now();
  for (int i = 0; i < 100; i++) {
    if (i == 50) killed.Signal(SIGKILL);
    ASSERT_EQ(Write("n", std::to_string(i)), Commit::done);
  }
  // 100 time-outs would be five seconds.
  EXPECT_LT(steady_clock::now() - start, milliseconds(2000));
  stopped.Signal(SIGCONT);
  ASSERT_EQ(Write("end", "x"), Commit::done);
  for (Child *const watcher : {&first, &stopped}) {
    for (int i = 0; i < 100; i++) EXPECT_EQ(watcher->pipe().Hear(), "n=" + std::to_string(i));
    EXPECT_EQ(watcher->pipe().Hear(), "end=x");
    EXPECT_EQ(watcher->Wait(), 0);
  }
  EXPECT_EQ(killed.Wait(), -SIGKILL);
}

TEST_P(ChannelProcessesTest, AWriterKilledAtAnyStepStopsNobody) {
  Child &watcher = AddWatcher();
  for (int round = 0; round < 40; round++) {
    Child writer([round](Child::Pipe &pipe) {
      Session const session;
      pipe.Say("writing");
      for (int i = 0;; i++) {
        if (round % 2 == 0) {
          if (Write("w", std::to_string(i)) != Commit::done) return 1;
        } else {
          BeginPrefsModify(static_cast<int32_t>(kAudio), 0, 0);
          GetUserPrefs()->SetStr(kAudio, "w", std::to_string(i).c_str());
          EndPrefsModify();
        }
      }
    });
    ASSERT_EQ(writer.pipe().Hear(), "writing");
    usleep(static_cast<useconds_t>(round * 1777 % 60000));
    writer.Signal(SIGKILL);
    writer.Wait();
  }
  Session const session;
  EXPECT_EQ(Write("end", "x"), Commit::done);
  std::string line;
  while (!(line = watcher.pipe().Hear()).empty() && line != "end=x")
    EXPECT_TRUE(line == "gap" || line.starts_with("w=")) << line;
  EXPECT_EQ(watcher.Wait(), 0);
}

int StopBeforeAllIsTold(bool killed) {
  ChannelGuard const channel;
  Announcing const announcing;
  GetUserPrefs()->SetStr(kAudio, "n", "kept, and told to nobody");
  if (killed) raise(SIGKILL);
  throw std::bad_alloc();
}

TEST_P(ChannelProcessesTest, WhatAWriterThatDiedOrRanOutOfMemoryCouldNotTellIsAGap) {
  Child &watcher = AddWatcher();
  Child writer([](Child::Pipe &) {
    Session const session;
    return StopBeforeAllIsTold(true);
  });
  EXPECT_EQ(writer.Wait(), -SIGKILL);
  Session const session;
  EXPECT_EQ(Write("n", "1"), Commit::done);
  EXPECT_EQ(watcher.pipe().Hear(), "gap");
  EXPECT_EQ(watcher.pipe().Hear(), "n=1");
  EXPECT_THROW(StopBeforeAllIsTold(false), std::bad_alloc);
  EXPECT_EQ(Write("end", "x"), Commit::done);
  EXPECT_EQ(watcher.pipe().Hear(), "gap");
  EXPECT_EQ(watcher.pipe().Hear(), "end=x");
  EXPECT_EQ(watcher.Wait(), 0);
}

// Ends the process while another thread writes "w" again and again.
int EndWhileWriting(Child::Pipe &) {
  [[maybe_unused]] static auto *const session = new Session();
  static std::atomic<int> written;
  std::thread([] {
    for (int i = 1;; i++) written += Write("w", std::to_string(i)) == Commit::done;
  }).detach();
  while (written < 5) std::this_thread::yield();
  std::exit(0);
}

TEST_P(ChannelProcessesTest, AProcessThatEndsWhileItWritesLosesNothing) {
  Child &watcher = AddWatcher();
  for (int round = 0; round < 20; round++) {
    ASSERT_EQ(Child(EndWhileWriting).Wait(), 0);
    Session const session;
    char stored[32];
    GetUserPrefs()->ReadStr(kAudio, "w", stored, "-", 0);
    ASSERT_EQ(Write("mark", std::to_string(round)), Commit::done);
    std::string last;
    bool gap = false;
    std::string line;
    while (!(line = watcher.pipe().Hear()).empty() && !line.starts_with("mark=")) {
      gap = gap || line == "gap";
      if (line.starts_with("w=")) last = line;
    }
    EXPECT_TRUE(gap || last == std::string("w=") + stored) << last << ", stored " << stored;
  }
}

bool HearsWithoutSegment() {
  Session const session;
  Listener all;
  all.AddNotificationAll();
  std::string const path = SegmentPath();
  AddNotificationObject(&all);
  if (Write("n", "unheard") != Commit::done || ZOLTDeliver() != 0) return false;
  std::filesystem::remove(path);
  // Else it is asked for again after ten seconds only.
  DetachSegment();
  if (Write("n", "heard") != Commit::done) return false;
  deliverUntil([&] { return all.heard.size() == 2; });
  RemoveNotificationObject(&all);
  return all.heard ==
         std::vector<std::string>{"modified FFFFFFFF 0 0", "modified 41554449 4 0 n=unheard>heard"};
}

TEST_P(ChannelProcessesTest, ASubscriberThatComesTooEarlyIsToldAGapAndThenHears) {
  std::ofstream(SegmentPath()) << "open to others";
  chmod(SegmentPath().c_str(), 0666);
  EXPECT_TRUE(HoldsInChild(HearsWithoutSegment));
}

TEST_P(ChannelProcessesTest, TheChannelFollowsToAnotherHomeWithTheHives) {
  std::string const first = SegmentPath();
  { Session const session; }
  ASSERT_TRUE(std::filesystem::exists(first));
  TempHome const other;
  std::string const second = SegmentPath();
  HKEY key = 0;
  {
    Session const session;
    EXPECT_TRUE(std::filesystem::exists(second));
    EXPECT_FALSE(std::filesystem::exists(first)) << "nobody uses it any more";
    ASSERT_EQ(RegOpenKeyA(HKEY_CURRENT_USER, "Software", &key), ERROR_SUCCESS);
  }
  setenv("ZOLT_HOME", home_.path().c_str(), 1);
  {
    Session const session;
    EXPECT_EQ(SegmentPathInUse(), second) << "the open key keeps the hives";
  }
  RegCloseKey(key);
  Session const session;
  EXPECT_EQ(SegmentPathInUse(), first);
  EXPECT_FALSE(std::filesystem::exists(second));
}

TEST_P(ChannelProcessesTest, AStoppedHolderOfTheChannelLetsAWriterGoAfterASecond) {
  Child holder([](Child::Pipe &pipe) {
    Session const session;
    // Stops within the pause of End, which holds the mutex.
    BeginPrefsModify(static_cast<int32_t>(kAudio), 0, 0);
    pipe.Say("begun");
    pipe.Hear();
    for (int i = 0; i < 20; i++) EndPrefsModify();
    return 0;
  });
  ASSERT_EQ(holder.pipe().Hear(), "begun");
  ZOLTState state;
  Session const session;
  holder.pipe().Say("end");
  auto const deadline = steady_clock::now() + milliseconds(10000);
  auto const held = [&] {
    ZOLTInspect(&state);
    return state.channel.holder == static_cast<uint32_t>(holder.id());
  };
  // It may let go of the mutex between the look and the signal.
  for (;;) {
    while (!held() && steady_clock::now() < deadline) {
    }
    holder.Signal(SIGSTOP);
    if (held() || steady_clock::now() >= deadline) break;
    holder.Signal(SIGCONT);
  }
  ASSERT_EQ(state.channel.holder, static_cast<uint32_t>(holder.id()));
  EXPECT_EQ(Write("n", "1"), Commit::timed_out);
  ZOLTSetLockWait(0);
  auto const start = steady_clock::now();
  for (int i = 0; i < 10; i++) EXPECT_EQ(Write("n", "1"), Commit::timed_out);
  EXPECT_LT(steady_clock::now() - start, milliseconds(5000)) << "not a second for each";
  ZOLTSetLockWait(5000);
  EXPECT_EQ(GetUserPrefs()->Exists(kAudio, "n"), 0);
  holder.Signal(SIGCONT);
  EXPECT_EQ(holder.Wait(), 0);
  EXPECT_EQ(Write("n", "1"), Commit::done);
}

// Counts up, and looks that each writer's numbers come without a hole, unless a gap was told.
int WatchStorm(Child::Pipe &pipe, int writers) {
  Session const session;
  Listener *const all = ListenToAll();
  std::map<std::string, long> last;
  std::map<std::string, bool> mayJump;
  int ended = 0;
  int holes = 0;
  all->then = [&](Listener *self) {
    self->heard.clear();
    if (self->changedId == -1) {
      for (auto &[name, may] : mayJump) may = true;
      return;
    }
    std::string const name = self->Record(0).name;
    long const number = std::atol(self->Record(0).newValue);
    bool const isEnd = name.ends_with("end");
    ended += isEnd;
    if (isEnd) return;
    holes += number != last[name] + 1 && !mayJump[name];
    mayJump[name] = false;
    last[name] = number;
  };
  pipe.Say("watching");
  bool const heard = deliverUntil([&] { return ended >= writers; });
  Drop(all);
  return heard ? holes : 99;
}

bool WriteStorm(int number, milliseconds length) {
  Session const session;
  std::string const name = "W" + std::to_string(number);
  auto const end = steady_clock::now() + length;
  for (long i = 1; steady_clock::now() < end; i++)
    if (!WriteInTheEnd(name, std::to_string(i))) return false;
  return WriteInTheEnd(name + "end", "x");
}

TEST_P(ChannelProcessesTest, AStormLosesNothing) {
  bool const slow = std::getenv("ZOLT_SLOW") != nullptr;
  milliseconds const length(slow ? 60000 : 1500);
  constexpr int kWriters = 4;
  for (int i = 0; i < (slow ? 32 : 8); i++)
    AddWatcher([](Child::Pipe &pipe) { return WatchStorm(pipe, kWriters); });
  for (int i = 0; i < kWriters; i++)
    children_.emplace_back([=](Child::Pipe &) { return WriteStorm(i, length) ? 0 : 1; });
  children_[0].Signal(SIGSTOP);
  usleep(100000);
  children_[0].Signal(SIGCONT);
  ExpectAllEndWell();
}

TEST_P(ChannelProcessesTest, WhoFindsNoPlaceHearsAllTheSame) {
  Session const session;
  std::latch taken(kSegmentPlaces);
  std::latch leave(1);
  std::vector<std::thread> holders;
  for (uint32_t i = 0; i < kSegmentPlaces; i++) {
    holders.emplace_back([&] {
      uint32_t const place = TakeSegmentPlace();
      taken.count_down();
      leave.wait();
      LeaveSegmentPlace(place);
    });
  }
  taken.wait();
  EXPECT_EQ(TakeSegmentPlace(), kSegmentPlaces);
  Child &watcher = AddWatcher();
  EXPECT_EQ(Write("n", "1"), Commit::done);
  EXPECT_EQ(watcher.pipe().Hear(), "n=1");
  EXPECT_EQ(Write("end", "x"), Commit::done);
  leave.count_down();
  for (std::thread &holder : holders) holder.join();
}

TEST_P(ChannelProcessesTest, SixtyFourProcessesComeForkAndGoAtOnce) {
  Child &watcher = AddWatcher();
  std::deque<Child> children;
  for (int i = 0; i < 64; i++) {
    children.emplace_back([i](Child::Pipe &) {
      Session const session;
      Listener *const own = ListenToAll();
      Child grandchild([i](auto &) { return WriteInTheEnd("f", std::to_string(i)) ? 0 : 1; });
      bool const wrote = WriteInTheEnd("p", std::to_string(i));
      int const code = grandchild.Wait();
      Drop(own);
      return wrote && code == 0 ? 0 : 1;
    });
  }
  for (Child &child : children) EXPECT_EQ(child.Wait(), 0);
  Session const session;
  EXPECT_EQ(Write("end", "x"), Commit::done);
  int heard = 0;
  while (watcher.pipe().Hear() != "end=x") heard++;
  EXPECT_EQ(heard, 128);
}

INSTANTIATE_TEST_SUITE_P(Waiting, ChannelProcessesTest, ::testing::Bool(), [](auto const &gets) {
  return gets.param ? "InGetMessage" : "ForADescriptor";
});

}  // namespace
}  // namespace zolt::testing
