#include "zolt41/platform/system/robust_mutex.h"

#include <cerrno>

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

}  // namespace zolt
