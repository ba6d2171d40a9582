#ifndef ZOLT41_TESTS_SUPPORT_FILE_SHIM_H_
#define ZOLT41_TESTS_SUPPORT_FILE_SHIM_H_

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "zolt41/platform/system/file_calls.h"

namespace zolt::testing {

// One call that changed a file, or brought it to the disk.
struct FileStep {
  enum Kind { create, write, resize, rename, unlink, sync } kind;
  std::string path;
  int64_t position = 0;    // of a write; the size of a resize
  std::string bytes = {};  // of a write; the new path of a rename
};

// Files by path, as calls leave them.
using Disk = std::map<std::string, std::string>;

inline void Do(FileStep const &step, Disk *disk) {
  if (step.kind == FileStep::sync) return;
  std::string &content = (*disk)[step.path];
  auto const position = static_cast<size_t>(step.position);
  if (step.kind == FileStep::create) content.clear();
  if (step.kind == FileStep::resize) content.resize(position);
  if (step.kind == FileStep::write) {
    content.resize(std::max(content.size(), position + step.bytes.size()));
    content.replace(position, step.bytes.size(), step.bytes);
  }
  if (step.kind == FileStep::rename) (*disk)[step.bytes] = content;
  if (step.kind == FileStep::rename || step.kind == FileStep::unlink) disk->erase(step.path);
}

// Stands between the library's files and the system for as long as it lives: keeps a record of all
// changes, and lets a call fail. Nothing is synced, which takes time and shows nothing here.
class FileShim {
 public:
  FileShim() : real_(TheFileCalls()) {
    shim = this;
    TheFileCalls() = {Open, real_.read, real_.write, ReadAt, WriteAt, Resize, Sync, Rename, Unlink};
  }
  ~FileShim() {
    TheFileCalls() = real_;
    shim = nullptr;
  }
  FileShim(FileShim const &) = delete;
  FileShim &operator=(FileShim const &) = delete;

  std::vector<FileStep> &steps() { return steps_; }
  // How many calls there were that can fail.
  int calls() const { return calls_; }

  // The call of that number from now on, from 1, fails with `error`; with `part` a write does a
  // part first. All later ones fail, too, if `forever`.
  void FailAt(int number, int error, bool part, bool forever) {
    failAt_ = calls_ + number;
    error_ = error;
    part_ = part;
    forever_ = forever;
  }
  void FailNothing() { failAt_ = 0; }
  // New files beside others cannot be made.
  void set_noNewFiles(bool none) { noNewFiles_ = none; }

 private:
  static std::string PathOf(int descriptor) {
    char path[PATH_MAX];
    std::string const link = "/proc/self/fd/" + std::to_string(descriptor);
    ssize_t const length = readlink(link.c_str(), path, sizeof path);
    return {path, static_cast<size_t>(length < 0 ? 0 : length)};
  }
  // A part of a page that is there is written as a whole or not at all.
  static bool IsWhole(int descriptor, size_t count, off_t position) {
    constexpr off_t kPage = 4096;
    off_t const last = position + static_cast<off_t>(count) - 1;
    struct stat status {};
    return fstat(descriptor, &status) == 0 && last < status.st_size &&
           position / kPage == last / kPage;
  }
  bool Fails() {
    calls_++;
    bool const fails = failAt_ != 0 && (forever_ ? calls_ >= failAt_ : calls_ == failAt_);
    if (fails) errno = error_;
    return fails;
  }

  static int Open(char const *path, int flags, mode_t mode) {
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
  static ssize_t ReadAt(int descriptor, void *bytes, size_t count, off_t position) {
    if (shim->Fails()) return -1;
    return shim->real_.readAt(descriptor, bytes, count, position);
  }
  static ssize_t WriteAt(int descriptor, void const *bytes, size_t count, off_t position) {
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
  static int Resize(int descriptor, off_t size) {
    if (shim->Fails()) return -1;
    shim->steps_.push_back({FileStep::resize, PathOf(descriptor), size});
    return shim->real_.resize(descriptor, size);
  }
  static int Sync(int descriptor) {
    if (shim->Fails()) return -1;
    shim->steps_.push_back({FileStep::sync, PathOf(descriptor)});
    return 0;
  }
  static int Rename(char const *from, char const *to) {
    if (shim->Fails()) return -1;
    shim->steps_.push_back({FileStep::rename, from, 0, to});
    return shim->real_.rename(from, to);
  }
  static int Unlink(char const *path) {
    int const result = shim->real_.unlink(path);
    if (result == 0) shim->steps_.push_back({FileStep::unlink, path});
    return result;
  }

  static inline FileShim *shim = nullptr;

  FileCalls real_;
  std::vector<FileStep> steps_;
  int calls_ = 0;
  int failAt_ = 0;
  int error_ = 0;
  bool part_ = false;
  bool forever_ = false;
  bool noNewFiles_ = false;
};

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_SUPPORT_FILE_SHIM_H_
