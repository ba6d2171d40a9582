#include "zolt41/platform/system/shared_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "zolt41/platform/system/home.h"

namespace zolt {
namespace {

using BootId = std::array<uint8_t, 16>;

// The id that the kernel draws at each start of the machine; zero bytes if it cannot be read.
BootId ReadBootId() {
  BootId id{};
  int const file = open("/proc/sys/kernel/random/boot_id", O_RDONLY | O_CLOEXEC);
  if (file < 0) return id;
  char text[36];
  bool const whole = read(file, text, sizeof text) == static_cast<ssize_t>(sizeof text);
  close(file);
  if (!whole) return id;
  size_t nibble = 0;
  for (char const c : text) {
    if (c == '-') continue;
    auto const digit = static_cast<uint8_t>(c <= '9' ? c - '0' : c - 'a' + 10);
    id[nibble / 2] = static_cast<uint8_t>(id[nibble / 2] << 4 | (digit & 15));
    nibble++;
  }
  return id;
}

BootId const &ThisBoot() {
  static BootId const id = ReadBootId();
  return id;
}

uint64_t ProcessNamespace() {
  struct stat found {};
  return stat("/proc/self/ns/pid", &found) == 0 ? found.st_ino : 0;
}

bool SetLock(int descriptor, short type) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  return fcntl(descriptor, F_OFD_SETLK, &lock) == 0;
}

// As posix_fallocate, whatever signals come.
int AllocateBytes(int descriptor, off_t offset, off_t size) {
  int error = 0;
  do {
    error = posix_fallocate(descriptor, offset, size);
  } while (error == EINTR);
  return error;
}

// The open file is the one at `path`.
bool IsAt(int descriptor, std::string const &path) {
  struct stat here {};
  struct stat there {};
  return fstat(descriptor, &here) == 0 && here.st_nlink > 0 && stat(path.c_str(), &there) == 0 &&
         here.st_ino == there.st_ino && here.st_dev == there.st_dev;
}

}  // namespace

Failure SharedFile::Fail(Failure failure) const {
  SetFailure(failure, path_);
  return failure;
}

Failure SharedFile::OpenFile() {
  constexpr int kFlags = O_RDWR | O_CLOEXEC | O_NOFOLLOW;
  descriptor_ = open(path_.c_str(), kFlags);
  if (descriptor_ < 0 && errno == ENOENT) {
    // Made by nobody else, so it is ours; a loser of this race opens the winner's.
    descriptor_ = open(path_.c_str(), kFlags | O_CREAT | O_EXCL, 0600);
    if (descriptor_ >= 0) {
      if (owner_ == Owner::of_directory) GiveToOwnerOfParent(path_);
    } else if (errno == EEXIST) {
      descriptor_ = open(path_.c_str(), kFlags);
    }
  }
  if (descriptor_ < 0) return Fail(FailureFromErrno(errno));
  return CheckOwner();
}

Failure SharedFile::CheckOwner() const {
  struct stat found {};
  if (fstat(descriptor_, &found) != 0) return Fail(FailureFromErrno(errno));
  bool const lent = owner_ == Owner::of_directory && geteuid() == 0;
  bool const ours = found.st_uid == geteuid() || lent;
  bool const closed = (found.st_mode & 077) == 0;
  if (!S_ISREG(found.st_mode) || !ours || !closed || found.st_nlink > 1) {
    return Fail(Failure::denied);
  }
  return Failure::none;
}

SharedHeader *SharedFile::Map(uint32_t size, Failure *failure) {
  void *block = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor_, 0);
  if (block == MAP_FAILED) {
    *failure = Fail(FailureFromErrno(errno));
    return nullptr;
  }
  block_ = block;
  size_ = size;
  return static_cast<SharedHeader *>(block);
}

Failure SharedFile::Reset(Format const &format, std::function<void(void *, bool)> const &reset) {
  struct stat found {};
  if (fstat(descriptor_, &found) != 0) return Fail(FailureFromErrno(errno));
  bool const whole = format.front == format.size;
  bool const sized = whole && found.st_size == static_cast<off_t>(format.size);
  if (!sized && (ftruncate(descriptor_, 0) != 0 || ftruncate(descriptor_, format.size) != 0)) {
    return Fail(FailureFromErrno(errno));
  }
  // Every page gets its place on the disk now: a write to a mapping has no way to report a full
  // disk but a signal.
  if (int const error = AllocateBytes(descriptor_, 0, format.front); error != 0) {
    return Fail(FailureFromErrno(error));
  }
  Failure failure = Failure::none;
  SharedHeader *header = Map(format.size, &failure);
  if (header == nullptr) return failure;
  bool const kept = sized && header->magic.load(std::memory_order_acquire) == format.magic &&
                    header->layout == format.layout && header->size == format.size;
  header->magic.store(0, std::memory_order_release);
  // What was cut off and allocated anew is zero, and touching it would only cost time.
  if (sized && !kept) {
    std::memset(static_cast<char *>(block_) + sizeof(uint64_t), 0, format.size - sizeof(uint64_t));
  }
  reset(block_, kept);
  header->layout = format.layout;
  header->size = format.size;
  std::memcpy(header->bootId, ThisBoot().data(), sizeof header->bootId);
  header->processNamespace = ProcessNamespace();
  header->magic.store(format.magic, std::memory_order_release);
  return Failure::none;
}

