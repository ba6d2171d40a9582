#include "zolt41/platform/registry/generation.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>

namespace zolt {
namespace {

constexpr uint32_t kNoteSize = 256;
constexpr uint32_t kNoteAll = 0xFFFFFFFF;
constexpr uint32_t kCheckpointInterval = 500;
constexpr uint32_t kLongestInterval = 500 * 64;

}  // namespace

struct Generation::Block {
  SharedHeader header;
  uint32_t commits;          // since the last checkpoint
  uint32_t interval;         // commits until the next one is tried
  uint32_t checkpointEvery;  // what the interval is while nothing holds checkpoints back
  uint32_t reserved;
  Identity identity;
  std::atomic<uint64_t> logState;
  RobustMutex mutex;
  alignas(64) std::atomic<uint32_t> noteCount;
  std::atomic<uint16_t> note[kNoteSize];
  alignas(64) std::atomic<uint64_t> epoch;
  alignas(64) std::atomic<uint64_t> words[kValueWords + 1];
};

Generation::Block *Generation::block() const {
  return static_cast<Block *>(file_.block());
}

Failure Generation::Attach(std::string const &path) {
  static_assert(offsetof(Block, noteCount) == 128 && offsetof(Block, epoch) == 704 &&
                offsetof(Block, words) == 768 && sizeof(Block) == 33600);
  static_assert(std::atomic<uint64_t>::is_always_lock_free);
  SharedFile::Format const format{0x315F434E59535A5A, 1, sizeof(Block), sizeof(Block)};
  return file_.Attach(path, SharedFile::Owner::of_directory, format, [](void *memory, bool kept) {
    auto *fresh = static_cast<Block *>(memory);
    Identity const identity = kept ? fresh->identity : Identity{};
    std::memset(static_cast<char *>(memory) + sizeof(SharedHeader), 0,
                sizeof(Block) - sizeof(SharedHeader));
    // Which file the hive was last is worth keeping: a log that it left must not be applied to
    // another file that was put in its place.
    fresh->identity = identity;
    fresh->interval = kCheckpointInterval;
    fresh->checkpointEvery = kCheckpointInterval;
    InitRobustMutex(&fresh->mutex);
  });
}

bool Generation::Lock(uint32_t milliseconds) {
  MutexWait const wait = LockRobustMutex(&block()->mutex, milliseconds);
  if (wait != MutexWait::got && wait != MutexWait::abandoned) return false;
  if (wait == MutexWait::abandoned || ChangeNoted()) Mend();
  return true;
}

void Generation::Unlock() {
  UnlockRobustMutex(&block()->mutex);
}

bool Generation::ChangeNoted() const {
  return block()->noteCount.load(std::memory_order_acquire) != 0;
}

StampSource Generation::Words() const {
  return {block()->words, kWordMask, &block()->epoch};
}

namespace {

// Moves a word on to its next odd or even state, if it is not in such a state already.
void MakeOdd(std::atomic<uint64_t> &word) {
  word.store(word.load(std::memory_order_relaxed) | 1, std::memory_order_seq_cst);
}

void MakeEven(std::atomic<uint64_t> &word) {
  uint64_t const now = word.load(std::memory_order_relaxed);
  word.store(now + (now & 1), std::memory_order_seq_cst);
}

}  // namespace

void Generation::BeginChange(std::span<uint16_t const> indexes, bool all) {
  Block *b = block();
  if (all || indexes.size() > kNoteSize) {
    b->noteCount.store(kNoteAll, std::memory_order_seq_cst);
    MakeOdd(b->epoch);
    return;
  }
  for (size_t i = 0; i < indexes.size(); i++) {
    b->note[i].store(indexes[i], std::memory_order_relaxed);
  }
  b->noteCount.store(static_cast<uint32_t>(indexes.size()), std::memory_order_seq_cst);
  for (uint16_t const index : indexes) MakeOdd(b->words[index]);
}

void Generation::EndChange() {
  Mend();
}

void Generation::Mend() {
  Block *b = block();
  uint32_t const count = b->noteCount.load(std::memory_order_acquire);
  if (count == kNoteAll) MakeEven(b->epoch);
  for (uint32_t i = 0; count != kNoteAll && i < std::min(count, kNoteSize); i++) {
    uint16_t const index = b->note[i].load(std::memory_order_relaxed);
    if (index <= kKeysWord) MakeEven(b->words[index]);
  }
  b->noteCount.store(0, std::memory_order_release);
}

void Generation::FlushAll() {
  BeginChange({}, true);
  EndChange();
}

Generation::Identity Generation::identity() const {
  return block()->identity;
}

void Generation::SetIdentity(Identity const &identity) {
  block()->identity = identity;
}

uint64_t Generation::LogState() const {
  return block()->logState.load(std::memory_order_acquire);
}

void Generation::SetLogState(uint64_t state) {
  block()->logState.store(state, std::memory_order_release);
}

bool Generation::CountCommit() {
  Block *b = block();
  b->commits++;
  return b->commits >= b->interval;
}

void Generation::Checkpointed(bool whole) {
  Block *b = block();
  if (whole) b->commits = 0;
  b->interval = whole ? b->checkpointEvery : std::min(b->interval * 2, kLongestInterval);
}

}  // namespace zolt
