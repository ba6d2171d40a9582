#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <new>
#include <utility>

#include "zolt41/platform/registry/hive_guards.h"

namespace zolt {
namespace {

// The log is moved into the file by the last one to leave if it is longer than this.
constexpr uint64_t kLongLog = 256u << 10;

// How long to wait, in milliseconds, shortly after a full wait was in vain.
constexpr uint32_t kShortWait = 10;

// How long to wait, in milliseconds, where a copy will do as well; and how long it then does.
constexpr uint32_t kReadWait = 100;
constexpr int64_t kCopyTime = 1000;

// Where SQLite's file format keeps the counter that every commit in rollback mode changes. The
// four bytes behind it, the size of the file in pages, change with it.
constexpr size_t kChangeCounter = 24;

std::atomic<uint64_t> const kNoEpoch{0};

int64_t Milliseconds() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

}  // namespace

uint32_t Hive::Patience() const {
  int64_t const until = impatientUntil_.load(std::memory_order_relaxed);
  if (until == 0 || Milliseconds() >= until) return LockWait();
  return std::min(LockWait(), kShortWait);
}

void Hive::LosePatience() {
  int64_t const until = impatientUntil_.load(std::memory_order_relaxed);
  if (until == 0 || Milliseconds() >= until) {
    impatientUntil_.store(Milliseconds() + LockWait(), std::memory_order_relaxed);
  }
}

Failure Hive::TimedOut() {
  LosePatience();
  TellFailure(Failure::locked);
  return Failure::locked;
}

void Hive::TellFailure(Failure failure) {
  std::lock_guard const guard(failureLock_);
  SetFailure(failure, failedPath_);
}

void Hive::SetPath(std::string path) {
  path_ = std::move(path);
  std::lock_guard const guard(failureLock_);
  failedPath_ = path_;
}

void Hive::NotTimedOut() {
  if (impatientUntil_.load(std::memory_order_relaxed) != 0) {
    impatientUntil_.store(0, std::memory_order_relaxed);
  }
}

bool Hive::NeedsOpening(DirectoryWatch &watch) const {
  if (state_ == State::closed) return true;
  if (state_ == State::missing) return false;
  if (state_ == State::copy) {
    // A copy that was taken because somebody kept the lock is not kept long.
    bool const due = writeFailure_ == Failure::locked && Milliseconds() >= copyUntil_;
    return due || StateOfHive(path_) != copied_;
  }
  if (watch.Unchanged()) return false;
  watch.Begin();
  if (Moved()) return true;
  watch.Settle();
  return false;
}

// The hive, or the file of its words, is no longer the one that was opened.
bool Hive::Moved() const {
  struct stat found {};
  return stat(path_.c_str(), &found) != 0 || found.st_dev != identity_.device ||
         found.st_ino != identity_.inode || (state_ == State::shared && !words_->Linked());
}

void Hive::CloseConnections() {
  reader_.Close();
  writer_.Close();
  writable_.store(false, std::memory_order_relaxed);
  state_ = State::closed;
}

void Hive::ForgetCopies() {
  source_.store(nullptr, std::memory_order_release);
  identity_ = {};
  keys_.Forget();
  lists_.Forget();
  cache_.Flush(index_);
}

void Hive::CloseFiles() {
  CloseConnections();
  ForgetCopies();
}

void Hive::Watch(StampSource const &source) {
  sources_.push_back(std::make_unique<StampSource>(source));
  source_.store(sources_.back().get(), std::memory_order_release);
}

Failure Hive::Open(bool create) {
  CloseConnections();
  openings_.fetch_add(1, std::memory_order_relaxed);
  homes_ = ResolveHomes();
  ClearFailure();
  Failure const failure = kind_ == Kind::user ? OpenUser(create) : OpenMachine(create);
  if (failure == Failure::none && state_ != State::missing) CountFile();
  if (failure == Failure::none) ClearFailure();
  // What is kept of the hive stays good if it is the same file with the same words.
  bool const watched = state_ == State::shared || state_ == State::journal;
  if (!watched) source_.store(nullptr, std::memory_order_release);
  std::string const directory = std::filesystem::path(path_).parent_path();
  readWatch_.Open(directory);
  writeWatch_.Open(directory);
  if (failure != Failure::none) CloseFiles();
  std::lock_guard const guard(failureLock_);
  // A tree that is not there, or that is there for reading only, reads well; why it cannot be
  // written is told when it is written.
  openFailure_ = failure;
  return failure;
}

void Hive::CountFile() {
  Generation::Identity const now = HiveIdentity(path_);
  if (now.inode == lastFile_.inode && now.device == lastFile_.device) return;
  lastFile_ = now;
  incarnation_.fetch_add(1, std::memory_order_release);
}

Failure Hive::MakeFile(std::string const &directory, bool isPublic, bool create,
                       HiveAccess *access) {
  if (Failure failure = InspectHive(path_, access); failure != Failure::none) return failure;
  if (*access != HiveAccess::missing) return Failure::none;
  TakeForMissing();
  if (!create) return Failure::none;
  writeFailure_ = EnsureDirectory(directory, isPublic);
  if (writeFailure_ == Failure::none) {
    SetPath(ResolveHivePath(path_));
    if (Failure failure = InspectHive(path_, access); failure != Failure::none) return failure;
    writeFailure_ = MakeHiveFile(path_, isPublic ? 0644 : 0600);
  }
  if (writeFailure_ == Failure::none) *access = HiveAccess::writable;
  // Who may not make the file reads an empty tree; a disk that is full, say, is told at once.
  return writeFailure_ == Failure::denied ? Failure::none : writeFailure_;
}

void Hive::Retire() {
  // Readers without a lock may still look at its words.
  if (words_ != nullptr && words_->attached()) {
    words_->Retire();
    oldWords_.push_back(std::move(words_));
  }
  words_ = std::make_unique<Generation>();
}

Failure Hive::AttachWords() {
  std::string const path = std::filesystem::path(path_).replace_filename("user.sync");
  if (words_ != nullptr && words_->attached() && words_->InPlace()) return Failure::none;
  CloseFiles();
  Retire();
  return words_->Attach(path);
}

Failure Hive::OpenUser(bool create) {
  SetPath(ResolveHivePath(homes_.user + "/user.hive"));
  HiveAccess access = HiveAccess::missing;
  if (Failure failure = MakeFile(homes_.user, false, create, &access); failure != Failure::none) {
    return failure;
  }
  if (access == HiveAccess::missing) return Failure::none;
  if (access == HiveAccess::readable) return OpenCopy(Failure::denied);
  Failure const failure = AttachWords();
  if (failure == Failure::denied || failure == Failure::full) return OpenCopy(failure);
  if (failure != Failure::none) return failure;
  if (words_->ForeignNamespace()) return OpenCopy(Failure::denied);
  if (!words_->Lock(create ? Patience() : std::min(Patience(), kReadWait))) {
    // Somebody who stands still in the middle of a change keeps nobody from reading.
    if (create) LosePatience();
    copyUntil_ = Milliseconds() + kCopyTime;
    Failure const copied = OpenCopy(Failure::locked);
    // Of a hive that others are still making there is nothing to copy.
    bool const waits = !create && copied == Failure::locked && reader_.unfilled();
    if (!waits || !words_->Lock(Patience())) return copied;
  }
  if (create) NotTimedOut();
  Failure const opened = OpenUnderMutex(create);
  words_->Unlock();
  return opened;
}

Failure Hive::OpenUnderMutex(bool create) {
  Generation::Identity const before = words_->identity();
  Generation::Identity const now = HiveIdentity(path_);
  if (before.inode != 0 && (before.inode != now.inode || before.device != now.device)) {
    if (before.log != 0 && before.log == now.log) RemoveStaleLog(path_);
    words_->FlushAll();
  }
  auto const mode = create ? Connection::Mode::create : Connection::Mode::write;
  // While the process had no connection, nobody vouched for what others did to the file.
  if (source_.load(std::memory_order_relaxed) != nullptr && StateOfHive(path_) != atFork_) {
    ForgetCopies();
  }
  Failure const failure = reader_.Open(path_, mode, Connection::Journal::log, Patience());
  if (failure != Failure::none) return failure;
  if (reader_.unfilled()) return TakeForMissing();
  bool const same = identity_.inode == now.inode && identity_.device == now.device &&
                    source_.load(std::memory_order_relaxed) != nullptr;
  if (!same) {
    ForgetCopies();
    Watch(words_->Words());
  }
  identity_ = HiveIdentity(path_);
  words_->SetIdentity(identity_);
  // Another state than our last commit left: somebody else wrote the hive, or its log was mended.
  if (uint64_t const state = reader_.LogState(); state != words_->LogState()) {
    words_->FlushAll();
    words_->SetLogState(state);
  }
  state_ = State::shared;
  writable_.store(true, std::memory_order_relaxed);
  return Failure::none;
}

// A file that its maker could not fill is as good as none, until somebody makes the hive.
Failure Hive::TakeForMissing() {
  reader_.Close();
  state_ = State::missing;
  writeFailure_ = Failure::denied;
  return Failure::none;
}

Failure Hive::OpenCopy(Failure writeFailure) {
  writeFailure_ = writeFailure;
  Failure const failure = OpenPrivateCopy(path_, reader_, &copied_);
  if (failure != Failure::none) return failure;
  if (reader_.unfilled()) {
    if (writeFailure == Failure::denied) return TakeForMissing();
    SetFailure(writeFailure, path_);
    return writeFailure;
  }
  state_ = State::copy;
  // What only time keeps us from writing is opened for writing.
  bool const passing = writeFailure == Failure::locked || writeFailure == Failure::full;
  writable_.store(passing, std::memory_order_relaxed);
  return Failure::none;
}

bool Hive::MapMachineWords() {
  // Never closed: SQLite's locks on the file would go with the first descriptor that is.
  int const file = open(path_.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return false;
  struct stat found {};
  if (fstat(file, &found) != 0 || found.st_size < 100) return false;
  void *page = mmap(nullptr, 4096, PROT_READ, MAP_SHARED, file, 0);
  if (page == MAP_FAILED) return false;
  auto const *counter = reinterpret_cast<std::atomic<uint64_t> const *>(
      static_cast<char const *>(page) + kChangeCounter);
  Watch({counter, 0, &kNoEpoch});
  return true;
}

Failure Hive::OpenMachine(bool create) {
  SetPath(ResolveHivePath(homes_.machine + "/machine.hive"));
  HiveAccess access = HiveAccess::missing;
  if (Failure failure = MakeFile(homes_.machine, homes_.machineIsPublic, create, &access);
      failure != Failure::none) {
    return failure;
  }
  if (access == HiveAccess::missing) return Failure::none;
  bool const writable = access == HiveAccess::writable;
  auto const mode = !writable ? Connection::Mode::read
                    : create  ? Connection::Mode::create
                              : Connection::Mode::write;
  writeFailure_ = writable ? Failure::none : Failure::denied;
  Failure const failure = reader_.Open(path_, mode, Connection::Journal::rollback, Patience());
  // A journal that a dead writer left can only be rolled back by somebody who may write.
  if (!writable && (failure == Failure::denied || failure == Failure::io)) return OpenCopy(failure);
  if (failure != Failure::none) return failure;
  if (reader_.unfilled()) return TakeForMissing();
  Generation::Identity const now = HiveIdentity(path_);
  if (now.inode != identity_.inode || now.device != identity_.device ||
      source_.load(std::memory_order_relaxed) == nullptr) {
    ForgetCopies();
    MapMachineWords();
  }
  identity_ = now;
  state_ = State::journal;
  writable_.store(writable, std::memory_order_relaxed);
  return Failure::none;
}

Failure Hive::OpenWriter() {
  if (writer_.open()) return Failure::none;
  auto const journal =
      kind_ == Kind::user ? Connection::Journal::log : Connection::Journal::rollback;
  return writer_.Open(path_, Connection::Mode::write, journal, Patience());
}

int32_t Hive::CheckWritable() {
  if (writable_.load(std::memory_order_relaxed)) return ERROR_SUCCESS;
  std::lock_guard const read(readLock_);
  Failure const failure = writeFailure_ == Failure::none ? Failure::denied : writeFailure_;
  SetFailure(failure, path_);
  return Give(failure);
}

Stamp Hive::KeysStamp() const {
  StampSource const *source = source_.load(std::memory_order_acquire);
  if (source != nullptr) return source->Read(kKeysWord);
  // Nothing vouches for a tree that is missing, or that a copy is read of: it is looked at anew at
  // every opening, and otherwise once a second.
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return {openings_.load(std::memory_order_relaxed), static_cast<uint64_t>(now.tv_sec)};
}

void Hive::ReportFailure() {
  std::lock_guard const guard(failureLock_);
  if (openFailure_ != Failure::none) SetFailure(openFailure_, failedPath_);
}

bool Hive::HomeChanged() {
  std::lock_guard const read(readLock_);
  return state_ != State::closed && !(ResolveHomes() == homes_);
}

void Hive::Leave() {
  // A thread that never ends its work must not keep the process from ending; the system closes
  // what is left open.
  std::unique_lock const write(writeLock_, std::chrono::milliseconds(Patience()));
  if (!write.owns_lock()) return;
  std::lock_guard const read(readLock_);
  Abandon();
  bool const locked = state_ == State::shared && words_->Lock(Patience());
  if (locked && LogSize(path_) > kLongLog && words_->TakeAlone()) {
    if (OpenWriter() == Failure::none) words_->Checkpointed(writer_.Checkpoint(true));
    words_->Share();
  }
  CloseFiles();
  if (locked) words_->Unlock();
  Retire();
}

void Hive::PrepareFork() {
  readLock_.lock();
  failureLock_.lock();
  // SQLite's locks belong to the process that took them, so a child must inherit no connection.
  Abandon();
  bool const locked = state_ == State::shared && words_->Lock(LockWait());
  CloseConnections();
  atFork_ = StateOfHive(path_);
  if (locked) words_->Unlock();
}

void Hive::AfterFork(bool child) {
  if (!child) {
    failureLock_.unlock();
    readLock_.unlock();
    writeLock_.unlock();
    return;
  }
  // The locks belong to the parent's thread; the child's only thread gets new ones.
  if (words_ != nullptr) words_->ReattachInChild();
  RenewInChild(&failureLock_);
  RenewInChild(&readLock_);
  RenewInChild(&writeLock_);
}

}  // namespace zolt
