#ifndef ZOLT41_NOTIFY_NOTIFY_THREAD_H_
#define ZOLT41_NOTIFY_NOTIFY_THREAD_H_

#include <cstdint>

#include "zolt41/notify/channel_layout.h"

// The thread of this process that hears the announcements of all processes and hands them on to
// the subscribers. It listens only while there are subscribers; a process that has none is neither
// woken nor waited for.

namespace zolt {

// Has forks cared for from now on. To be called before any hive is used: around a fork the locks of
// the hives come first, since a thread that holds one may want those of the subscribers.
void PrepareNotificationForForks();

// Forgets all subscribers and starts the thread, unless it runs. Without the shared segment it is
// started with the first subscriber.
void StartNotificationThread();

// What was announced and not handed on yet is handed on; for a thread that has subscribers of its
// own, which is not woken. False if there was nothing.
bool HearAll(uint32_t thread);

// The place of this process, if the thread has subscribers and the process listens; else null.
ProcessSlot *SlotToHearFor(uint32_t thread);

// Ends the thread and waits for its end. May be called when it does not run.
void StopNotificationThread();

// A subscriber that comes while the shared segment, memory for the announcements or a thread cannot
// be had is late. The thread tries again every ten seconds; so does this, at once. Once they are
// served all are told of a gap.
void ServeLateSubscribers();

}  // namespace zolt

#endif  // ZOLT41_NOTIFY_NOTIFY_THREAD_H_
