#include "zolt41/notify/subscriber_list.h"

#include <algorithm>
#include <functional>
#include <mutex>
#include <new>

#include "zolt41/platform/system/string_table.h"

namespace zolt {
namespace {

void MessageDropped(MSG const &message) {
  if (message.message != kChangeMessage) return;
  auto *const subscriber = reinterpret_cast<CPrefNotify *>(message.wParam);  // NOLINT(*-int-to-ptr)
  if (SubscriberList::Count(subscriber) == SubscriberList::Arrival::last) delete subscriber;
}

}  // namespace

SubscriberList::SubscriberList() {
  SetDroppedMessageHandler(MessageDropped);
}

SubscriberList &SubscriberList::The() {
  // Never destroyed: a thread may still end after the rest has gone.
  static auto *const list = new SubscriberList();
  return *list;
}

int32_t SubscriberList::PlaceOf(CPrefNotify const *subscriber) const {
  int32_t const count = listening_.GetSize();
  int32_t place = 0;
  while (place < count && At(place) != subscriber) place++;
  return place < count ? place : -1;
}

void SubscriberList::Remove(CPrefNotify const *subscriber) {
  int32_t const place = PlaceOf(subscriber);
  if (place >= 0) listening_.RemoveAt(place, 1);
}

bool SubscriberList::HasThread(uint32_t thread) const {
  int32_t place = listening_.GetUpperBound();
  while (place >= 0 && At(place)->threadId_ != thread) place--;
  return place >= 0;
}

// Counts the message before it is posted, and takes it all back if it cannot be: then nothing is on
// its way that a release would wait for. `enqueue` gives false if the change could not be queued.
template <typename Enqueue>
uint32_t SubscriberList::Post(CPrefNotify *subscriber, Enqueue enqueue) {
  try {
    toWake_.reserve(toWake_.size() + 1);
  } catch (std::bad_alloc const &) {
    return 1;
  }
  if (!enqueue()) return 1;
  subscriber->pendingCount_++;
  zolt::Post const posted =
      PostOwnMessage(subscriber->threadId_, kChangeMessage, reinterpret_cast<uintptr_t>(subscriber),
                     subscriber->hook_);
  if (posted == zolt::Post::done) {
    uint32_t const thread = subscriber->threadId_;
    if (std::ranges::find(toWake_, thread) == toWake_.end()) toWake_.push_back(thread);
    return 0;
  }
  subscriber->pendingCount_--;
  subscriber->TakeBackNewest();
  return posted == zolt::Post::no_memory ? 1 : 0;
}

uint32_t SubscriberList::Deliver(AnnouncementHead const &head, NotificationInfo const *records,
                                 int32_t count) {
  uint32_t lost = 0;
  // Nobody can come or go meanwhile: no client's code runs in here.
  for (int32_t i = 0; i < listening_.GetSize(); i++) {
    CPrefNotify *const subscriber = At(i);
    uint32_t lostHere = 0;
    auto const deliver = [&](uint32_t id, int32_t ownType) {
      lostHere += Post(subscriber, [&] {
        return subscriber->QueueCopy(static_cast<int32_t>(id), static_cast<int32_t>(head.level),
                                     records, count, head.extra, ownType);
      });
    };
    // By reference, which takes no memory.
    subscriber->ForEachMatch(head, std::cref(deliver));
    if (lostHere != 0) lost += lostHere + PostGap(subscriber);
  }
  return lost;
}

// One that is the newest of what waits tells of all that is lost behind it.
uint32_t SubscriberList::PostGap(CPrefNotify *subscriber) {
  if (!subscriber->HearsAll() || subscriber->EndsInGap()) return 0;
  return Post(subscriber, [subscriber] { return subscriber->QueueGap(); });
}

uint32_t SubscriberList::DeliverGap() {
  uint32_t lost = 0;
  for (int32_t i = 0; i < listening_.GetSize(); i++) {
    lost += PostGap(At(i));
  }
  return lost;
}

void SubscriberList::PostAgain(CPrefNotify *subscriber) {
  int32_t waiting = std::exchange(subscriber->pendingCount_, 0);
  for (; waiting > 0; waiting--) {
    if (PostOwnMessage(subscriber->threadId_, kChangeMessage,
                       reinterpret_cast<uintptr_t>(subscriber),
                       subscriber->hook_) != zolt::Post::done) {
      break;
    }
    subscriber->pendingCount_++;
  }
  if (waiting > 0) {
    // What cannot all come is lost as a whole.
    subscriber->DropAll();
    PostGap(subscriber);
  }
  WakeThread(subscriber->threadId_);
}

HHOOK SubscriberList::HookOf(uint32_t thread, HOOKPROC procedure) {
  std::erase_if(hooks_, [](auto const &entry) { return !ThreadHasQueue(entry.first); });
  auto const found = hooks_.find(thread);
  if (found != hooks_.end()) return found->second;
  HHOOK const hook = SetWindowsHookExA(WH_GETMESSAGE, procedure, LibraryInstance(), thread);
  if (hook != 0) hooks_.emplace(thread, hook);
  return hook;
}

void SubscriberList::RemoveHooks() {
  for (auto const &[thread, hook] : hooks_) UnhookWindowsHookEx(hook);
  hooks_.clear();
}

SubscriberList::Arrival SubscriberList::Count(CPrefNotify *subscriber) {
  SubscriberList &list = The();
  std::lock_guard const guard(list.lock_);
  // Anybody can post such a message; and one can outlive a subscriber that was deleted.
  if (!list.Lives(subscriber) || subscriber->threadId_ != GetCurrentThreadId()) {
    return Arrival::unknown;
  }
  if (subscriber->pendingCount_ > 0) subscriber->pendingCount_--;
  if (subscriber->released_ == 0) return Arrival::living;
  if (subscriber->pendingCount_ != 0) return Arrival::released;
  list.Died(subscriber);
  return Arrival::last;
}

void SubscriberList::StartOverInChild() {
  RenewInChild(&lock_);
  listening_.RemoveAll();
  for (CPrefNotify *const subscriber : living_) {
    subscriber->pendingCount_ = 0;
    subscriber->DropAll();
  }
}

}  // namespace zolt
