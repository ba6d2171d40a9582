#ifndef ZOLT41_PLATFORM_KERNEL_MESSAGE_LOOP_H_
#define ZOLT41_PLATFORM_KERNEL_MESSAGE_LOOP_H_

#include <atomic>
#include <cstdint>

#include "zolt41/platform/system/api.h"
#include "zolt41/platform/system/instance.h"

// Messages between the threads of a process. A thread has a queue from the moment that it first
// asks for anything here until it ends; messages come out in the order of the posts. All functions
// may be called from any thread. In the child of a fork the queues are empty.

// A place on a screen.
struct POINT {
  int32_t x;
  int32_t y;
};

// A message. What number and parameters mean is its sender's affair.
struct MSG {
  uintptr_t hwnd;  // always 0
  uint32_t message;
  uintptr_t wParam;
  uintptr_t lParam;
  uint32_t time;  // milliseconds of a clock that never goes back, modulo 2^32
  POINT pt;       // always 0, 0
};

inline constexpr uint32_t WM_QUIT = 0x12;
inline constexpr uint32_t WM_USER = 0x400;
inline constexpr uint32_t PM_NOREMOVE = 0;
inline constexpr uint32_t PM_REMOVE = 1;

// The calling thread's id: a number that no other thread of this process has or had.
ZOLT_API uint32_t GetCurrentThreadId();

// Queues a message for a thread. 1, or 0 if the thread has ended or has no queue yet, or if 10,000
// messages wait for it. Never waits.
ZOLT_API int32_t PostThreadMessageA(uint32_t thread, uint32_t message, uintptr_t wParam,
                                    uintptr_t lParam);

// Waits for a message, takes it out of the calling thread's queue into `*message` and shows it to
// the thread's hooks. 1, or 0 for WM_QUIT, or -1 if `message` is null. `window` must be 0. With a
// `last` that is not 0, others than those from `first` to `last` stay where they are, except
// WM_QUIT. A thread that waits here is ended by a message, WM_QUIT for one: pthread_cancel does not
// wake it.
ZOLT_API int32_t GetMessageA(MSG *message, uintptr_t window, uint32_t first, uint32_t last);

// The same without waiting: 0 if there is none. Without PM_REMOVE the message stays in the queue.
ZOLT_API int32_t PeekMessageA(MSG *message, uintptr_t window, uint32_t first, uint32_t last,
                              uint32_t flags);

// A message to a thread has no window that it could go to: nothing happens, and 0 is given.
ZOLT_API intptr_t DispatchMessageA(MSG const *message);

// Hooks. A hook is shown every message that its thread takes from its queue, or peeks at, and is
// called on that thread.

using HHOOK = uintptr_t;
// `wParam` is PM_REMOVE if the message leaves the queue, else 0; `lParam` the address of its MSG.
using HOOKPROC = intptr_t (*)(int32_t code, uintptr_t wParam, uintptr_t lParam);

inline constexpr int32_t WH_GETMESSAGE = 3;
inline constexpr int32_t HC_ACTION = 0;

// Puts a hook in front of those of the thread; 0 stands for the calling one. The only kind is
// WH_GETMESSAGE. Gives a handle that no other hook has or had, or 0 for a kind that there is not,
// a null procedure or a thread that has ended or has no queue. `instance` has no effect.
ZOLT_API HHOOK SetWindowsHookExA(int32_t kind, HOOKPROC procedure, HINSTANCE instance,
                                 uint32_t thread);

// To be called from within a hook's procedure: calls the hook that was set before it on the same
// thread, and gives what that gives; 0 if there is none. Which one is running is known, so `hook`
// has no effect: it may come out of a message that anybody could have posted.
ZOLT_API intptr_t CallNextHookEx(HHOOK hook, int32_t code, uintptr_t wParam, uintptr_t lParam);

// Takes a hook away, from any thread and also from within a hook. 1, or 0 for an unknown handle.
ZOLT_API int32_t UnhookWindowsHookEx(HHOOK hook);

// For a program with a main loop of its own.

// A descriptor that is readable exactly while messages wait for the calling thread, to be polled,
// level-triggered, for reading. The library owns it: it is neither read nor closed, and lives as
// long as the thread. -1 if there is none to be had, with the reason in errno.
ZOLT_API int32_t ZOLTQueueDescriptor();

// Takes all messages out of the calling thread's queue that wait at this moment and shows each to
// the thread's hooks, so the callbacks of subscribers run in here. Gives their number. May be
// called from within a callback.
ZOLT_API int32_t ZOLTDeliver();

namespace zolt {

// Posts a message of the library itself, which does not count towards the 10,000: nobody else can
// keep it out by flooding a queue. A thread that waits for a message sleeps on until it is woken,
// so the poster can first give back the locks that it will want.
enum class Post { done, thread_gone, no_memory };
[[nodiscard]] Post PostOwnMessage(uint32_t thread, uint32_t message, uintptr_t wParam,
                                  uintptr_t lParam);

void WakeThread(uint32_t thread);

// How threads wait for messages: sleeps while the word holds `expected`, or does something useful
// instead, and may come back for no reason. Called without a lock.
using MessageWait = void (*)(std::atomic<uint32_t> *word, uint32_t expected);
void SetMessageWait(MessageWait wait);

// The thread can still take messages.
bool ThreadHasQueue(uint32_t thread);

// What is told of messages that nobody will take any more, as their thread ends. Called on that
// thread.
using DroppedMessage = void (*)(MSG const &message);
void SetDroppedMessageHandler(DroppedMessage handler);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_KERNEL_MESSAGE_LOOP_H_