Failure SharedFile::AttachShared(Format const &format, bool *again) {
  struct stat found {};
  if (fstat(descriptor_, &found) != 0) return Fail(FailureFromErrno(errno));
  *again = found.st_size < static_cast<off_t>(sizeof(SharedHeader));
  if (*again) return Failure::none;
  auto const size = static_cast<uint32_t>(found.st_size);
  Failure failure = Failure::none;
  SharedHeader const *header = Map(size, &failure);
  if (header == nullptr) return failure;
  uint64_t const magic = header->magic.load(std::memory_order_acquire);
  *again = magic == 0;
  if (*again) return Failure::none;
  if (magic != format.magic) return Fail(Failure::damaged);
  if (header->layout != format.layout || size != format.size) return Fail(Failure::newer);
  // Somebody holds it who lives in another run of a machine: a directory shared by two machines.
  if (std::memcmp(ThisBoot().data(), header->bootId, sizeof header->bootId) != 0) {
    return Fail(Failure::denied);
  }
  return Failure::none;
}

Failure SharedFile::Attach(std::string const &path, Owner owner, Format const &format,
                           std::function<void(void *, bool)> const &reset) {
  Detach();
  path_ = path;
  owner_ = owner;
  auto const deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(LockWait());
  Failure failure = Failure::none;
  for (;;) {
    if (descriptor_ < 0) failure = OpenFile();
    if (failure != Failure::none) break;
    bool again = true;
    if (SetLock(descriptor_, F_WRLCK)) {
      again = !InPlace();
      if (!again) {
        failure = Reset(format, reset);
        SetLock(descriptor_, F_RDLCK);
      }
    } else if (SetLock(descriptor_, F_RDLCK)) {
      failure = AttachShared(format, &again);
      again = again || (failure == Failure::none && !InPlace());
    }
    if (failure != Failure::none) break;
    if (!again) return Failure::none;
    Detach();
    if (std::chrono::steady_clock::now() > deadline) {
      failure = Fail(Failure::locked);
      break;
    }
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  Detach();
  return failure;
}

bool SharedFile::Allocate(uint32_t offset, uint32_t size) const {
  return AllocateBytes(descriptor_, offset, size) == 0;
}

void SharedFile::Detach() {
  // The lock belongs to the open file, which lives as long as it is mapped: unmap first.
  if (block_ != nullptr) munmap(block_, size_);
  if (descriptor_ >= 0) close(descriptor_);
  block_ = nullptr;
  descriptor_ = -1;
}

void SharedFile::Retire() {
  // The lock outlives the descriptor as long as the file is mapped, so it is given up by itself.
  if (descriptor_ >= 0) {
    SetLock(descriptor_, F_UNLCK);
    close(descriptor_);
  }
  descriptor_ = -1;
}

void SharedFile::Abandon() {
  Retire();
  block_ = nullptr;
}

bool SharedFile::ReattachInChild() {
  if (block_ == nullptr || descriptor_ < 0) return true;
  int const own = open(path_.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
  struct stat here {};
  struct stat there {};
  bool const same = own >= 0 && fstat(own, &here) == 0 && fstat(descriptor_, &there) == 0 &&
                    here.st_ino == there.st_ino && here.st_dev == there.st_dev;
  // Looked for again behind the lock: until then the parent may remove it. Mapped in the same
  // place, so that nothing that points into it has to know.
  if (same && SetLock(own, F_RDLCK) && IsAt(own, path_) &&
      mmap(block_, size_, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, own, 0) == block_) {
    close(descriptor_);
    descriptor_ = own;
    return true;
  }
  // The lock stays the parent's to give up. Without a descriptor the file counts as moved, and is
  // attached to anew at the next need.
  if (own >= 0) close(own);
  close(descriptor_);
  descriptor_ = -1;
  return false;
}

bool SharedFile::ForeignNamespace() const {
  return static_cast<SharedHeader const *>(block_)->processNamespace != ProcessNamespace();
}

bool SharedFile::InPlace() const {
  return IsAt(descriptor_, path_);
}

bool SharedFile::Linked() const {
  struct stat here {};
  return fstat(descriptor_, &here) == 0 && here.st_nlink > 0;
}

void SharedFile::Share() {
  SetLock(descriptor_, F_RDLCK);
}

void SharedFile::Unlink() const {
  if (InPlace()) unlink(path_.c_str());
}

bool SharedFile::TakeAlone() {
  return descriptor_ >= 0 && SetLock(descriptor_, F_WRLCK);
}

}  // namespace zolt
