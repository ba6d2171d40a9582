#include "zolt41/platform/kernel/futex.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <ctime>

namespace zolt {

void SleepOn(std::atomic<uint32_t> *word, uint32_t expected, std::chrono::nanoseconds wait) {
  constexpr int64_t kSecond = 1'000'000'000;
  timespec const limit = {wait.count() / kSecond, wait.count() % kSecond};
  syscall(SYS_futex, word, FUTEX_WAIT, expected, wait.count() < 0 ? nullptr : &limit, nullptr, 0);
}

void WakeSleepers(std::atomic<uint32_t> *word, int32_t count) {
  syscall(SYS_futex, word, FUTEX_WAKE, count, nullptr, nullptr, 0);
}

}  // namespace zolt
