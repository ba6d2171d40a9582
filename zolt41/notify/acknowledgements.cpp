#include "zolt41/notify/acknowledgements.h"

#include <sched.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "zolt41/notify/announcement_ring.h"
#include "zolt41/platform/kernel/futex.h"

namespace zolt {
namespace {

using std::chrono::steady_clock;

constexpr auto kPause = std::chrono::milliseconds(50);
constexpr uint32_t kYields = 502;
// An answer that comes at all mostly comes within this time, and to fall asleep costs as much.
constexpr auto kSpin = std::chrono::microseconds(20);
constexpr auto kSoon = std::chrono::milliseconds(1);

constexpr uint64_t Open(uint32_t number, uint32_t remaining) {
  return uint64_t{number} << 32 | remaining;
}

bool AllAnswered(ChannelArea const &channel, uint32_t number) {
  uint64_t const open = channel.answers.open.load();
  return open >> 32 != number || static_cast<uint32_t>(open) == 0;
}

template <typename Visit>
void ForEachListener(ChannelArea *channel, Visit visit) {
  uint32_t const used = std::min(channel->slotsUsed.load(), kSegmentPlaces);
  for (uint32_t i = 0; i < used; i++) {
    uint32_t process = channel->slots[i].listening.load();
    if (process == 0) continue;
    // Not if another process has taken the place of the dead one since.
    if (!SegmentPlaceHeld(i)) {
      channel->slots[i].listening.compare_exchange_strong(process, 0);
    } else {
      visit(&channel->slots[i], process);
    }
  }
}

void SpinUntilAnswered(ChannelArea const &channel, uint32_t number) {
  auto const end = steady_clock::now() + kSpin;
  // Who is to answer may need this very processor.
  while (!AllAnswered(channel, number) && steady_clock::now() < end) sched_yield();
}

void SleepUntilAnswered(ChannelArea *channel, uint32_t number, steady_clock::time_point end) {
  std::atomic<uint32_t> &sleeps = channel->answers.writerSleeps;
  for (;;) {
    auto const left = end - steady_clock::now();
    if (left.count() <= 0) break;
    sleeps.store(1);
    if (AllAnswered(*channel, number)) break;
    SleepOn(&sleeps, 1, left);
    if (AllAnswered(*channel, number)) break;
  }
  sleeps.store(0);
}

void PassOverWhoDidNotAnswer(ChannelArea *channel, uint32_t number) {
  ForEachListener(channel, [number](ProcessSlot *slot, uint32_t) {
    if (slot->awaited.load() != number) return;
    slot->lagging.store(1);
    // Its answer may have come between the two.
    if (slot->awaited.load() != number) slot->lagging.store(0);
  });
}

void CountDown(ChannelArea *channel, uint32_t number) {
  uint64_t open = channel->answers.open.load();
  while (open >> 32 == number && static_cast<uint32_t>(open) != 0) {
    if (!channel->answers.open.compare_exchange_weak(open, open - 1)) continue;
    channel->block.pendingAcks.store(static_cast<uint32_t>(open) - 1);
    if (static_cast<uint32_t>(open) != 1) return;
    std::atomic<uint32_t> &sleeps = channel->answers.writerSleeps;
    if (sleeps.exchange(0) != 0) WakeSleepers(&sleeps, 1);
    return;
  }
}

}  // namespace

void ExpectAnswers(ChannelArea *channel, uint32_t number) {
  // Open, and one too high, from before the first is awaited: an answer may come at once, from one
  // that leaves.
  channel->answers.open.store(Open(number, 1));
  ForEachListener(channel, [&](ProcessSlot *slot, uint32_t process) {
    if (slot->lagging.load() != 0) return;
    channel->answers.open.fetch_add(1);
    slot->awaited.store(number);
    // One that has left, or come into a dead one's place, may have looked just before that.
    uint32_t awaited = number;
    bool const left = slot->listening.load() != process;
    if (left && slot->awaited.compare_exchange_strong(awaited, 0)) CountDown(channel, number);
  });
  CountDown(channel, number);
}

bool AnsweredSoon(ChannelArea *channel, uint32_t number) {
  auto const start = steady_clock::now();
  SpinUntilAnswered(*channel, number);
  if (!AllAnswered(*channel, number)) SleepUntilAnswered(channel, number, start + kSoon);
  return AllAnswered(*channel, number);
}

void AwaitAnswers(ChannelArea *channel, uint32_t number, Pause pause,
                  steady_clock::time_point start) {
  if (pause == Pause::full) {
    std::this_thread::sleep_until(start + kPause);
  } else {
    SpinUntilAnswered(*channel, number);
    if (!AllAnswered(*channel, number)) SleepUntilAnswered(channel, number, start + kPause);
  }
  for (uint32_t i = 0; i < kYields && !AllAnswered(*channel, number); i++) sched_yield();
  if (!AllAnswered(*channel, number)) PassOverWhoDidNotAnswer(channel, number);
}

void AnswerFor(ChannelArea *channel, uint32_t slot, uint32_t number) {
  if (slot >= kSegmentPlaces) return;
  ProcessSlot &own = channel->slots[slot];
  uint32_t awaited = number;
  bool const answers = own.awaited.compare_exchange_strong(awaited, 0);
  // Looked at behind the answer: the writer marks first and then looks for the answer.
  if (own.lagging.load() != 0 && LastAnnouncement(channel->ring) == number) own.lagging.store(0);
  if (answers) CountDown(channel, number);
}

void AnswerForAll(ChannelArea *channel, uint32_t slot) {
  if (slot >= kSegmentPlaces) return;
  ProcessSlot &own = channel->slots[slot];
  uint32_t const awaited = own.awaited.exchange(0);
  own.lagging.store(0);
  if (awaited != 0) CountDown(channel, awaited);
}

}  // namespace zolt
