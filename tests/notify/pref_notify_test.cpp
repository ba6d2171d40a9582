#include "zolt41/notify/pref_notify.h"

#include "tests/notify/listener.h"
#include "tests/support/child.h"
#include "zolt41/notify/subscriber_list.h"

namespace zolt::testing {
namespace {

class Mortal : public Listener {
 public:
  explicit Mortal(int *deaths) : deaths_(deaths) {}
  ~Mortal() override { (*deaths_)++; }

 private:
  int *deaths_;
};

class PrefNotifyTest : public ChangeTest {
 protected:
  Mortal *ListenMortally() { return Listen(new Mortal(&deaths_)); }

  int deaths_ = 0;
};

TEST_F(PrefNotifyTest, ReleaseWaitsForWhatIsOnItsWay) {
  auto *const mortal = ListenMortally();
  Change();
  Change();
  Drop(mortal);
  EXPECT_EQ(deaths_, 0);
  EXPECT_EQ(ZOLTDeliver(), 2);
  EXPECT_EQ(deaths_, 1);
  auto *const idle = ListenMortally();
  Change();
  ZOLTDeliver();
  EXPECT_EQ(idle->heard.size(), 1U) << "the hook that went with the last one is there again";
  Drop(idle);
  EXPECT_EQ(deaths_, 2);
}

TEST_F(PrefNotifyTest, OneThatIsThereTwiceIsRemovedWhereItWasFirst) {
  std::string told;
  auto *const first = Listen();
  auto *const second = Listen();
  first->then = [&](Listener *) { told += "1"; };
  second->then = [&](Listener *) { told += "2"; };
  AddNotificationObject(first);
  RemoveNotificationObject(first);
  Change();
  ZOLTDeliver();
  EXPECT_EQ(told, "21");
  Drop(first);
  Drop(second);
}

TEST_F(PrefNotifyTest, ACallbackMayReleaseAddAndRemove) {
  auto *const victim = ListenMortally();
  auto *const killer = new Mortal(&deaths_);
  Listener *late = nullptr;
  killer->then = [&](Listener *self) {
    Drop(victim);
    late = Listen();
    Change();
    Drop(self);
  };
  victim->then = [](Listener *) { FAIL() << "released"; };
  RemoveNotificationObject(victim);
  Listen(killer);
  AddNotificationObject(victim);
  Change();
  // In the queue now: the killer's, the victim's; then those of the change in the callback, which
  // the killer itself is still told of.
  while (ZOLTDeliver() != 0) continue;
  EXPECT_EQ(deaths_, 2);
  ASSERT_NE(late, nullptr);
  EXPECT_EQ(late->heard.size(), 1U);
  Drop(late);
}

TEST_F(PrefNotifyTest, AThreadThatEndsLeavesNothingBehind) {
  Mortal *released = nullptr;
  Mortal *kept = nullptr;
  std::thread([&] {
    released = ListenMortally();
    kept = ListenMortally();
    Change();
    Drop(released);
    EXPECT_EQ(deaths_, 0);
  }).join();
  EXPECT_EQ(deaths_, 1) << "its message went with the thread";
  Change();  // Finds no queue.
  Drop(kept);
  EXPECT_EQ(deaths_, 2);
}

TEST_F(PrefNotifyTest, WhatWaitsFollowsASubscriberToAnotherThread) {
  auto *const mortal = ListenMortally();
  Change();
  Change();
  std::thread([&] {
    mortal->Init(0, 0);
    EXPECT_EQ(ZOLTDeliver(), 2);
    EXPECT_EQ(mortal->heard.size(), 2U);
    Change();
    Drop(mortal);
    EXPECT_EQ(ZOLTDeliver(), 1);
    EXPECT_EQ(deaths_, 1);
  }).join();
  EXPECT_EQ(ZOLTDeliver(), 2) << "they are for nobody any more";
}

TEST_F(PrefNotifyTest, StrangeMessagesAreNotFollowed) {
  Listener *const listener = Listen();
  uint32_t const self = GetCurrentThreadId();
  for (uintptr_t const who : {uintptr_t{0}, uintptr_t{1}, reinterpret_cast<uintptr_t>(&deaths_),
                              reinterpret_cast<uintptr_t>(listener)}) {
    PostThreadMessageA(self, kChangeMessage, who, who);
  }
  Change();
  ZOLTDeliver();
  EXPECT_EQ(listener->heard.size(), 1U);
  listener->AddNotificationKey(0, kAudioId, 0);
  Change();
  std::thread([listener] {
    Listener here;
    PostThreadMessageA(GetCurrentThreadId(), kChangeMessage, reinterpret_cast<uintptr_t>(listener),
                       0);
    EXPECT_EQ(ZOLTDeliver(), 1);
  }).join();
  EXPECT_EQ(listener->heard.size(), 1U) << "called back on another thread";
  EXPECT_EQ(ZOLTDeliver(), 2) << "one for each key";
  EXPECT_EQ(listener->heard.size(), 3U);
  // Deleted with a message on its way, and not even removed.
  Change();
  delete listener;
  EXPECT_EQ(ZOLTDeliver(), 2);
  Change();
}

TEST_F(PrefNotifyTest, AThreadThatNeverPumpsCostsBoundedMemoryAndIsToldOfTheGap) {
  Listener *const all = ListenToAll();
  NotificationInfo const record = {"n", "new", "old"};
  AnnouncementHead const head = {kAudioId, 0, 4, 0, 0};
  uint32_t lost = 0;
  {
    // 64 MiB are 29,127 records, and each change counts as one more.
    SubscriberList &list = SubscriberList::The();
    std::lock_guard const guard(list.lock());
    for (int i = 0; i < 14570; i++) lost += list.Deliver(head, &record, 1);
    list.DeliverGap();
  }
  EXPECT_EQ(lost, 6U);
  while (ZOLTDeliver() != 0) continue;
  ASSERT_EQ(all->heard.size(), 14565U) << "one gap for all that was lost";
  EXPECT_EQ(all->heard.back(), "modified FFFFFFFF 0 0");
  Drop(all);
}

TEST_F(PrefNotifyTest, AForkWaitsForATransactionThatAsksForSubscribers) {
  alarm(60);
  std::atomic<bool> begun = false;
  std::thread holder([&] {
    HiveTransaction hive(HKEY_CURRENT_USER);
    ASSERT_EQ(hive.Begin(), ERROR_SUCCESS);
    begun = true;
    Listener listener;
    auto const end = std::chrono::steady_clock::now() + std::chrono::milliseconds(100);
    while (std::chrono::steady_clock::now() < end) listener.SetTransactionType(0);
  });
  while (!begun) std::this_thread::yield();
  EXPECT_EQ(Child([](auto &) { return 0; }).Wait(), 0);
  holder.join();
}

TEST_F(PrefNotifyTest, AChildOfForkListensWithItsOwnObjects) {
  Listener *const listener = Listen();
  Change();
  EXPECT_TRUE(HoldsInChild([&] {
    if (ZOLTDeliver() != 0) return false;
    Drop(listener);
    Listener *const own = Listen();
    Change();
    bool const heard = DeliverUntil([&] { return !own->heard.empty(); });
    Drop(own);
    return heard;
  }));
  EXPECT_TRUE(DeliverUntil([&] { return listener->heard.size() == 2; }));
  Drop(listener);
}

}  // namespace
}  // namespace zolt::testing
