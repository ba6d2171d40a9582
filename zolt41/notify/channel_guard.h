#ifndef ZOLT41_NOTIFY_CHANNEL_GUARD_H_
#define ZOLT41_NOTIFY_CHANNEL_GUARD_H_

#include <cstdint>

#include "zolt41/notify/channel_layout.h"

namespace zolt {

// Holds the channel mutex for as long as it lives, if it could be had in time. If not, a caller
// that can do without goes on: a stopped process must not keep every other one from starting. Where
// a writer died in the middle of its announcements, all who listen are told of a gap first.
class ChannelGuard {
 public:
  static constexpr uint32_t kWait = 1000;

  explicit ChannelGuard(uint32_t milliseconds = kWait);
  ~ChannelGuard();
  ChannelGuard(ChannelGuard const &) = delete;
  ChannelGuard &operator=(ChannelGuard const &) = delete;

  bool timedOut() const { return timedOut_; }

 private:
  bool held_;
  bool timedOut_;
};

// Stands while a writer has something to tell that is not all told yet, from before what is told is
// kept for good. The channel mutex is held. A writer that is thrown out has not told all: what it
// noted then stays for whoever has the mutex next.
class Announcing {
 public:
  Announcing();
  ~Announcing();
  Announcing(Announcing const &) = delete;
  Announcing &operator=(Announcing const &) = delete;

 private:
  ChannelArea *channel_;
  int thrown_;
};

}  // namespace zolt

#endif  // ZOLT41_NOTIFY_CHANNEL_GUARD_H_
