#ifndef ZOLT41_NOTIFY_CHANNEL_OBJECTS_H_
#define ZOLT41_NOTIFY_CHANNEL_OBJECTS_H_

#include "zolt41/platform/kernel/named_mutex.h"

namespace zolt {

// The two mutexes that the processes of one user and home share. Where both are taken, the
// subscriber mutex is taken first. They are open from the attach of the process to its detach;
// outside of that the handles are 0, and waits on them fail.
void OpenChannelObjects();
void CloseChannelObjects();
HANDLE SubscriberMutex();
HANDLE ChannelMutex();

// Holds the channel mutex for as long as it lives, if it could be had within a second. If not, the
// work goes on without it: a stopped process must not keep every other one from starting.
class ChannelGuard {
 public:
  ChannelGuard();
  ~ChannelGuard();
  ChannelGuard(ChannelGuard const &) = delete;
  ChannelGuard &operator=(ChannelGuard const &) = delete;

 private:
  bool held_;
};

}  // namespace zolt

#endif  // ZOLT41_NOTIFY_CHANNEL_OBJECTS_H_
