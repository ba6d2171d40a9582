#include "zolt41/notify/channel_objects.h"

#include "zolt41/platform/kernel/shared_segment.h"

namespace zolt {

namespace {

constexpr uint32_t kChannelWait = 1000;

constinit HANDLE subscriberMutex = 0;
constinit HANDLE channelMutex = 0;

void Close(HANDLE *handle) {
  CloseHandle(*handle);
  *handle = 0;
}

}  // namespace

void OpenChannelObjects() {
  subscriberMutex = CreateMutexA(nullptr, 0, "/ZO/ZOLT/SECURE1");
  channelMutex = CreateMutexA(nullptr, 0, "/ZO/ZOLT/SECURE2");
}

void CloseChannelObjects() {
  Close(&subscriberMutex);
  Close(&channelMutex);
  DetachSegment();
}

HANDLE SubscriberMutex() {
  return subscriberMutex;
}

HANDLE ChannelMutex() {
  return channelMutex;
}

ChannelGuard::ChannelGuard() {
  uint32_t const result = WaitForSingleObject(channelMutex, kChannelWait);
  held_ = result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
}

ChannelGuard::~ChannelGuard() {
  if (held_) ReleaseMutex(channelMutex);
}

}  // namespace zolt
