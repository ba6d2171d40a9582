#ifndef ZOLT41_ROLODEX_WITH_MEMORY_H_
#define ZOLT41_ROLODEX_WITH_MEMORY_H_

#include <new>

#include "zolt41/platform/system/last_failure.h"
#include "zolt41/rolodex/database_file.h"

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

// The same for a change, which may have ended between the file and the index.
template <typename Result, typename Work>
Result ChangeWithMemory(DatabaseFile *file, Result failed, Work const &work) {
  try {
    return work();
  } catch (std::bad_alloc const &) {
    SetFailure(Failure::full, "");
    file->Break();
    return failed;
  }
}

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_WITH_MEMORY_H_
