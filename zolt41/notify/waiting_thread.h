#ifndef ZOLT41_NOTIFY_WAITING_THREAD_H_
#define ZOLT41_NOTIFY_WAITING_THREAD_H_

#include <atomic>
#include <chrono>
#include <cstdint>

#include "zolt41/notify/channel_layout.h"

namespace zolt {

// A thread that waits in GetMessageA, and has subscribers, sleeps on the alerts of the channel as
// well and hears for its process: so a change comes to it without another thread in between. One of
// a process does so at a time. It shows itself in the process's slot, by the process's number while
// it sleeps, and with this bit while it is awake and looks out for an announcement. It takes itself
// out before it looks for the last time, and a writer looks for it after it has published: so one
// of the two always sees the other. The notification thread takes out one that it had to do
// without.
inline constexpr uint32_t kLooksOut = 0x80000000;

// Where the processors are busy a thread that looks out gives its one away and gets it back too
// late, so for as long nobody looks out.
inline constexpr auto kBusy = std::chrono::milliseconds(100);

// For SetMessageWait.
void WaitForMessageOrNews(std::atomic<uint32_t> *word, uint32_t expected);

// That this thread may use when it first asks.
uint32_t Processors();

struct WaitingThreads {
  uint32_t listening = 0;  // processes that do not lag, with such a thread or without
  uint32_t asleep = 0;
  uint32_t awaited = 0;  // of these in processes that do not lag
  bool everywhere;       // each process that listens has one, for all that is known
};
WaitingThreads FindWaitingThreads(ChannelArea const &channel);

// Wakes those that sleep.
void AlertWaitingThreads(ChannelArea *channel);

}  // namespace zolt

#endif  // ZOLT41_NOTIFY_WAITING_THREAD_H_
