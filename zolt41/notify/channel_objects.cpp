#include "zolt41/notify/channel_objects.h"

#include "zolt41/platform/kernel/shared_segment.h"

namespace zolt {

namespace {

constinit HANDLE subscriberMutex = 0;
constinit HANDLE channelMutex = 0;
constinit HANDLE notifyEvent = 0;

void Close(HANDLE *handle) {
  CloseHandle(*handle);
  *handle = 0;
}

}  // namespace

void OpenChannelObjects() {
  subscriberMutex = CreateMutexA(nullptr, 0, "/ZO/ZOLT/SECURE1");
  channelMutex = CreateMutexA(nullptr, 0, "/ZO/ZOLT/SECURE2");
  notifyEvent = CreateEventA(nullptr, 1, 0, "ZOPref_EndPrefsNotify");
}

void CloseChannelObjects() {
  Close(&subscriberMutex);
  Close(&channelMutex);
  Close(&notifyEvent);
  DetachSegment();
}

HANDLE SubscriberMutex() {
  return subscriberMutex;
}

HANDLE ChannelMutex() {
  return channelMutex;
}

HANDLE NotifyEvent() {
  return notifyEvent;
}

ChannelArea *Channel() {
  return static_cast<ChannelArea *>(SegmentArea());
}

ChannelGuard::ChannelGuard(uint32_t milliseconds) {
  uint32_t const result = WaitForSingleObject(channelMutex, milliseconds);
  held_ = result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
  timedOut_ = result == WAIT_TIMEOUT;
}

ChannelGuard::~ChannelGuard() {
  if (held_) ReleaseMutex(channelMutex);
}

}  // namespace zolt
