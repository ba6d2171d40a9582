#include "zolt41/notify/waiting_thread.h"

#include <sched.h>

#include <algorithm>
#include <chrono>
#include <climits>

#include "zolt41/notify/announcement_ring.h"
#include "zolt41/notify/channel_objects.h"
#include "zolt41/notify/notify_thread.h"
#include "zolt41/platform/kernel/futex.h"
#include "zolt41/platform/kernel/message_loop.h"
#include "zolt41/platform/kernel/thread.h"

namespace zolt {
namespace {

using std::chrono::steady_clock;

// For an announcement that an alert went ahead of: a write takes some ten microseconds.
constexpr auto kLookOut = std::chrono::microseconds(100);

// Where the system cannot sleep on two words the notification thread hears for all.
constinit std::atomic<bool> supported = true;

// What a thread shows in its process's slot. The slot may become another process's meanwhile, whose
// number is then left alone.
class Shown {
 public:
  explicit Shown(ProcessSlot *slot) : slot_(slot) {
    if (slot_ != nullptr) Show(ThisProcess());
  }
  ~Shown() {
    if (shown_ != 0) Show(0);
  }
  Shown(Shown const &) = delete;
  Shown &operator=(Shown const &) = delete;

  void LookOut() { Show(shown_ | kLooksOut); }
  bool any() const { return shown_ != 0; }

 private:
  void Show(uint32_t value) {
    if (slot_->waiting.compare_exchange_strong(shown_, value))
      shown_ = value;
    else
      shown_ = 0;
  }

  ProcessSlot *slot_;
  uint32_t shown_ = 0;
};

struct Message {
  std::atomic<uint32_t> *word;
  uint32_t expected;

  bool came() const { return word->load() != expected; }
};

void AwaitAnnouncement(ChannelArea const &channel, uint32_t last, Message const &message) {
  auto const end = steady_clock::now() + kLookOut;
  // The writer may need this very processor.
  while (LastAnnouncement(channel.ring) == last && !message.came() && steady_clock::now() < end)
    sched_yield();
}

void SleepUntilAlert(ChannelArea *channel, Shown *shown, Message const &message, uint32_t thread) {
  uint32_t const alerts = channel->alerts.load();
  uint32_t const last = LastAnnouncement(channel->ring);
  if (HearAll(thread) || message.came()) return;
  if (!SleepOnEither(message.word, message.expected, &channel->alerts, alerts)) {
    supported.store(false);
    return;
  }
  // A signal is none.
  if (message.came() || channel->alerts.load() == alerts) return;
  shown->LookOut();
  AwaitAnnouncement(*channel, last, message);
}

}  // namespace

void WaitForMessageOrNews(std::atomic<uint32_t> *word, uint32_t expected) {
  uint32_t const thread = GetCurrentThreadId();
  {
    Shown shown(supported.load(std::memory_order_relaxed) ? SlotToHearFor(thread) : nullptr);
    if (!shown.any()) return SleepOn(word, expected, std::chrono::nanoseconds(-1));
    // Who listens is attached, so nobody is waited for here.
    SleepUntilAlert(Channel(), &shown, {word, expected}, thread);
  }
  HearAll(thread);
}

WaitingThreads FindWaitingThreads(ChannelArea const &channel) {
  WaitingThreads found{.everywhere = channel.unplaced.load() == 0};
  uint32_t const used = std::min(channel.slotsUsed.load(), kSegmentPlaces);
  for (uint32_t i = 0; i < used; i++) {
    if (channel.slots[i].listening.load() == 0) continue;
    uint32_t const shown = channel.slots[i].waiting.load();
    if (shown == 0) found.everywhere = false;
    if (shown != 0 && (shown & kLooksOut) == 0) found.asleep++;
  }
  return found;
}

void AlertWaitingThreads(ChannelArea *channel) {
  channel->alerts.fetch_add(1);
  WakeSleepers(&channel->alerts, INT_MAX);
}

}  // namespace zolt
