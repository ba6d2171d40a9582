#ifndef ZOLT41_PLATFORM_COM_FORK_ORDER_H_
#define ZOLT41_PLATFORM_COM_FORK_ORDER_H_

#include "zolt41/platform/kernel/thread.h"
#include "zolt41/platform/registry/hives.h"
#include "zolt41/platform/system/timed_mutex.h"

namespace zolt {

// Has functions called around each fork for a lock under which the registry is used: what is asked
// for last comes first, so the hives ask before it.
inline void CallBeforeHivesAroundForks(void (*before)(), void (*inParent)(), void (*inChild)()) {
  TheHives();
  CallAroundForks(before, inParent, inChild);
}

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_COM_FORK_ORDER_H_
