#ifndef ZOLT41_NOTIFY_SUBSCRIBER_LIST_H_
#define ZOLT41_NOTIFY_SUBSCRIBER_LIST_H_

#include <cstdint>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "zolt41/foundation/zoltx_ptr_array.h"
#include "zolt41/notify/announcement_ring.h"
#include "zolt41/notify/pref_notify.h"
#include "zolt41/platform/system/timed_mutex.h"

namespace zolt {

// The message that tells a subscriber's thread of one queued change: wParam is the subscriber,
// lParam the thread's hook.
inline constexpr uint32_t kChangeMessage = WM_USER + 150;

// The subscribers of this process. The lock stands in the place of the subscriber mutex, and guards
// what the subscribers share with the notification thread too. No client's code runs under it.
class SubscriberList {
 public:
  static SubscriberList &The();

  RecursiveMutex &lock() { return lock_; }

  // The rest is called with the lock held.

  // Those that hear. One may be there several times.
  void Add(CPrefNotify *subscriber) { listening_.Add(subscriber); }
  void Remove(CPrefNotify const *subscriber);
  void RemoveAll() { listening_.RemoveAll(); }
  bool Hears(CPrefNotify const *subscriber) const { return PlaceOf(subscriber) >= 0; }
  bool empty() const { return listening_.GetSize() == 0; }
  bool HasThread(uint32_t thread) const;

  // Queue and post what was heard, or that something was missed, for each that asked for it. Give
  // how often something was lost for want of memory; who hears everything is told of that.
  uint32_t Deliver(AnnouncementHead const &head, NotificationInfo const *records, int32_t count);
  uint32_t DeliverGap();

  // Has what waits for the subscriber come to the thread that it has now. The messages to the
  // thread before count for nothing.
  void PostAgain(CPrefNotify *subscriber);

  // Takes the threads that were posted to, to be woken without the lock.
  std::vector<uint32_t> TakeThreadsToWake() { return std::exchange(toWake_, {}); }

  // All that exist. A pointer that comes out of a message is one of these, or is not followed.
  void Born(CPrefNotify *subscriber) { living_.insert(subscriber); }
  void Died(CPrefNotify *subscriber) { living_.erase(subscriber); }
  bool Lives(CPrefNotify *subscriber) const { return living_.contains(subscriber); }
  bool noneLives() const { return living_.empty(); }

  // The hook of a thread that subscribers live on, set at the first call; 0 if it cannot be.
  HHOOK HookOf(uint32_t thread, HOOKPROC procedure);
  void RemoveHooks();

  // A message has come, or has been lost with its thread, which is the calling one; `unknown` if it
  // cannot be for a subscriber of this thread. `last`: it was the last for a subscriber that was
  // released. That is no longer among the living, and the caller deletes it.
  enum class Arrival { unknown, living, released, last };
  static Arrival Count(CPrefNotify *subscriber);

  // In the child of a fork: nobody hears, and nothing is on its way.
  void StartOverInChild();

 private:
  SubscriberList();

  template <typename Enqueue>
  uint32_t Post(CPrefNotify *subscriber, Enqueue enqueue);
  uint32_t PostGap(CPrefNotify *subscriber);
  int32_t PlaceOf(CPrefNotify const *subscriber) const;
  CPrefNotify *At(int32_t place) const {
    return static_cast<CPrefNotify *>(listening_.GetAt(place));
  }

  RecursiveMutex lock_;
  ZOLTXPtrArray listening_;
  std::unordered_set<CPrefNotify *> living_;
  std::unordered_map<uint32_t, HHOOK> hooks_;
  std::vector<uint32_t> toWake_;
};

}  // namespace zolt

#endif  // ZOLT41_NOTIFY_SUBSCRIBER_LIST_H_
