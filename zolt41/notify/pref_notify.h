#ifndef ZOLT41_NOTIFY_PREF_NOTIFY_H_
#define ZOLT41_NOTIFY_PREF_NOTIFY_H_

#include <cstdint>
#include <functional>
#include <memory>

#include "zolt41/foundation/zoltx_list.h"
#include "zolt41/foundation/zoltx_ptr_array.h"
#include "zolt41/notify/notification_info.h"
#include "zolt41/platform/kernel/message_loop.h"
#include "zolt41/platform/registry/registry.h"
#include "zolt41/platform/system/api.h"

namespace zolt {
struct AnnouncementHead;
struct PendingChange;
class SubscriberList;
}  // namespace zolt

// A listener to changes of preferences, made by any process of this user and home.
//
// A client derives from it, overrides the callbacks, makes one on a thread that runs a message
// loop, names the sections, and hands it to AddNotificationObject; at the end it calls
// RemoveNotificationObject, then Release. The callbacks run on that thread, one at a time, when it
// takes its messages (GetMessageA, PeekMessageA, or ZOLTDeliver in a main loop of another kind). In
// a callback anything may be added, removed or released, this object included.
//
// What waits for a thread that takes no messages is kept up to 64 MiB for each object; what comes
// then is lost, which is counted, and told to a watcher of everything.
//
// After a fork the objects of the parent hear nothing in the child.
class ZOLT_API CPrefNotify {
 public:
  // With `init` not 0 the object belongs to the calling thread; else Init must be called before it
  // is added.
  explicit CPrefNotify(int32_t init = 1);
  virtual ~CPrefNotify();
  CPrefNotify(CPrefNotify const &) = delete;
  CPrefNotify &operator=(CPrefNotify const &) = delete;

  // Values were modified, removed, created: changedId and the other fields say which. An object has
  // one type at a time, that of the latest transaction: changes that wait together are all
  // delivered as that type, unless they were matched by AddNotificationAll.
  virtual void OnKeyChanged();
  virtual void OnKeyRemoved();
  virtual void OnKeyCreated();

  // Binds the object to a thread (0: the calling one), which must live for as long as the object
  // is added. What waits for it goes along to another thread. `instance` has no effect.
  void Init(HINSTANCE instance, uint32_t threadId);

  // Listens to a section. Each call gives one callback for each transaction, also two calls with
  // the same id. `key` and `ignored` have no effect.
  void AddNotificationKey(HKEY key, uint32_t id, int32_t ignored);
  void AddNotificationID(int32_t id, int32_t system, int32_t ignored);

  // Listens to all sections. Where something was lost on the way, OnKeyChanged comes with changedId
  // 0xFFFFFFFF (-1) and no records, in the place of what was lost: look at everything again.
  void AddNotificationAll();

  // Queues a copy of `count` records without posting a message. For the notification thread.
  void SetKeyChanged(int32_t id, int32_t level, NotificationInfo const *records, int32_t count,
                     uint32_t extra);
  void SetTransactionType(int32_t type);

  // Ends the object: at once if no message is on its way to it, else when the last one arrives or
  // can no longer do so. No callback comes any more. Called on the object's thread.
  void Release();

 protected:
  // The change that is being delivered; they stay until the next one.
  int32_t changedId = 0;
  int32_t changedLevel = 0;
  ZOLTXPtrArray changedRecords;  // each a NotificationInfo, which the object owns
  uint32_t changedExtra = 0;

  // Moves the oldest queued change into the fields above. 1, or 0 if there is none. Called from a
  // callback it takes the next change too, for which there is no callback then.
  int32_t AckCallback();
  // Takes the hook away if this was the last object of the process.
  void Dispose();
  static intptr_t GetMsgProc(int32_t code, uintptr_t wParam, uintptr_t lParam);

 private:
  friend class zolt::SubscriberList;

  // With the lock of the list held. Those that queue give false if the change is lost.
  ZOLT_HIDDEN void ForEachMatch(zolt::AnnouncementHead const &head,
                                std::function<void(uint32_t id, int32_t type)> const &match);
  ZOLT_HIDDEN bool HearsAll() const;
  ZOLT_HIDDEN bool EndsInGap() const;
  ZOLT_HIDDEN bool Queue(std::unique_ptr<zolt::PendingChange> change);
  ZOLT_HIDDEN bool QueueCopy(int32_t id, int32_t level, NotificationInfo const *records,
                             int32_t count, uint32_t extra, int32_t type);
  ZOLT_HIDDEN bool QueueGap();
  ZOLT_HIDDEN void TakeBackNewest();
  ZOLT_HIDDEN void DropAll();

  ZOLT_HIDDEN void AddKey(HKEY key, uint32_t id, bool all);
  ZOLT_HIDDEN void CallBack();

  ZOLTXPtrArray keys_;
  uint32_t threadId_ = 0;
  HHOOK hook_ = 0;
  int32_t pendingCount_ = 0;
  int32_t released_ = 0;
  int32_t transactionType_ = 0;
  ZOLTXList queue_;
  uint32_t queuedCost_ = 0;
  int32_t deliveredType_ = 0;
};

// Begins and ends to tell a subscriber. Between AddNotificationObject and RemoveNotificationObject
// it hears every change that is announced after the first has returned. Works between InitPrefs,
// which forgets whoever was added before, and DisposeZOLT. One that was not added is removed
// without any effect.
ZOLT_API void AddNotificationObject(CPrefNotify *subscriber);
ZOLT_API void RemoveNotificationObject(CPrefNotify *subscriber);

#endif  // ZOLT41_NOTIFY_PREF_NOTIFY_H_
