#ifndef ZOLT41_PLATFORM_SYSTEM_TIMED_MUTEX_H_
#define ZOLT41_PLATFORM_SYSTEM_TIMED_MUTEX_H_

#include <pthread.h>

#include <chrono>
#include <cstdint>
#include <new>

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
  pthread_mutex_t *native_handle() { return &native_; }

 private:
  pthread_mutex_t native_;
};

// Tells thread checkers that a mutex which the calling thread took before a fork is not its own in
// the child.
void TellLostInChild(pthread_mutex_t *mutex);

// In the child of a fork, for a mutex that was taken around it: the owner is the parent's thread,
// so it is made anew.
template <typename Mutex>
void RenewInChild(Mutex *mutex) {
  TellLostInChild(mutex->native_handle());
  new (mutex) Mutex();
}

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_TIMED_MUTEX_H_
