#ifndef ZOLT41_PLATFORM_KERNEL_THREAD_H_
#define ZOLT41_PLATFORM_KERNEL_THREAD_H_

#include <cstdint>

namespace zolt {

// A thread of the library's own, as urgent as this user may make it. It takes no signals: those are
// for the client's threads.
class Thread {
 public:
  // False if there is none to be had.
  [[nodiscard]] bool Start(void *(*run)(void *), void *argument);

  // Waits for its end. It was started.
  void Join() const;

 private:
  uintptr_t native_ = 0;
};

// The system's numbers, which are given out again.
uint32_t ThisProcess();
uint32_t ThisThread();
bool ThreadLives(uint32_t thread);

// As long as it lives the calling thread, which may be a client's, is not ended by pthread_cancel.
class NotCancelled {
 public:
  NotCancelled();
  ~NotCancelled();
  NotCancelled(NotCancelled const &) = delete;
  NotCancelled &operator=(NotCancelled const &) = delete;

 private:
  int before_ = 0;
};

// Has functions called around each fork: the last that were asked for come first before it.
void CallAroundForks(void (*before)(), void (*inParent)(), void (*inChild)());

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_KERNEL_THREAD_H_
