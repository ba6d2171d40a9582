// What a subscriber is told and keeps until it is delivered; the delivery is in
// pref_notify_hook.cpp.
#include "zolt41/notify/pref_notify.h"

#include <memory>
#include <mutex>

#include "zolt41/notify/pending_change.h"
#include "zolt41/notify/subscriber_list.h"

using zolt::PendingChange;
using zolt::SubscriberList;

namespace {

// 64 MiB of records, as PendingChange::cost counts them.
constexpr uint32_t kMostQueued = (64U << 20) / sizeof(NotificationInfo);

struct KeyEntry {
  HKEY key;
  uint32_t id;
  bool all;
};

PendingChange *ChangeAt(ZOLTXList const &queue, uint32_t index) {
  return static_cast<PendingChange *>(queue.GetItem(index));
}

}  // namespace

CPrefNotify::CPrefNotify(int32_t init) : queue_(256) {
  {
    std::lock_guard const guard(SubscriberList::The().lock());
    SubscriberList::The().Born(this);
  }
  if (init == 0) return;
  try {
    Init(0, 0);
  } catch (...) {
    // Without a constructor's end no destructor is called.
    std::lock_guard const guard(SubscriberList::The().lock());
    SubscriberList::The().Died(this);
    throw;
  }
}

CPrefNotify::~CPrefNotify() {
  std::lock_guard const guard(SubscriberList::The().lock());
  while (SubscriberList::The().Hears(this)) RemoveNotificationObject(this);
  SubscriberList::The().Died(this);
  Dispose();
  for (int32_t i = 0; i < keys_.GetSize(); i++) delete static_cast<KeyEntry *>(keys_.GetAt(i));
  zolt::FreeRecords(&changedRecords);
  DropAll();
}

void CPrefNotify::OnKeyChanged() {}
void CPrefNotify::OnKeyRemoved() {}
void CPrefNotify::OnKeyCreated() {}

void CPrefNotify::AddKey(HKEY key, uint32_t id, bool all) {
  auto entry = std::make_unique<KeyEntry>(KeyEntry{key, id, all});
  std::lock_guard const guard(SubscriberList::The().lock());
  keys_.Add(entry.get());
  static_cast<void>(entry.release());
}

void CPrefNotify::AddNotificationKey(HKEY key, uint32_t id, int32_t /*ignored*/) {
  AddKey(key, id, false);
}

void CPrefNotify::AddNotificationAll() {
  AddKey(0, 0, true);
}

void CPrefNotify::SetTransactionType(int32_t type) {
  std::lock_guard const guard(SubscriberList::The().lock());
  transactionType_ = type;
}

void CPrefNotify::SetKeyChanged(int32_t id, int32_t level, NotificationInfo const *records,
                                int32_t count, uint32_t extra) {
  std::lock_guard const guard(SubscriberList::The().lock());
  QueueCopy(id, level, records, count, extra, PendingChange::kTypeOfSubscriber);
}

void CPrefNotify::ForEachMatch(zolt::AnnouncementHead const &head,
                               std::function<void(uint32_t, int32_t)> const &match) {
  for (int32_t i = 0; i < keys_.GetSize(); i++) {
    auto const &entry = *static_cast<KeyEntry const *>(keys_.GetAt(i));
    auto const type = static_cast<int32_t>(head.type);
    if (entry.all) {
      match(head.section, type);
    } else if (entry.id == head.section || (head.alias != 0 && entry.id == head.alias)) {
      transactionType_ = type;
      match(entry.id, PendingChange::kTypeOfSubscriber);
    }
  }
}

bool CPrefNotify::HearsAll() const {
  for (int32_t i = 0; i < keys_.GetSize(); i++) {
    if (static_cast<KeyEntry const *>(keys_.GetAt(i))->all) return true;
  }
  return false;
}

bool CPrefNotify::EndsInGap() const {
  return queue_.Count() != 0 && ChangeAt(queue_, queue_.Count() - 1)->gap();
}

bool CPrefNotify::Queue(std::unique_ptr<PendingChange> change) {
  if (change == nullptr || queue_.AddItem(change.get()) == ZOLTXList::kNone) return false;
  queuedCost_ += change->cost();
  static_cast<void>(change.release());
  return true;
}

bool CPrefNotify::QueueCopy(int32_t id, int32_t level, NotificationInfo const *records,
                            int32_t count, uint32_t extra, int32_t type) {
  return queuedCost_ < kMostQueued &&
         Queue(PendingChange::Copy(id, level, records, count, extra, type));
}

bool CPrefNotify::QueueGap() {
  return Queue(PendingChange::Copy(-1, 0, nullptr, 0, 0, 0));
}

void CPrefNotify::TakeBackNewest() {
  uint32_t const newest = queue_.Count() - 1;
  PendingChange *const change = ChangeAt(queue_, newest);
  queuedCost_ -= change->cost();
  queue_.RemoveItem(newest);
  delete change;
}

void CPrefNotify::DropAll() {
  while (queue_.Count() != 0) TakeBackNewest();
}

int32_t CPrefNotify::AckCallback() {
  std::lock_guard const guard(SubscriberList::The().lock());
  if (queue_.Count() == 0) return 0;
  zolt::FreeRecords(&changedRecords);
  std::unique_ptr<PendingChange> const change(ChangeAt(queue_, 0));
  queue_.RemoveFirstItem();
  queuedCost_ -= change->cost();
  changedId = change->id;
  changedLevel = change->level;
  changedExtra = change->extra;
  changedRecords.Swap(change->records);
  deliveredType_ =
      change->type == PendingChange::kTypeOfSubscriber ? transactionType_ : change->type;
  return 1;
}
