#ifndef ZOLT41_NOTIFY_CHANNEL_OBJECTS_H_
#define ZOLT41_NOTIFY_CHANNEL_OBJECTS_H_

#include "zolt41/notify/channel_layout.h"
#include "zolt41/platform/kernel/named_event.h"
#include "zolt41/platform/kernel/named_mutex.h"

namespace zolt {

// What the processes of one user and home share. The handles are open from the attach of the
// process to its death: its other threads may announce to the very last.
void OpenChannelObjects();

// For the end of the process, which then has no notification thread any more. If no other process
// uses the channel its file goes, and no thread of this process gets the channel mutex again.
void LeaveChannelObjects();

// Whoever announces holds it, and InitPrefs and the changes of the tree do.
HANDLE ChannelMutex();

// Pulsed at each announcement.
HANDLE NotifyEvent();

// Null if the segment cannot be had: then nobody hears of a change. The first call attaches the
// process to it.
ChannelArea *Channel();

// Get memory for the announcements, which only listeners need to be told any, and for the records
// of the open transaction. False if there is none.
bool PrepareWords(ChannelArea *channel);
bool PrepareRecords(ChannelArea *channel);

}  // namespace zolt

#endif  // ZOLT41_NOTIFY_CHANNEL_OBJECTS_H_
