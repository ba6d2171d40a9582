#ifndef ZOLT41_ROLODEX_WITH_MEMORY_H_
#define ZOLT41_ROLODEX_WITH_MEMORY_H_

#include <new>

#include "zolt41/platform/system/with_memory.h"
#include "zolt41/rolodex/database_file.h"

namespace zolt {

// As WithMemory, for a change, which may have ended between the file and the index.
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
