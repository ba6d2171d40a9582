#ifndef ZOLT41_PLATFORM_SYSTEM_WITH_MEMORY_H_
#define ZOLT41_PLATFORM_SYSTEM_WITH_MEMORY_H_

#include <new>

#include "zolt41/platform/system/last_failure.h"

namespace zolt {

// What `work` gives, or `failed` where there is no memory for it.
template <typename Result, typename Work>
Result WithMemory(Result failed, Work const &work) {
  try {
    return work();
  } catch (std::bad_alloc const &) {
    SetFailure(Failure::full, "");
    return failed;
  }
}

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_WITH_MEMORY_H_
