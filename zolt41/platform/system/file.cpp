#include "zolt41/platform/system/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <limits>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>

#include "zolt41/platform/system/file_calls.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/platform/system/system_path.h"
#include "zolt41/platform/system/with_memory.h"

namespace {

constexpr int32_t kDone = 1;
constexpr int32_t kFailed = 0;
constexpr int64_t kLargest = std::numeric_limits<int32_t>::max();
constexpr mode_t kOwnerOnly = 0600;
// A file that is replaced between being opened and locked is opened once more, so many times.
constexpr int kTries = 100;

// Descriptors by handle.
class Handles {
 public:
  uint32_t Add(int descriptor) {
    std::lock_guard const lock(mutex_);
    descriptors_[++last_] = descriptor;
    return last_;
  }

  int Find(uint32_t handle) {
    std::lock_guard const lock(mutex_);
    auto const found = descriptors_.find(handle);
    return found == descriptors_.end() ? -1 : found->second;
  }

  int Take(uint32_t handle) {
    std::lock_guard const lock(mutex_);
    auto const found = descriptors_.find(handle);
    if (found == descriptors_.end()) return -1;
    int const descriptor = found->second;
    descriptors_.erase(found);
    return descriptor;
  }

  // The descriptor that the handle had.
  int Exchange(uint32_t handle, int descriptor) {
    std::lock_guard const lock(mutex_);
    return std::exchange(descriptors_.at(handle), descriptor);
  }

 private:
  std::mutex mutex_;
  std::unordered_map<uint32_t, int> descriptors_;
  uint32_t last_ = 0;
};

Handles &TheHandles() {
  // Never destroyed, since objects of clients may close files at the very end.
  static auto *const handles = new Handles;
  return *handles;
}

bool Fail(int error, std::string const &path) {
  zolt::SetFailure(zolt::FailureFromErrno(error), path);
  return false;
}

int32_t FailOnFile(int error) {
  zolt::SetFailure(zolt::FailureFromErrno(error), "");
  return kFailed;
}

bool LockFile(int descriptor, uint32_t access, uint32_t share) {
  bool const shared = access == GENERIC_READ && (share & FILE_SHARE_READ) != 0;
  // Only a descriptor that may write can lock others out.
  bool const exclusive = !shared && (access & GENERIC_WRITE) != 0;
  struct flock lock {};
  lock.l_type = static_cast<int16_t>(exclusive ? F_WRLCK : F_RDLCK);
  lock.l_whence = SEEK_SET;
  if (fcntl(descriptor, F_OFD_SETLK, &lock) == 0) return true;
  return errno != EAGAIN && errno != EACCES;
}

// The file that is open is still the one of that name.
bool InPlace(int descriptor, std::string const &path) {
  struct stat opened {};
  struct stat named {};
  return fstat(descriptor, &opened) == 0 && stat(path.c_str(), &named) == 0 &&
         opened.st_ino == named.st_ino && opened.st_dev == named.st_dev;
}

int FlagsOf(uint32_t access) {
  if ((access & GENERIC_WRITE) == 0) return O_RDONLY;
  return (access & GENERIC_READ) == 0 ? O_WRONLY : O_RDWR;
}

// -1, with the failure told.
int OpenPlain(std::string const &path, int flags) {
  // Nothing waits for the other end of a pipe.
  int const descriptor = zolt::TheFileCalls().open(
      path.c_str(), flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, kOwnerOnly);
  struct stat status {};
  if (descriptor < 0 || fstat(descriptor, &status) != 0) {
    Fail(errno, path);
  } else if (S_ISREG(status.st_mode)) {
    return descriptor;
  } else {
    Fail(EINVAL, path);
  }
  if (descriptor >= 0) close(descriptor);
  return -1;
}

int OpenLocked(std::string const &path, uint32_t access, uint32_t share, int more) {
  for (int i = 0; i < kTries; i++) {
    int const descriptor = OpenPlain(path, FlagsOf(access) | more);
    if (descriptor < 0) return -1;
    bool const locked = LockFile(descriptor, access, share);
    if (locked && InPlace(descriptor, path)) return descriptor;
    close(descriptor);
    if (!locked) break;
  }
  Fail(EAGAIN, path);
  return -1;
}

// Goes on until all is done, or no more is to be had. `transfer` moves what it can of the bytes
// from an offset on.
template <typename Transfer>
int32_t TransferAll(uint32_t file, uint32_t count, uint32_t *done, Transfer transfer) {
  int const descriptor = zolt::DescriptorOf(file);
  *done = 0;
  if (descriptor < 0) return FailOnFile(EBADF);
  while (*done < count) {
    ssize_t const moved = transfer(descriptor, *done, count - *done);
    if (moved < 0 && errno == EINTR) continue;
    if (moved < 0) return FailOnFile(errno);
    if (moved == 0) break;
    *done += static_cast<uint32_t>(moved);
  }
  return kDone;
}

// False, with nothing done and the failure told, if writing would lead beyond what positions tell.
bool HasPositions(int64_t from, uint32_t count, uint32_t *done) {
  if (from + count <= kLargest) return true;
  *done = 0;
  FailOnFile(EFBIG);
  return false;
}

bool CloseUnlocked(int descriptor) {
  // The lock goes with the last descriptor, of which a child of fork may have one.
  struct flock lock {};
  lock.l_type = F_UNLCK;
  lock.l_whence = SEEK_SET;
  fcntl(descriptor, F_OFD_SETLK, &lock);
  return close(descriptor) == 0;
}

// The handle of an open file, or none, with errno telling why: then a new file goes again, and an
// old one does not stay locked.
uint32_t HandleOf(int descriptor, std::string const &path, bool isNew) {
  if (descriptor < 0) return INVALID_HANDLE_VALUE;
  uint32_t const file =
      zolt::WithMemory(INVALID_HANDLE_VALUE, [&] { return TheHandles().Add(descriptor); });
  if (file != INVALID_HANDLE_VALUE) return file;
  if (isNew) zolt::TheFileCalls().unlink(path.c_str());
  CloseUnlocked(descriptor);
  errno = ENOMEM;
  return INVALID_HANDLE_VALUE;
}

}  // namespace

