#include "zolt41/platform/kernel/named_mutex.h"

#include <cstring>
#include <iterator>

#include "zolt41/platform/kernel/shared_segment.h"

namespace zolt {
namespace {

struct NameRow {
  char const *name;
  SegmentMutex mutex;
};

constexpr NameRow kNames[] = {
    {"/ZO/ZOLT/SECURE1", SegmentMutex::subscribers},
    {"/ZO/ZOLT/SECURE2", SegmentMutex::channel},
};

// A handle is the mutex's place in the table and one.
bool Known(HANDLE handle) {
  return handle >= 1 && handle <= std::size(kNames);
}

}  // namespace
}  // namespace zolt

HANDLE CreateMutexA(void *, int32_t, char const *name) {
  for (size_t i = 0; name != nullptr && i < std::size(zolt::kNames); i++) {
    if (std::strcmp(name, zolt::kNames[i].name) == 0) return i + 1;
  }
  return 0;
}

uint32_t WaitForSingleObject(HANDLE handle, uint32_t milliseconds) {
  if (!zolt::Known(handle)) return WAIT_FAILED;
  switch (zolt::LockInSegment(zolt::kNames[handle - 1].mutex, milliseconds)) {
    case zolt::MutexWait::got:
      return WAIT_OBJECT_0;
    case zolt::MutexWait::abandoned:
      return WAIT_ABANDONED;
    case zolt::MutexWait::timed_out:
      return WAIT_TIMEOUT;
    case zolt::MutexWait::failed:
      break;
  }
  return WAIT_FAILED;
}

int32_t ReleaseMutex(HANDLE handle) {
  return zolt::Known(handle) && zolt::UnlockInSegment(zolt::kNames[handle - 1].mutex) ? 1 : 0;
}

int32_t CloseHandle(HANDLE handle) {
  return zolt::Known(handle) || handle == zolt::kEventHandle ? 1 : 0;
}
