#include "zolt41/platform/registry/directory_watch.h"

#include <fcntl.h>
#include <unistd.h>

#include <ctime>

namespace zolt {
namespace {

bool Same(timespec const &a, timespec const &b) {
  return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

}  // namespace

void DirectoryWatch::Open(std::string const &directory) {
  Close();
  descriptor_ = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

void DirectoryWatch::Close() {
  if (descriptor_ >= 0) close(descriptor_);
  descriptor_ = -1;
  settled_ = false;
}

bool DirectoryWatch::Unchanged() const {
  struct stat now {};
  // The second time changes when the directory itself is moved.
  return settled_ && fstat(descriptor_, &now) == 0 && Same(now.st_mtim, seen_.st_mtim) &&
         Same(now.st_ctim, seen_.st_ctim);
}

void DirectoryWatch::Begin() {
  settled_ = false;
  old_ = false;
  timespec now{};
  if (descriptor_ < 0 || fstat(descriptor_, &seen_) != 0) return;
  clock_gettime(CLOCK_REALTIME, &now);
  old_ = seen_.st_mtim.tv_sec + 1 < now.tv_sec && seen_.st_ctim.tv_sec + 1 < now.tv_sec;
}

}  // namespace zolt
