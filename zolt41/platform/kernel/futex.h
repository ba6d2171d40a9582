#ifndef ZOLT41_PLATFORM_KERNEL_FUTEX_H_
#define ZOLT41_PLATFORM_KERNEL_FUTEX_H_

#include <atomic>
#include <chrono>
#include <cstdint>

namespace zolt {

// A word in shared memory to sleep on. Nobody can be left hanging on it by the death of another,
// as can happen with a condition variable.

// Sleeps while the word holds `expected`; comes back at a wake, at times for no reason, and after
// `wait`, if that is not negative.
void SleepOn(std::atomic<uint32_t> *word, uint32_t expected, std::chrono::nanoseconds wait);

// The same on two words without a limit. False where the system has no such call.
bool SleepOnEither(std::atomic<uint32_t> *word, uint32_t expected, std::atomic<uint32_t> *other,
                   uint32_t otherExpected);

// Wakes up to `count` sleepers of all processes.
void WakeSleepers(std::atomic<uint32_t> *word, int32_t count);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_KERNEL_FUTEX_H_
