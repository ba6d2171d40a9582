#include "tools/zolt/card_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "tools/zolt/errors.h"

namespace zolt::tool {

namespace {

constexpr std::chrono::milliseconds kPause{20};

// It was not replaced since it was opened.
bool StandsAt(std::string const &path, int file) {
  struct stat opened {};
  struct stat named {};
  return fstat(file, &opened) == 0 && stat(path.c_str(), &named) == 0 &&
         opened.st_ino == named.st_ino && opened.st_dev == named.st_dev;
}

}  // namespace

CardLock::CardLock(std::string const &path, uint32_t wait) {
  auto const end = std::chrono::steady_clock::now() + std::chrono::milliseconds(wait);
  for (;;) {
    file_ = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file_ < 0) return;
    bool const locked = flock(file_, LOCK_EX | LOCK_NB) == 0;
    bool const busy = !locked && errno == EWOULDBLOCK;
    if (!busy && (!locked || StandsAt(path, file_))) return;
    close(file_);
    file_ = -1;
    if (busy && std::chrono::steady_clock::now() >= end) {
      throw ToolError(kLocked, "locked", path, "another process changes it",
                      "try again, or wait longer with --wait S");
    }
    if (busy) std::this_thread::sleep_for(kPause);
  }
}

CardLock::~CardLock() {
  if (file_ >= 0) close(file_);
}

}  // namespace zolt::tool
