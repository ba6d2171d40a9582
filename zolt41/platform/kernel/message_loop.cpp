#include "zolt41/platform/kernel/message_loop.h"

#include <cerrno>
#include <ctime>
#include <iterator>
#include <mutex>
#include <new>

#include "zolt41/platform/kernel/message_queues.h"

namespace zolt {
namespace {

// The hook whose procedure runs on this thread, or 0.
thread_local HHOOK running = 0;

// Calls the newest hook that is older than `limit`.
intptr_t CallOlderHook(HHOOK limit, int32_t code, uintptr_t wParam, uintptr_t lParam) {
  MessageQueues &queues = MessageQueues::The();
  MessageQueue *const own = queues.Own();
  if (own == nullptr) return 0;
  HHOOK handle = 0;
  HOOKPROC procedure = nullptr;
  {
    std::lock_guard const guard(queues.lock);
    auto const after = own->hooks.lower_bound(limit);
    if (after == own->hooks.begin()) return 0;
    handle = std::prev(after)->first;
    procedure = std::prev(after)->second;
  }
  HHOOK const outer = running;
  running = handle;
  intptr_t const result = procedure(code, wParam, lParam);
  running = outer;
  return result;
}

void ShowToHooks(MSG *message, bool removed) {
  CallOlderHook(UINTPTR_MAX, HC_ACTION, removed ? PM_REMOVE : PM_NOREMOVE,
                reinterpret_cast<uintptr_t>(message));
}

MSG MakeMessage(uint32_t number, uintptr_t wParam, uintptr_t lParam) {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  auto const time = static_cast<uint32_t>(now.tv_sec * 1000 + now.tv_nsec / 1'000'000);
  return {0, number, wParam, lParam, time, {0, 0}};
}

Post PostTo(uint32_t thread, MSG const &message, bool own) {
  MessageQueues &queues = MessageQueues::The();
  std::lock_guard const guard(queues.lock);
  MessageQueue *const queue = queues.Find(thread);
  if (queue == nullptr) return Post::thread_gone;
  if (!own && queue->full()) return Post::no_memory;
  try {
    queue->Push(message, own);
    if (!own) queue->Wake();
  } catch (std::bad_alloc const &) {
    return Post::no_memory;
  }
  return Post::done;
}

// While the thread waits, whoever posts counts its word up.
bool TakeOrPrepareToWait(MessageQueue *own, MSG *message, uint32_t first, uint32_t last,
                         uint32_t *arrivals) {
  std::lock_guard const guard(MessageQueues::The().lock);
  bool const taken = own->Take(message, first, last, true);
  own->waits = !taken;
  *arrivals = own->arrivals.load();
  return taken;
}

}  // namespace

Post PostOwnMessage(uint32_t thread, uint32_t message, uintptr_t wParam, uintptr_t lParam) {
  return PostTo(thread, MakeMessage(message, wParam, lParam), true);
}

void WakeThread(uint32_t thread) {
  MessageQueues &queues = MessageQueues::The();
  std::lock_guard const guard(queues.lock);
  if (MessageQueue *const queue = queues.Find(thread); queue != nullptr) {
    queue->Wake();
  }
}

bool ThreadHasQueue(uint32_t thread) {
  MessageQueues &queues = MessageQueues::The();
  std::lock_guard const guard(queues.lock);
  return queues.Find(thread) != nullptr;
}

void SetMessageWait(MessageWait wait) {
  MessageQueues::The().wait.store(wait);
}

void SetDroppedMessageHandler(DroppedMessage handler) {
  MessageQueues::The().dropped.store(handler);
}

}  // namespace zolt

using zolt::MessageQueue;
using zolt::MessageQueues;

uint32_t GetCurrentThreadId() {
  return MessageQueues::The().OwnId();
}

int32_t PostThreadMessageA(uint32_t thread, uint32_t message, uintptr_t wParam, uintptr_t lParam) {
  return zolt::PostTo(thread, zolt::MakeMessage(message, wParam, lParam), false) ==
         zolt::Post::done;
}

int32_t GetMessageA(MSG *message, uintptr_t, uint32_t first, uint32_t last) {
  MessageQueues &queues = MessageQueues::The();
  MessageQueue *const own = queues.Own();
  if (message == nullptr || own == nullptr) return -1;
  uint32_t arrivals = 0;
  while (!zolt::TakeOrPrepareToWait(own, message, first, last, &arrivals)) {
    queues.wait.load()(&own->arrivals, arrivals);
  }
  zolt::ShowToHooks(message, true);
  return message->message != WM_QUIT;
}

int32_t PeekMessageA(MSG *message, uintptr_t, uint32_t first, uint32_t last, uint32_t flags) {
  MessageQueues &queues = MessageQueues::The();
  MessageQueue *const own = queues.Own();
  if (message == nullptr || own == nullptr) return 0;
  bool const remove = (flags & PM_REMOVE) != 0;
  {
    std::lock_guard const guard(queues.lock);
    if (!own->Take(message, first, last, remove)) return 0;
  }
  zolt::ShowToHooks(message, remove);
  return 1;
}

intptr_t DispatchMessageA(MSG const *) {
  return 0;
}

HHOOK SetWindowsHookExA(int32_t kind, HOOKPROC procedure, HINSTANCE, uint32_t thread) {
  MessageQueues &queues = MessageQueues::The();
  if (kind != WH_GETMESSAGE || procedure == nullptr) return 0;
  if (thread == 0) thread = queues.OwnId();
  std::lock_guard const guard(queues.lock);
  MessageQueue *const queue = queues.Find(thread);
  if (queue == nullptr) return 0;
  HHOOK const handle = ++queues.lastHook;
  queue->hooks.emplace(handle, procedure);
  queues.hookThreads.emplace(handle, thread);
  return handle;
}

intptr_t CallNextHookEx(HHOOK, int32_t code, uintptr_t wParam, uintptr_t lParam) {
  return zolt::running == 0 ? 0 : zolt::CallOlderHook(zolt::running, code, wParam, lParam);
}

int32_t UnhookWindowsHookEx(HHOOK hook) {
  MessageQueues &queues = MessageQueues::The();
  std::lock_guard const guard(queues.lock);
  auto const found = queues.hookThreads.find(hook);
  if (found == queues.hookThreads.end()) return 0;
  if (MessageQueue *const queue = queues.Find(found->second); queue != nullptr) {
    queue->hooks.erase(hook);
  }
  queues.hookThreads.erase(found);
  return 1;
}

int32_t ZOLTQueueDescriptor() {
  MessageQueues &queues = MessageQueues::The();
  MessageQueue *const own = queues.Own();
  if (own == nullptr) {
    errno = ESRCH;
    return -1;
  }
  std::lock_guard const guard(queues.lock);
  return own->Descriptor();
}

int32_t ZOLTDeliver() {
  MessageQueues &queues = MessageQueues::The();
  MessageQueue *const own = queues.Own();
  if (own == nullptr) return 0;
  size_t waiting = 0;
  {
    std::lock_guard const guard(queues.lock);
    waiting = own->size();
  }
  // What a callback posts, or a flood brings, is for the next call.
  int32_t delivered = 0;
  MSG message;
  while (waiting-- > 0 && PeekMessageA(&message, 0, 0, 0, PM_REMOVE) != 0) delivered++;
  return delivered;
}
