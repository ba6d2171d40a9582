#ifndef ZOLT41_TESTS_SUPPORT_FULL_DISK_H_
#define ZOLT41_TESTS_SUPPORT_FULL_DISK_H_

#include <sys/resource.h>

#include <csignal>

#include "tests/support/child.h"

namespace zolt::testing {

// For as long as it lives, no file of this process, or of one that it starts, grows beyond `size`
// bytes: for the library the same as a full disk.
class FullDisk {
 public:
  explicit FullDisk(rlim_t size = 4096) : handler_(signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    rlimit const limit{size, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &before_);
    signal(SIGXFSZ, handler_);
  }
  FullDisk(FullDisk const &) = delete;
  FullDisk &operator=(FullDisk const &) = delete;

 private:
  rlimit before_{};
  void (*handler_)(int);
};

// Whether all of `run` holds in a process whose files have no room for more than 4,096 bytes.
inline bool HoldsOnAFullDisk(std::function<bool()> const &run) {
  return HoldsInChild([&] {
    FullDisk const limit;
    return run();
  });
}

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_SUPPORT_FULL_DISK_H_
