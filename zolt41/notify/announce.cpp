#include "zolt41/notify/announce.h"

#include <atomic>
#include <chrono>

#include "zolt41/notify/announcement_ring.h"
#include "zolt41/notify/channel_objects.h"
#include "zolt41/notify/notify_thread.h"
#include "zolt41/notify/waiting_thread.h"

namespace zolt {

namespace {

using std::chrono::steady_clock;

constinit std::atomic<steady_clock::rep> busyUntil = 0;

}  // namespace

void Announce(Announcement const &announcement, Pause pause) {
  ChannelArea *const channel = Channel();
  if (channel == nullptr) return;
  ServeLateSubscribers();
  uint32_t const number = LastAnnouncement(channel->ring) + 1;
  ExpectAnswers(channel, number);
  auto const start = steady_clock::now();
  // Else nobody has ever listened.
  if (channel->wordsReady.load() != 0) {
    Publish(&channel->ring, announcement);
    WaitingThreads const waiting = FindWaitingThreads(*channel);
    if (waiting.asleep != 0) AlertWaitingThreads(channel);
    bool const heard = waiting.everywhere && AnsweredSoon(channel, number);
    if (waiting.everywhere && !heard)
      busyUntil = (steady_clock::now() + kBusy).time_since_epoch().count();
    // Who is to answer may have been called away.
    if (!heard) PulseEvent(NotifyEvent());
  }
  AwaitAnswers(channel, number, pause, start);
}

void AlertBeforeAnnouncing() {
  ChannelArea *const channel = Channel();
  if (channel == nullptr || channel->wordsReady.load() == 0) return;
  if (steady_clock::now().time_since_epoch().count() < busyUntil) return;
  uint32_t const awaited = FindWaitingThreads(*channel).awaited;
  if (awaited != 0 && awaited < Processors()) AlertWaitingThreads(channel);
}

}  // namespace zolt
