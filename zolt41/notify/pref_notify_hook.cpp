// How a queued change comes to a subscriber on its own thread.
#include <mutex>

#include "zolt41/notify/pref_notify.h"
#include "zolt41/notify/subscriber_list.h"

using zolt::SubscriberList;

void CPrefNotify::Init(HINSTANCE /*instance*/, uint32_t threadId) {
  uint32_t const thread = threadId == 0 ? GetCurrentThreadId() : threadId;
  SubscriberList &list = SubscriberList::The();
  std::lock_guard const guard(list.lock());
  bool const moves = threadId_ != thread;
  threadId_ = thread;
  hook_ = list.HookOf(thread, GetMsgProc);
  if (moves) list.PostAgain(this);
}

void CPrefNotify::Dispose() {
  SubscriberList &list = SubscriberList::The();
  std::lock_guard const guard(list.lock());
  if (!list.noneLives()) return;
  list.RemoveHooks();
  hook_ = 0;
}

intptr_t CPrefNotify::GetMsgProc(int32_t code, uintptr_t wParam, uintptr_t lParam) {
  MSG const message = *reinterpret_cast<MSG const *>(lParam);  // NOLINT(*-int-to-ptr)
  intptr_t const kept = CallNextHookEx(message.lParam, code, wParam, lParam);
  if (message.message != zolt::kChangeMessage || wParam == PM_NOREMOVE || code != HC_ACTION) {
    return kept;
  }
  auto *const subscriber = reinterpret_cast<CPrefNotify *>(message.wParam);  // NOLINT(*-int-to-ptr)
  SubscriberList::Arrival const arrival = SubscriberList::Count(subscriber);
  if (arrival == SubscriberList::Arrival::last) delete subscriber;
  if (arrival != SubscriberList::Arrival::living) return kept;
  if (subscriber->AckCallback() != 0) subscriber->CallBack();
  return 1;
}

// The object may be gone when the callback comes back.
void CPrefNotify::CallBack() {
  switch (deliveredType_) {
    case 0:
      return OnKeyChanged();
    case 1:
      return OnKeyRemoved();
    case 2:
      return OnKeyCreated();
    default:
      return;
  }
}

void CPrefNotify::Release() {
  {
    std::lock_guard const guard(SubscriberList::The().lock());
    released_ = 1;
    // A thread that has ended takes no message any more, and gave back those that it had.
    if (pendingCount_ > 0 && zolt::ThreadHasQueue(threadId_)) return;
    // Nobody else may come to the same end meanwhile.
    SubscriberList::The().Died(this);
  }
  delete this;
}
