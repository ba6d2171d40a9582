#include "zolt41/platform/system/robust_mutex.h"

#include <linux/futex.h>

#include <atomic>
#include <cerrno>
#include <cstdio>

#include "zolt41/platform/system/timed_mutex.h"

namespace zolt {
namespace {

MutexWait Result(pthread_mutex_t *native, int error) {
  switch (error) {
    case 0:
      return MutexWait::got;
    case EOWNERDEAD:
      pthread_mutex_consistent(native);
      return MutexWait::abandoned;
    case ETIMEDOUT:
      return MutexWait::timed_out;
    default:
      return MutexWait::failed;
  }
}

}  // namespace

void InitRobustMutex(RobustMutex *mutex) {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
  pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
  pthread_mutex_init(&mutex->native, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

MutexWait LockRobustMutex(RobustMutex *mutex, uint32_t milliseconds) {
  return Result(&mutex->native, LockWithin(&mutex->native, milliseconds));
}

void UnlockRobustMutex(RobustMutex *mutex) {
  pthread_mutex_unlock(&mutex->native);
}

uint32_t RobustMutexOwner(RobustMutex const *mutex) {
  // The kernel gives the first word of a robust mutex this meaning, to find the dead owner's.
  auto const *word = reinterpret_cast<std::atomic<uint32_t> const *>(&mutex->native);
  return word->load(std::memory_order_relaxed) & FUTEX_TID_MASK;
}

uint32_t ProcessOfThread(uint32_t thread) {
  if (thread == 0) return 0;
  char path[64];
  std::snprintf(path, sizeof path, "/proc/%u/status", thread);
  std::FILE *const file = std::fopen(path, "re");
  if (file == nullptr) return 0;
  char line[128];
  uint32_t process = 0;
  while (process == 0 && std::fgets(line, sizeof line, file) != nullptr) {
    if (std::sscanf(line, "Tgid: %u", &process) != 1) process = 0;
  }
  std::fclose(file);
  return process;
}

}  // namespace zolt
