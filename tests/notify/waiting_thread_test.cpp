#include "zolt41/notify/waiting_thread.h"

#include <latch>

#include "tests/notify/listener.h"
#include "zolt41/notify/channel_objects.h"

namespace zolt::testing {
namespace {

// For what comes soon, and must not hang.
template <typename Done>
bool Comes(Done done) {
  auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!done() && std::chrono::steady_clock::now() < end) std::this_thread::yield();
  return done();
}

class WaitingThreadTest : public ChangeTest {
 protected:
  // A thread with a subscriber that waits for messages for as long as this lives.
  class Waiter {
   public:
    Waiter() {
      thread_ = std::thread([this] {
        Listener *const listener = Listen();
        listener->then = [this](Listener *) {
          heard++;
          if (callback) callback();
        };
        id = GetCurrentThreadId();
        ready_.count_down();
        MSG message;
        while (GetMessageA(&message, 0, 0, 0) == 1) others += message.message == WM_USER;
        Drop(listener);
      });
      ready_.wait();
    }
    ~Waiter() {
      PostThreadMessageA(id, WM_QUIT, 0, 0);
      thread_.join();
    }
    Waiter(Waiter const &) = delete;
    Waiter &operator=(Waiter const &) = delete;

    uint32_t id = 0;
    std::atomic<int> heard = 0;
    std::atomic<int> others = 0;
    std::function<void()> callback;  // not to be changed while it may be told something

   private:
    std::latch ready_{1};
    std::thread thread_;
  };

  static ProcessSlot *OwnSlot() {
    ProcessSlot *slot = Channel()->slots;
    while (slot->process != static_cast<uint32_t>(getpid())) slot++;
    return slot;
  }

  uint32_t const process_ = static_cast<uint32_t>(getpid());
};

TEST_F(WaitingThreadTest, HearsWithoutTheOther) {
  Waiter const waiter;
  ASSERT_TRUE(Comes([] { return OwnSlot()->waiting == static_cast<uint32_t>(getpid()); }));
  // On a machine that is busy the other thread may be called upon now and then.
  bool without = false;
  for (int i = 1; i <= 100 && !without; i++) {
    uint32_t const pulses = PulseCount(NotifyEvent());
    Change();
    ASSERT_TRUE(Comes([&] { return waiter.heard == i; }));
    without = PulseCount(NotifyEvent()) == pulses;
  }
  EXPECT_TRUE(without);
}

TEST_F(WaitingThreadTest, OneInItsCallbackOrShownInVainKeepsNobodyWaiting) {
  Listener *const own = Listen();
  {
    Waiter waiter;
    std::latch entered(1);
    std::latch leave(1);
    waiter.callback = [&] {
      entered.count_down();
      leave.wait();
      waiter.callback = nullptr;
    };
    Change();
    entered.wait();
    Change();
    EXPECT_EQ(OwnSlot()->lagging, 0U);
    EXPECT_EQ(ZOLTDeliver(), 2) << "the other thread has heard";
    leave.count_down();
    EXPECT_TRUE(Comes([&] { return waiter.heard == 2; }));
  }
  for (uint32_t const shown : {process_, process_ | kLooksOut}) {
    // On a machine that is busy the answer may come too late now and then.
    bool inTime = false;
    for (int i = 0; i < 100 && !inTime; i++) {
      OwnSlot()->waiting = shown;
      Change();
      inTime = OwnSlot()->lagging == 0;
      size_t const heard = own->heard.size();
      ASSERT_TRUE(Comes([&] { return ZOLTDeliver(), own->heard.size() == heard + 1; }));
    }
    EXPECT_TRUE(inTime);
  }
  Drop(own);
}

TEST_F(WaitingThreadTest, LeavesTheSlotOfAnotherProcessAlone) {
  Waiter const waiter;
  ASSERT_TRUE(Comes([&] { return OwnSlot()->waiting == process_; }));
  OwnSlot()->waiting = process_ + 1;
  for (int i = 1; i <= 2; i++) {
    PostThreadMessageA(waiter.id, WM_USER, 0, 0);
    ASSERT_TRUE(Comes([&] { return waiter.others == i; }));
    EXPECT_EQ(OwnSlot()->waiting, process_ + 1);
  }
  Change();
  EXPECT_TRUE(Comes([&] { return waiter.heard == 1; })) << "by the other thread";
}

TEST_F(WaitingThreadTest, AnAlertWithoutAnAnnouncementDoesNoHarm) {
  Waiter const waiter;
  ASSERT_TRUE(Comes([&] { return OwnSlot()->waiting == process_; }));
  for (int i = 1; i <= 100; i++) {
    AlertWaitingThreads(Channel());
    if (i % 10 != 0) continue;
    Change();
    EXPECT_TRUE(Comes([&] { return waiter.heard == i / 10; }));
  }
}

}  // namespace
}  // namespace zolt::testing
