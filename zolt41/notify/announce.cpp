#include "zolt41/notify/announce.h"

#include "zolt41/notify/announcement_ring.h"
#include "zolt41/notify/channel_objects.h"
#include "zolt41/notify/notify_thread.h"

namespace zolt {

void Announce(Announcement const &announcement, Pause pause) {
  ChannelArea *const channel = Channel();
  if (channel == nullptr) return;
  ServeLateSubscribers();
  uint32_t const number = LastAnnouncement(channel->ring) + 1;
  ExpectAnswers(channel, number);
  // Else nobody has ever listened.
  if (channel->wordsReady.load() != 0) {
    Publish(&channel->ring, announcement);
    PulseEvent(NotifyEvent());
  }
  AwaitAnswers(channel, number, pause);
}

}  // namespace zolt
