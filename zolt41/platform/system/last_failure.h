#ifndef ZOLT41_PLATFORM_SYSTEM_LAST_FAILURE_H_
#define ZOLT41_PLATFORM_SYSTEM_LAST_FAILURE_H_

#include <cstdint>
#include <string_view>

#include "zolt41/platform/system/api.h"

// Why the calling thread's last store or file operation failed.
//
// The operations themselves stay quiet (a read gives its default, a write gives nothing); this
// tells why. The result is one of
//   0  nothing failed; "there is no such value" is no failure either
//   1  denied: permissions, a read-only file system, a home that another id namespace works on
//   2  locked: another process held the lock for the whole of the wait
//   3  full: no space is left on the device, or the quota is used up
//   4  damaged: the file is no hive, or fails its checks
//   5  newer: the file was written by a newer version of the library
//   6  another I/O failure
//   7  a time-out
// Of an operation that is made of several, the first that failed counts, also where a later one
// gave what was asked for. If `subject` is not null, the path of the file or the name of the key
// that the failure concerns is copied into it, cut to `size` - 1 bytes, and to 256, and ended with
// a NUL; it is empty with result 0. Each thread has a word of its own; no call of another thread
// changes it.
ZOLT_API int32_t ZOLTLastFailure(char *subject, uint32_t size);

// How long, in milliseconds, the process waits for a lock that another process holds before an
// operation fails with 2. 5,000 at the start; 0 means not at all. It holds for all threads. For the
// channel zolt::Transaction waits no longer than this either, and a second at most.
ZOLT_API void ZOLTSetLockWait(uint32_t milliseconds);

namespace zolt {

enum class Failure : int32_t {
  none = 0,
  denied = 1,
  locked = 2,
  full = 3,
  damaged = 4,
  newer = 5,
  io = 6,
  timed_out = 7,
};

void ClearFailure();
void SetFailure(Failure failure, std::string_view subject);

// The failure that an errno value stands for.
Failure FailureFromErrno(int error);

uint32_t LockWait();

// The first failure among several operations that are one to the caller: noted after each of them,
// and left for ZOLTLastFailure at the end.
class FirstFailure {
 public:
  FirstFailure() = default;
  ~FirstFailure() {
    if (kept_) Restore();
  }
  FirstFailure(FirstFailure const &) = delete;
  FirstFailure &operator=(FirstFailure const &) = delete;

  // Keeps the failure of the operation that has just ended, if it is the first.
  void Note();

 private:
  void Restore() const;

  bool kept_ = false;
  Failure failure_ = Failure::none;
  uint32_t length_ = 0;
  char subject_[256];  // `length_` of it
};

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_LAST_FAILURE_H_
