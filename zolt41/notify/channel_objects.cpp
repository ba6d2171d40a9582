#include "zolt41/notify/channel_objects.h"

#include <atomic>

#include "zolt41/platform/kernel/shared_segment.h"

namespace zolt {

namespace {

// The subscriber mutex only bears its name for all to see: what guards the subscribers of a process
// is a lock of that process alone, so that one which is stopped stops no other.
constinit std::atomic<HANDLE> subscriberMutex = 0;
constinit std::atomic<HANDLE> channelMutex = 0;
constinit std::atomic<HANDLE> notifyEvent = 0;

bool Prepare(std::atomic<uint32_t> *ready, size_t offset, size_t size) {
  if (ready->load() != 0) return true;
  if (!AllocateInSegmentArea(static_cast<uint32_t>(offset), static_cast<uint32_t>(size)))
    return false;
  ready->store(1);
  return true;
}

}  // namespace

bool PrepareWords(ChannelArea *channel) {
  return Prepare(&channel->wordsReady, offsetof(ChannelArea, ring) + offsetof(Ring, words),
                 sizeof(Ring::words));
}

bool PrepareRecords(ChannelArea *channel) {
  return Prepare(&channel->recordsReady, offsetof(ChannelArea, records),
                 sizeof(ChannelArea::records));
}

void OpenChannelObjects() {
  subscriberMutex = CreateMutexA(nullptr, 0, "/ZO/ZOLT/SECURE1");
  channelMutex = CreateMutexA(nullptr, 0, "/ZO/ZOLT/SECURE2");
  notifyEvent = CreateEventA(nullptr, 1, 0, "ZOPref_EndPrefsNotify");
}

void LeaveChannelObjects() {
  LeaveSegment(SegmentMutex::channel);
}

HANDLE ChannelMutex() {
  return channelMutex;
}

HANDLE NotifyEvent() {
  return notifyEvent;
}

ChannelArea *Channel() {
  return NotifyEvent() == 0 ? nullptr : static_cast<ChannelArea *>(SegmentArea());
}

}  // namespace zolt
