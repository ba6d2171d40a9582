#ifndef ZOLT41_PLATFORM_SYSTEM_ROBUST_MUTEX_H_
#define ZOLT41_PLATFORM_SYSTEM_ROBUST_MUTEX_H_

#include <pthread.h>

#include <cstdint>

namespace zolt {

// A recursive mutex that lies in memory shared by processes. An owner that dies gives it to the
// next waiter.
struct RobustMutex {
  pthread_mutex_t native;
};

enum class MutexWait {
  got,
  abandoned,  // got as well, from an owner that died
  timed_out,
  failed,  // the memory holds no mutex
};

void InitRobustMutex(RobustMutex *mutex);

// Waits at most `milliseconds`; 0xFFFFFFFF waits for ever.
[[nodiscard]] MutexWait LockRobustMutex(RobustMutex *mutex, uint32_t milliseconds);

// The calling thread must be the owner.
void UnlockRobustMutex(RobustMutex *mutex);

// The system's id of the thread that owns it at this moment, or owned it when it died; 0 if none
// does.
uint32_t RobustMutexOwner(RobustMutex const *mutex);

// The process that a thread of the system belongs to; 0 if there is no such thread.
uint32_t ProcessOfThread(uint32_t thread);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_ROBUST_MUTEX_H_
