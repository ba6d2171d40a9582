#include "zolt41/platform/system/timed_mutex.h"

#include <cerrno>
#include <ctime>

#if defined(__SANITIZE_THREAD__)
#include <algorithm>

#include <sanitizer/tsan_interface.h>
#endif

namespace zolt {
namespace {

timespec After(clockid_t clock, int64_t milliseconds) {
  timespec end{};
  clock_gettime(clock, &end);
  end.tv_nsec += milliseconds % 1000 * 1000000;
  end.tv_sec += milliseconds / 1000 + end.tv_nsec / 1000000000;
  end.tv_nsec %= 1000000000;
  return end;
}

#if defined(__SANITIZE_THREAD__)

// The call that every thread checker knows waits by the wall clock. It is asked for short stretches
// only, so a clock that is set makes one of them wrong and no more.
constexpr int64_t kStretch = 100;

int Wait(pthread_mutex_t *mutex, uint32_t milliseconds) {
  using std::chrono::steady_clock;
  auto const end = steady_clock::now() + std::chrono::milliseconds(milliseconds);
  for (;;) {
    auto const left = std::chrono::ceil<std::chrono::milliseconds>(end - steady_clock::now());
    if (left.count() <= 0) return ETIMEDOUT;
    timespec const until = After(CLOCK_REALTIME, std::min(left.count(), kStretch));
    int const result = pthread_mutex_timedlock(mutex, &until);
    if (result == EOWNERDEAD) {
      // ThreadSanitizer takes a timed wait that ends with a dead owner for one that got nothing.
      __tsan_mutex_pre_lock(mutex, __tsan_mutex_try_lock);
      __tsan_mutex_post_lock(mutex, __tsan_mutex_try_lock, 0);
    }
    if (result != ETIMEDOUT) return result;
  }
}

#else

int Wait(pthread_mutex_t *mutex, uint32_t milliseconds) {
  timespec const until = After(CLOCK_MONOTONIC, milliseconds);
  return pthread_mutex_clocklock(mutex, CLOCK_MONOTONIC, &until);
}

#endif

}  // namespace

void TellLostInChild([[maybe_unused]] pthread_mutex_t *mutex) {
#if defined(__SANITIZE_THREAD__)
  __tsan_mutex_pre_unlock(mutex, __tsan_mutex_recursive_unlock);
  __tsan_mutex_post_unlock(mutex, __tsan_mutex_recursive_unlock);
#endif
}

int LockWithin(pthread_mutex_t *mutex, uint32_t milliseconds) {
  if (milliseconds == 0xFFFFFFFF) return pthread_mutex_lock(mutex);
  int const result = pthread_mutex_trylock(mutex);
  if (result != EBUSY) return result;
  return milliseconds == 0 ? ETIMEDOUT : Wait(mutex, milliseconds);
}

RecursiveMutex::RecursiveMutex() {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(&native_, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

}  // namespace zolt
