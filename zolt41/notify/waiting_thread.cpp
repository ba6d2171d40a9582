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

// For an announcement that an alert went ahead of, as a write takes some ten microseconds; and for
// the next one where they come close together, as to fall asleep and to be woken takes longer.
constexpr auto kLookOut = std::chrono::microseconds(100);
constexpr auto kClose = std::chrono::milliseconds(1);

// When this thread heard the last announcement, and whether it came close behind the one before.
class Pace {
 public:
  void Heard() {
    auto const now = steady_clock::now();
    close_ = now - last_ < kClose;
    last_ = now;
  }
  // How long to look out for the next.
  steady_clock::time_point end() const { return last_ + kLookOut; }
  bool Expects() const {
    auto const now = steady_clock::now();
    return close_ && now < end() && now >= busyUntil_;
  }
  void LookedOut() {
    auto const now = steady_clock::now();
    if (now > end() + kLookOut) busyUntil_ = now + kBusy;
  }

 private:
  steady_clock::time_point last_;
  steady_clock::time_point busyUntil_;
  bool close_ = false;
};
thread_local Pace pace;

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

  void LookOut() {
    if (any()) Show(shown_ | kLooksOut);
  }
  void Sleep() {
    if (any()) Show(shown_ & ~kLooksOut);
  }
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

void AwaitAnnouncement(ChannelArea const &channel, uint32_t last, Message const &message,
                       steady_clock::time_point end) {
  // The writer may need this very processor.
  while (LastAnnouncement(channel.ring) == last && !message.came() && steady_clock::now() < end)
    sched_yield();
}

// Whether there is a processor for each thread that hears, and one for the writer. Who lags stands
// still.
bool FewListen(ChannelArea const &channel) {
  return FindWaitingThreads(channel).listening < Processors();
}

bool Hear(uint32_t thread) {
  bool const heard = HearAll(thread);
  if (heard) pace.Heard();
  return heard;
}

void SleepUntilAlert(ChannelArea *channel, Shown *shown, Message const &message, uint32_t thread) {
  uint32_t alerts = 0;
  uint32_t last = 0;
  auto const anything = [&] {
    alerts = channel->alerts.load();
    last = LastAnnouncement(channel->ring);
    return Hear(thread) || message.came();
  };
  if (pace.Expects() && FewListen(*channel)) {
    shown->LookOut();
    if (anything()) return;
    AwaitAnnouncement(*channel, last, message, pace.end());
    pace.LookedOut();
    shown->Sleep();
  }
  if (anything()) return;
  if (!SleepOnEither(message.word, message.expected, &channel->alerts, alerts)) {
    supported.store(false);
    return;
  }
  // A signal is none.
  if (message.came() || channel->alerts.load() == alerts) return;
  shown->LookOut();
  AwaitAnnouncement(*channel, last, message, steady_clock::now() + kLookOut);
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
  Hear(thread);
}

uint32_t Processors() {
  static uint32_t const processors = [] {
    cpu_set_t usable;
    bool const known = sched_getaffinity(0, sizeof usable, &usable) == 0;
    return known ? static_cast<uint32_t>(CPU_COUNT(&usable)) : 1U;
  }();
  return processors;
}

WaitingThreads FindWaitingThreads(ChannelArea const &channel) {
  WaitingThreads found{.everywhere = channel.unplaced.load() == 0};
  uint32_t const used = std::min(channel.slotsUsed.load(), kSegmentPlaces);
  for (uint32_t i = 0; i < used; i++) {
    ProcessSlot const &slot = channel.slots[i];
    if (slot.listening.load() == 0) continue;
    uint32_t const shown = slot.waiting.load();
    bool const asleep = shown != 0 && (shown & kLooksOut) == 0;
    if (shown == 0) found.everywhere = false;
    if (asleep) found.asleep++;
    if (slot.lagging.load() != 0) continue;
    found.listening++;
    if (asleep) found.awaited++;
  }
  return found;
}

void AlertWaitingThreads(ChannelArea *channel) {
  channel->alerts.fetch_add(1);
  WakeSleepers(&channel->alerts, INT_MAX);
}

}  // namespace zolt
