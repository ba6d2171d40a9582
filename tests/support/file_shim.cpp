#include "tests/support/file_shim.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

namespace zolt::testing {
namespace {

FileShim *shim = nullptr;

std::string PathOf(int descriptor) {
  char path[PATH_MAX];
  std::string const link = "/proc/self/fd/" + std::to_string(descriptor);
  ssize_t const length = readlink(link.c_str(), path, sizeof path);
  return {path, static_cast<size_t>(length < 0 ? 0 : length)};
}

// A part of a page that is there is written as a whole or not at all.
bool IsWhole(int descriptor, size_t count, off_t position) {
  constexpr off_t kPage = 4096;
  off_t const last = position + static_cast<off_t>(count) - 1;
  struct stat status {};
  return fstat(descriptor, &status) == 0 && last < status.st_size &&
         position / kPage == last / kPage;
}

}  // namespace

void Do(FileStep const &step, Disk *disk) {
  if (step.kind == FileStep::sync) return;
  std::string &content = (*disk)[step.path];
  auto const position = static_cast<size_t>(step.position);
  switch (step.kind) {
    case FileStep::create:
      content.clear();
      break;
    case FileStep::write:
      content.resize(std::max(content.size(), position + step.bytes.size()));
      content.replace(position, step.bytes.size(), step.bytes);
      break;
    case FileStep::resize:
      content.resize(position);
      break;
    case FileStep::rename:
      (*disk)[step.bytes] = content;
      disk->erase(step.path);
      break;
    case FileStep::unlink:
      disk->erase(step.path);
      break;
    case FileStep::sync:
      break;
  }
}

FileShim::FileShim() : real_(TheFileCalls()) {
  shim = this;
  TheFileCalls() = {Open, real_.read, real_.write, ReadAt, WriteAt, Resize, Sync, Rename, Unlink};
}

FileShim::~FileShim() {
  TheFileCalls() = real_;
  shim = nullptr;
}

void FileShim::FailAt(int number, int error, bool part, bool forever) {
  failAt_ = calls_ + number;
  error_ = error;
  part_ = part;
  forever_ = forever;
}

bool FileShim::Fails() {
  calls_++;
  bool const fails = failAt_ != 0 && (forever_ ? calls_ >= failAt_ : calls_ == failAt_);
  if (fails) errno = error_;
  return fails;
}

int FileShim::Open(char const *path, int flags, mode_t mode) {
  bool const creates = (flags & O_CREAT) != 0;
  if (creates && shim->noNewFiles_) {
    errno = EACCES;
    return -1;
  }
  if (creates && shim->Fails()) return -1;
  int const descriptor = shim->real_.open(path, flags, mode);
  if (creates && descriptor >= 0) shim->steps_.push_back({FileStep::create, path});
  return descriptor;
}

ssize_t FileShim::ReadAt(int descriptor, void *bytes, size_t count, off_t position) {
  if (shim->Fails()) return -1;
  return shim->real_.readAt(descriptor, bytes, count, position);
}

ssize_t FileShim::WriteAt(int descriptor, void const *bytes, size_t count, off_t position) {
  if (shim->Fails()) {
    if (!shim->part_ || count < 2 || (shim->forever_ && IsWhole(descriptor, count, position)))
      return -1;
    // The next call of the same write fails as a whole.
    shim->part_ = false;
    shim->failAt_++;
    count /= 2;
  }
  ssize_t const done = shim->real_.writeAt(descriptor, bytes, count, position);
  if (done > 0) {
    std::string const written(static_cast<char const *>(bytes), static_cast<size_t>(done));
    shim->steps_.push_back({FileStep::write, PathOf(descriptor), position, written});
  }
  return done;
}

int FileShim::Resize(int descriptor, off_t size) {
  if (shim->Fails()) return -1;
  shim->steps_.push_back({FileStep::resize, PathOf(descriptor), size});
  return shim->real_.resize(descriptor, size);
}

int FileShim::Sync(int descriptor) {
  if (shim->Fails()) return -1;
  shim->steps_.push_back({FileStep::sync, PathOf(descriptor)});
  return 0;
}

int FileShim::Rename(char const *from, char const *to) {
  if (shim->Fails()) return -1;
  shim->steps_.push_back({FileStep::rename, from, 0, to});
  return shim->real_.rename(from, to);
}

int FileShim::Unlink(char const *path) {
  int const result = shim->real_.unlink(path);
  if (result == 0) shim->steps_.push_back({FileStep::unlink, path});
  return result;
}

}  // namespace zolt::testing
