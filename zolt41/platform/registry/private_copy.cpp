#include "zolt41/platform/registry/private_copy.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <thread>
#include <vector>

namespace zolt {
namespace {

constexpr char const *kSuffixes[] = {"", "-wal", "-journal"};

// SQLite's lock bytes, as its file format fixes them.
constexpr off_t kSharedFirst = 0x40000000 + 2;
constexpr off_t kSharedSize = 510;

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  Descriptor(Descriptor const &) = delete;
  Descriptor &operator=(Descriptor const &) = delete;
  int number() const { return number_; }

 private:
  int number_;
};

bool LockShared(int file) {
  struct flock lock {};
  lock.l_type = F_RDLCK;
  lock.l_whence = SEEK_SET;
  lock.l_start = kSharedFirst;
  lock.l_len = kSharedSize;
  return fcntl(file, F_OFD_SETLK, &lock) == 0;
}

Failure CopyFile(int from, std::string const &to) {
  Descriptor const target(open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (target.number() < 0) return FailureFromErrno(errno);
  std::vector<char> buffer(size_t{1} << 18);
  off_t at = 0;
  for (;;) {
    ssize_t const got = pread(from, buffer.data(), buffer.size(), at);
    if (got == 0) return Failure::none;
    if (got < 0) return FailureFromErrno(errno);
    if (pwrite(target.number(), buffer.data(), static_cast<size_t>(got), at) != got) {
      return errno == 0 ? Failure::full : FailureFromErrno(errno);
    }
    at += got;
  }
}

// The head of a log: it changes when the log begins anew.
std::array<char, 32> LogHead(std::string const &path) {
  std::array<char, 32> head{};
  Descriptor const log(open((path + "-wal").c_str(), O_RDONLY | O_CLOEXEC));
  if (log.number() >= 0 && pread(log.number(), head.data(), head.size(), 0) < 0) head.fill(0);
  return head;
}

// The file first and the log after it: whatever a checkpoint moves into the file meanwhile stands
// in the log as well, as long as that does not begin anew.
Failure CopyOnce(std::string const &path, std::string const &target, bool *whole) {
  Descriptor const hive(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (hive.number() < 0) return FailureFromErrno(errno);
  *whole = LockShared(hive.number());
  if (!*whole) return Failure::none;
  std::array<char, 32> const head = LogHead(path);
  if (Failure failure = CopyFile(hive.number(), target); failure != Failure::none) return failure;
  for (size_t i = 1; i < std::size(kSuffixes); i++) {
    Descriptor const part(open((path + kSuffixes[i]).c_str(), O_RDONLY | O_CLOEXEC));
    if (part.number() < 0) {
      if (errno == ENOENT) continue;
      return FailureFromErrno(errno);
    }
    Failure const failure = CopyFile(part.number(), target + kSuffixes[i]);
    if (failure != Failure::none) return failure;
  }
  *whole = head == LogHead(path);
  return Failure::none;
}

Failure Fail(Failure failure, std::string const &path) {
  SetFailure(failure, path);
  return failure;
}

Failure CopyAndOpen(std::string const &path, std::string const &directory, Connection &connection,
                    CopyState *state) {
  auto const deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(LockWait());
  for (int attempt = 0;; attempt++) {
    std::string const target = directory + "/" + std::to_string(attempt);
    *state = StateOfHive(path);
    bool whole = false;
    Failure const failure = CopyOnce(path, target, &whole);
    if (failure != Failure::none) return Fail(failure, path);
    if (whole)
      return connection.Open(target, Connection::Mode::copy, Connection::Journal::rollback, 0);
    if (std::chrono::steady_clock::now() >= deadline) return Fail(Failure::locked, path);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

}  // namespace

CopyState StateOfHive(std::string const &path) {
  CopyState state{};
  for (size_t i = 0; i < std::size(kSuffixes); i++) {
    struct stat found {};
    if (stat((path + kSuffixes[i]).c_str(), &found) != 0) continue;
    state.inodes[i] = found.st_ino;
    state.sizes[i] = found.st_size;
    state.times[i] = found.st_mtim.tv_sec * 1000000000 + found.st_mtim.tv_nsec;
  }
  return state;
}

Failure OpenPrivateCopy(std::string const &path, Connection &connection, CopyState *state) {
  char const *chosen = secure_getenv("TMPDIR");
  std::string directory = std::string(chosen != nullptr ? chosen : "/tmp") + "/zolt41-XXXXXX";
  if (mkdtemp(directory.data()) == nullptr) return Fail(FailureFromErrno(errno), directory);
  Failure const failure = CopyAndOpen(path, directory, connection, state);
  // What is open stays readable without its name.
  std::error_code ignored;
  std::filesystem::remove_all(directory, ignored);
  return failure;
}

}  // namespace zolt
