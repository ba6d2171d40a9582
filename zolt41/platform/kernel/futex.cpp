#include "zolt41/platform/kernel/futex.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <iterator>

namespace zolt {

void SleepOn(std::atomic<uint32_t> *word, uint32_t expected, std::chrono::nanoseconds wait) {
  constexpr int64_t kSecond = 1'000'000'000;
  timespec const limit = {wait.count() / kSecond, wait.count() % kSecond};
  syscall(SYS_futex, word, FUTEX_WAIT, expected, wait.count() < 0 ? nullptr : &limit, nullptr, 0);
}

bool SleepOnEither(std::atomic<uint32_t> *word, uint32_t expected, std::atomic<uint32_t> *other,
                   uint32_t otherExpected) {
  futex_waitv const words[] = {{expected, reinterpret_cast<uintptr_t>(word), FUTEX_32, 0},
                               {otherExpected, reinterpret_cast<uintptr_t>(other), FUTEX_32, 0}};
  return syscall(SYS_futex_waitv, words, std::size(words), 0, nullptr, CLOCK_MONOTONIC) >= 0 ||
         (errno != ENOSYS && errno != EPERM);
}

void WakeSleepers(std::atomic<uint32_t> *word, int32_t count) {
  syscall(SYS_futex, word, FUTEX_WAKE, count, nullptr, nullptr, 0);
}

}  // namespace zolt
