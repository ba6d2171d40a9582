#ifndef ZOLT41_NOTIFY_NOTIFY_THREAD_H_
#define ZOLT41_NOTIFY_NOTIFY_THREAD_H_

// The thread of this process that hears the announcements of all processes and hands them on to
// the subscribers. It listens only while there are subscribers; a process that has none is neither
// woken nor waited for.

namespace zolt {

// Has forks cared for from now on. To be called before any hive is used: around a fork the locks of
// the hives come first, since a thread that holds one may want those of the subscribers.
void PrepareNotificationForForks();

// Forgets all subscribers and starts the thread, unless it runs. Without the shared segment, or
// without a thread to be had, nobody hears.
void StartNotificationThread();

// Ends the thread and waits for its end. May be called when it does not run.
void StopNotificationThread();

}  // namespace zolt

#endif  // ZOLT41_NOTIFY_NOTIFY_THREAD_H_
