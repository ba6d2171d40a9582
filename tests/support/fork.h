#ifndef ZOLT41_TESTS_SUPPORT_FORK_H_
#define ZOLT41_TESTS_SUPPORT_FORK_H_

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <memory>
#include <thread>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#define ZOLT_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZOLT_ADDRESS_SANITIZER 1
#endif
#endif

namespace zolt::testing {

#ifdef ZOLT_ADDRESS_SANITIZER

// Takes each lock of AddressSanitizer's allocator and the one of its threads: a thread without a
// cache of its own allocates of every size, of which there are four between a power of two and the
// next.
inline void TakeTheAllocatorsLocks() {
  std::thread([] {
    std::vector<std::unique_ptr<char[]>> taken;
    for (size_t power = 16; power < size_t{1} << 19; power *= 2)
      for (size_t size = power; size < 2 * power; size += power / 4)
        taken.push_back(std::make_unique_for_overwrite<char[]>(size));
  }).join();
}

// The allocator of AddressSanitizer (before its version 15) does not look after its locks in a
// fork: a child waits for ever where another thread of its parent held one. Such a child is given
// up and made again.
inline pid_t Fork() {
  for (;;) {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) return -1;
    pid_t const id = fork();
    if (id == 0) {
      TakeTheAllocatorsLocks();
      if (write(ends[1], "", 1) != 1) _exit(99);
      close(ends[0]);
      close(ends[1]);
      return 0;
    }
    close(ends[1]);
    pollfd wait{ends[0], POLLIN, 0};
    bool const whole = id < 0 || poll(&wait, 1, 5000) == 1;
    close(ends[0]);
    if (whole) return id;
    kill(id, SIGKILL);
    waitpid(id, nullptr, 0);
  }
}

#else

inline pid_t Fork() {
  return fork();
}

#endif

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_SUPPORT_FORK_H_
