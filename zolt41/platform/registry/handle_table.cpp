#include "zolt41/platform/registry/handle_table.h"

#include <utility>

namespace zolt {
namespace {

// A handle: bit 62, then the serial, then the index. So no handle equals a predefined one.
constexpr uint64_t kMark = uint64_t{1} << 62;
constexpr uint64_t kSerials = uint64_t{1} << 40;

}  // namespace

HKEY HandleTable::Add(OpenKey const &open, std::string path) {
  std::lock_guard const guard(lock_);
  if (free_.empty()) {
    if (next_ == 1u << kIndexBits) return 0;
    // So that none needs memory to be closed.
    if (free_.capacity() <= next_) free_.reserve(size_t{2} * next_ + 16);
    free_.push_back(next_++);
  }
  uint32_t const index = free_.back();
  free_.pop_back();
  auto &chunk = chunks_[index >> kChunkBits];
  if (chunk.load(std::memory_order_relaxed) == nullptr) {
    chunk.store(new Chunk(), std::memory_order_release);
  }
  Entry *entry = &(*chunk.load(std::memory_order_relaxed))[index & ((1u << kChunkBits) - 1)];
  serial_ = (serial_ + 1) % kSerials;
  HKEY const handle = kMark | serial_ << kIndexBits | index;
  entry->rights.store(static_cast<uint64_t>(open.hive) << 32 | open.access,
                      std::memory_order_release);
  entry->key.store(open.key.id, std::memory_order_release);
  entry->incarnation.store(open.key.incarnation, std::memory_order_release);
  entry->triedWord.store(~uint64_t{0}, std::memory_order_relaxed);
  entry->triedEpoch.store(~uint64_t{0}, std::memory_order_relaxed);
  entry->path = std::move(path);
  entry->serial.store(handle, std::memory_order_release);
  openCount_.fetch_add(1, std::memory_order_acq_rel);
  return handle;
}

bool HandleTable::Remove(HKEY handle) {
  std::lock_guard const guard(lock_);
  Entry *entry = Live(handle);
  if (entry == nullptr) return false;
  entry->serial.store(0, std::memory_order_release);
  free_.push_back(static_cast<uint32_t>(handle) & ((1u << kIndexBits) - 1));
  openCount_.fetch_sub(1, std::memory_order_acq_rel);
  return true;
}

std::string HandleTable::PathOf(HKEY handle) {
  std::lock_guard const guard(lock_);
  Entry const *entry = Live(handle);
  return entry == nullptr ? std::string() : entry->path;
}

void HandleTable::SetKey(HKEY handle, HiveKey key) {
  std::lock_guard const guard(lock_);
  Entry *entry = Live(handle);
  if (entry == nullptr) return;
  entry->triedWord.store(~uint64_t{0}, std::memory_order_relaxed);
  entry->key.store(key.id, std::memory_order_release);
  entry->incarnation.store(key.incarnation, std::memory_order_release);
}

void HandleTable::SetTried(HKEY handle, Stamp const &stamp) {
  std::lock_guard const guard(lock_);
  Entry *entry = Live(handle);
  if (entry == nullptr) return;
  entry->triedWord.store(stamp.word, std::memory_order_release);
  entry->triedEpoch.store(stamp.epoch, std::memory_order_release);
}

bool HandleTable::Tried(HKEY handle, Stamp const &stamp) const {
  Entry const *entry = Live(handle);
  return entry != nullptr && entry->triedWord.load(std::memory_order_acquire) == stamp.word &&
         entry->triedEpoch.load(std::memory_order_acquire) == stamp.epoch;
}

}  // namespace zolt
