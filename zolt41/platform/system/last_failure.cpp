#include "zolt41/platform/system/last_failure.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>

namespace zolt {
namespace {

struct LastFailure {
  Failure failure;
  uint32_t length;
  char subject[256];
};

// Cleared at the start of every operation, cached reads included, so it must not cost a call into
// the loader as the default model does in a shared library.
__attribute__((tls_model("initial-exec"))) thread_local LastFailure last{};

std::atomic<uint32_t> lockWait{5000};

struct ErrnoRow {
  int error;
  Failure failure;
};

constexpr ErrnoRow kErrnoRows[] = {
    {EACCES, Failure::denied},  {EPERM, Failure::denied},     {EROFS, Failure::denied},
    {ELOOP, Failure::denied},   {ENOSPC, Failure::full},      {EDQUOT, Failure::full},
    {EFBIG, Failure::full},     {EAGAIN, Failure::locked},    {EBUSY, Failure::locked},
    {ETXTBSY, Failure::locked}, {ETIMEDOUT, Failure::locked}, {EOVERFLOW, Failure::damaged},
};

}  // namespace

void ClearFailure() {
  if (last.failure != Failure::none) last.failure = Failure::none;
}

void SetFailure(Failure failure, std::string_view subject) {
  last.failure = failure;
  last.length = static_cast<uint32_t>(std::min(subject.size(), sizeof last.subject));
  std::memcpy(last.subject, subject.data(), last.length);
}

Failure FailureFromErrno(int error) {
  for (ErrnoRow const &row : kErrnoRows) {
    if (row.error == error) return row.failure;
  }
  return Failure::io;
}

void FirstFailure::Note() {
  if (kept_ || last.failure == Failure::none) return;
  kept_ = true;
  failure_ = last.failure;
  length_ = last.length;
  std::memcpy(subject_, last.subject, length_);
}

void FirstFailure::Restore() const {
  SetFailure(failure_, {subject_, length_});
}

uint32_t LockWait() {
  return lockWait.load(std::memory_order_relaxed);
}

}  // namespace zolt

int32_t ZOLTLastFailure(char *subject, uint32_t size) {
  using zolt::last;
  if (subject != nullptr && size > 0) {
    uint32_t const length =
        last.failure == zolt::Failure::none ? 0 : std::min(last.length, size - 1);
    std::memcpy(subject, last.subject, length);
    subject[length] = '\0';
  }
  return static_cast<int32_t>(last.failure);
}

void ZOLTSetLockWait(uint32_t milliseconds) {
  zolt::lockWait.store(milliseconds, std::memory_order_relaxed);
}
