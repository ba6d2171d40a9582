#ifndef ZOLT41_NOTIFY_ANNOUNCE_H_
#define ZOLT41_NOTIFY_ANNOUNCE_H_

#include "zolt41/notify/acknowledgements.h"
#include "zolt41/notify/announcement.h"

namespace zolt {

// Tells all who listen, and waits for their answers. The channel mutex is held. Does nothing where
// there is no channel.
void Announce(Announcement const &announcement, Pause pause);

// An announcement will come within microseconds: a thread that waits for messages wakes up
// meanwhile. Only where processors enough are there for all who would.
void AlertBeforeAnnouncing();

}  // namespace zolt

#endif  // ZOLT41_NOTIFY_ANNOUNCE_H_