namespace zolt {

int DescriptorOf(uint32_t file) {
  return TheHandles().Find(file);
}

uint32_t AdoptNewFile(char const *path) {
  std::string const name(path);
  int const descriptor = OpenLocked(name, GENERIC_READ | GENERIC_WRITE, 0, O_CREAT | O_EXCL);
  return HandleOf(descriptor, name, true);
}

void TakeHandle(uint32_t file, uint32_t other) {
  CloseUnlocked(TheHandles().Exchange(file, TheHandles().Take(other)));
}

int32_t ReadFileAt(uint32_t file, uint32_t position, void *buffer, uint32_t count, uint32_t *done) {
  return TransferAll(file, count, done, [&](int descriptor, uint32_t from, uint32_t rest) {
    return TheFileCalls().readAt(descriptor, static_cast<char *>(buffer) + from, rest,
                                 off_t{position} + from);
  });
}

int32_t WriteFileAt(uint32_t file, uint32_t position, void const *buffer, uint32_t count,
                    uint32_t *done) {
  if (!HasPositions(position, count, done)) return kFailed;
  return TransferAll(file, count, done, [&](int descriptor, uint32_t from, uint32_t rest) {
    return TheFileCalls().writeAt(descriptor, static_cast<char const *>(buffer) + from, rest,
                                  off_t{position} + from);
  });
}

int32_t ResizeFile(uint32_t file, uint32_t size) {
  int const descriptor = DescriptorOf(file);
  if (descriptor < 0) return FailOnFile(EBADF);
  return TheFileCalls().resize(descriptor, size) == 0 ? kDone : FailOnFile(errno);
}

int64_t SizeOfFile(uint32_t file) {
  struct stat status {};
  if (fstat(DescriptorOf(file), &status) == 0) return status.st_size;
  FailOnFile(errno);
  return -1;
}

}  // namespace zolt

uint32_t CreateFileA(char const *name, uint32_t access, uint32_t share, void *,
                     uint32_t disposition, uint32_t, uint32_t) {
  zolt::ClearFailure();
  if (name == nullptr) return INVALID_HANDLE_VALUE;
  return zolt::WithMemory(INVALID_HANDLE_VALUE, [&] {
    std::string const path = zolt::SystemPath(name);
    bool const isNew = disposition == CREATE_NEW;
    return HandleOf(OpenLocked(path, access, share, isNew ? O_CREAT | O_EXCL : 0), path, isNew);
  });
}

int32_t CloseHandle(uint32_t file) {
  int const descriptor = TheHandles().Take(file);
  if (descriptor < 0) return kFailed;
  return CloseUnlocked(descriptor) ? kDone : kFailed;
}

int32_t FlushFileBuffers(uint32_t file) {
  int const descriptor = zolt::DescriptorOf(file);
  if (descriptor < 0) return FailOnFile(EBADF);
  return zolt::TheFileCalls().sync(descriptor) == 0 ? kDone : FailOnFile(errno);
}

int32_t ReadFile(uint32_t file, void *buffer, uint32_t count, uint32_t *done, void *) {
  return TransferAll(file, count, done, [&](int descriptor, uint32_t from, uint32_t rest) {
    return zolt::TheFileCalls().read(descriptor, static_cast<char *>(buffer) + from, rest);
  });
}

int32_t WriteFile(uint32_t file, void const *buffer, uint32_t count, uint32_t *done, void *) {
  off_t const position = lseek(zolt::DescriptorOf(file), 0, SEEK_CUR);
  if (!HasPositions(position, count, done)) return kFailed;
  return TransferAll(file, count, done, [&](int descriptor, uint32_t from, uint32_t rest) {
    return zolt::TheFileCalls().write(descriptor, static_cast<char const *>(buffer) + from, rest);
  });
}

int32_t SetEndOfFile(uint32_t file) {
  int const descriptor = zolt::DescriptorOf(file);
  if (descriptor < 0) return FailOnFile(EBADF);
  off_t const position = lseek(descriptor, 0, SEEK_CUR);
  return zolt::TheFileCalls().resize(descriptor, position) == 0 ? kDone : FailOnFile(errno);
}

uint32_t SetFilePointer(uint32_t file, int32_t distance, int32_t *, uint32_t method) {
  constexpr uint32_t kNoPosition = 0xFFFFFFFF;
  constexpr int kMethods[] = {SEEK_SET, SEEK_CUR, SEEK_END};
  int const descriptor = zolt::DescriptorOf(file);
  off_t const before = lseek(descriptor, 0, SEEK_CUR);
  off_t after = -1;
  errno = EINVAL;
  if (method <= FILE_END) after = lseek(descriptor, distance, kMethods[method]);
  if (after >= 0 && after <= kLargest) return static_cast<uint32_t>(after);
  if (after > kLargest) {
    lseek(descriptor, before, SEEK_SET);
    errno = EINVAL;
  }
  FailOnFile(errno);
  return kNoPosition;
}

int32_t DeleteFileA(char const *name) {
  zolt::ClearFailure();
  if (name == nullptr) return kFailed;
  return zolt::WithMemory(kFailed, [name] {
    std::string const path = zolt::SystemPath(name);
    return zolt::TheFileCalls().unlink(path.c_str()) == 0 || Fail(errno, path) ? kDone : kFailed;
  });
}
