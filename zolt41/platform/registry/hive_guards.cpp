#include "zolt41/platform/registry/hive_guards.h"

#include <chrono>

namespace zolt {

Hive::Hive(Kind kind, ValueCache &cache)
    : kind_(kind), index_(kind == Kind::user ? 0 : 1), cache_(cache) {}

Hive::~Hive() = default;

Hive::Reading::~Reading() {
  if (held_ != nullptr) held_->Unlock();
}

Failure Hive::Reading::Enter(bool opening, bool *missing) {
  *missing = false;
  if (hive_.OwnTransaction()) return Failure::none;
  read_ = std::unique_lock(hive_.readLock_);
  bool const again = opening && hive_.state_ == State::missing;
  if (again || hive_.NeedsOpening(hive_.readWatch_)) {
    read_.unlock();
    std::unique_lock write(hive_.writeLock_, std::chrono::milliseconds(hive_.Patience()));
    if (!write.owns_lock()) return hive_.TimedOut();
    read_.lock();
    if ((opening && hive_.state_ == State::missing) || hive_.NeedsOpening(hive_.readWatch_)) {
      Failure const failure = hive_.Open(false);
      if (failure != Failure::none) return failure;
    }
  }
  *missing = hive_.state_ == State::missing;
  hive_.reader_.SetWait(hive_.Patience());
  // A writer may have died in the middle: then the log is to be mended, which only the owner of the
  // mutex may do. If the writer only stands still, what it had not committed is not seen.
  if (hive_.state_ == State::shared && hive_.words_->ChangeNoted()) {
    if (hive_.words_->Lock(hive_.Patience())) {
      held_ = hive_.words_.get();
    } else {
      hive_.LosePatience();
    }
  }
  return Failure::none;
}

Hive::Writing::~Writing() {
  if (held_ != nullptr) held_->Unlock();
}

Failure Hive::Writing::OpenForWriting() {
  std::lock_guard const read(hive_.readLock_);
  // Whether the user's file is still the same is looked at under the mutex, in a moment.
  bool const open = hive_.state_ == State::shared ||
                    (hive_.state_ == State::journal && !hive_.NeedsOpening(hive_.writeWatch_));
  if (!open) {
    Failure const failure = hive_.Open(true);
    if (failure != Failure::none) return failure;
  }
  if (hive_.state_ == State::shared || hive_.state_ == State::journal) {
    if (hive_.writable_.load(std::memory_order_relaxed)) return Failure::none;
  }
  SetFailure(hive_.writeFailure_, hive_.path_);
  return hive_.writeFailure_;
}

Failure Hive::Writing::Enter() {
  write_ = std::unique_lock(hive_.writeLock_, std::chrono::milliseconds(hive_.Patience()));
  if (!write_.owns_lock()) return hive_.TimedOut();
  if (hive_.OwnTransaction()) {
    if (hive_.transactionFailure_ != Failure::none) hive_.TellFailure(hive_.transactionFailure_);
    return hive_.transactionFailure_;
  }
  for (int attempt = 0; attempt < 3; attempt++) {
    if (Failure failure = OpenForWriting(); failure != Failure::none) return failure;
    if (hive_.state_ == State::shared) {
      if (!hive_.words_->Lock(hive_.Patience())) return hive_.TimedOut();
      hive_.NotTimedOut();
      held_ = hive_.words_.get();
      // The words, or the hive, may have been replaced by others while we waited.
      if (hive_.NeedsOpening(hive_.writeWatch_)) {
        held_->Unlock();
        held_ = nullptr;
        std::lock_guard const read(hive_.readLock_);
        hive_.CloseFiles();
        continue;
      }
    }
    if (Failure failure = hive_.OpenWriter(); failure != Failure::none) return failure;
    // Under the mutex SQLite waits for nobody.
    if (hive_.kind_ == Kind::machine) hive_.writer_.SetWait(hive_.Patience());
    return Failure::none;
  }
  SetFailure(Failure::locked, hive_.path_);
  return Failure::locked;
}

}  // namespace zolt
