#include "zolt41/notify/channel_status.h"

#include <algorithm>

#include "zolt41/notify/announcement_ring.h"
#include "zolt41/notify/channel_objects.h"
#include "zolt41/platform/kernel/shared_segment.h"

namespace zolt {

ChannelStatus InspectChannel() {
  ChannelStatus status{};
  ChannelArea const *const channel = Channel();
  if (channel == nullptr) return status;
  status.usable = true;
  status.announcements = LastAnnouncement(channel->ring);
  status.holder = SegmentMutexOwner(SegmentMutex::channel);
  uint32_t const used = std::min(channel->slotsUsed.load(), kSegmentPlaces);
  for (uint32_t i = 0; i < used; i++) {
    ProcessSlot const &slot = channel->slots[i];
    if (!SegmentPlaceHeld(i)) continue;
    status.listeners.push_back({slot.process.load(), slot.listening.load() != 0,
                                slot.lagging.load() != 0, slot.missed.load()});
  }
  return status;
}

}  // namespace zolt
