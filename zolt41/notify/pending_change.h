#ifndef ZOLT41_NOTIFY_PENDING_CHANGE_H_
#define ZOLT41_NOTIFY_PENDING_CHANGE_H_

#include <cstdint>
#include <memory>

#include "zolt41/foundation/zoltx_ptr_array.h"
#include "zolt41/notify/notification_info.h"

namespace zolt {

// Deletes the records that an array of NotificationInfo holds, and empties it.
void FreeRecords(ZOLTXPtrArray *records);

// A change that waits in a subscriber's queue, with copies of its records.
struct PendingChange {
  // Delivered as the type that the subscriber has then.
  static constexpr int32_t kTypeOfSubscriber = -1;

  ~PendingChange() { FreeRecords(&records); }

  // Null without memory.
  static std::unique_ptr<PendingChange> Copy(int32_t id, int32_t level,
                                             NotificationInfo const *records, int32_t count,
                                             uint32_t extra, int32_t type);

  // In records: what holds them together counts as one more.
  uint32_t cost() const { return static_cast<uint32_t>(records.GetSize()) + 1; }

  bool gap() const { return id == -1 && records.GetSize() == 0; }

  int32_t id = 0;
  int32_t level = 0;
  ZOLTXPtrArray records;  // each a NotificationInfo that the change owns
  uint32_t extra = 0;
  int32_t type = kTypeOfSubscriber;
};

}  // namespace zolt

#endif  // ZOLT41_NOTIFY_PENDING_CHANGE_H_
