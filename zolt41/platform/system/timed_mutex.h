#ifndef ZOLT41_PLATFORM_SYSTEM_TIMED_MUTEX_H_
#define ZOLT41_PLATFORM_SYSTEM_TIMED_MUTEX_H_

#include <pthread.h>

#include <chrono>
#include <cstdint>

namespace zolt {

// Locks a mutex within `milliseconds`, 0xFFFFFFFF being for ever, whatever happens to the wall
// clock meanwhile. Gives the number that pthread_mutex_lock would give, or ETIMEDOUT.
[[nodiscard]] int LockWithin(pthread_mutex_t *mutex, uint32_t milliseconds);

// A mutex of one process that its owner may take again, and that can be waited for with an end.
class RecursiveMutex {
 public:
  RecursiveMutex();
  ~RecursiveMutex() { pthread_mutex_destroy(&native_); }
  RecursiveMutex(RecursiveMutex const &) = delete;
  RecursiveMutex &operator=(RecursiveMutex const &) = delete;

  void lock() { pthread_mutex_lock(&native_); }
  bool try_lock() { return pthread_mutex_trylock(&native_) == 0; }
  bool try_lock_for(std::chrono::milliseconds wait) {
    return LockWithin(&native_, static_cast<uint32_t>(wait.count())) == 0;
  }
  void unlock() { pthread_mutex_unlock(&native_); }

 private:
  pthread_mutex_t native_;
};

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_TIMED_MUTEX_H_
