#ifndef ZOLT41_PLATFORM_REGISTRY_HANDLE_TABLE_H_
#define ZOLT41_PLATFORM_REGISTRY_HANDLE_TABLE_H_

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "zolt41/platform/registry/hive.h"
#include "zolt41/platform/registry/registry.h"
#include "zolt41/platform/registry/stamp.h"

namespace zolt {

// What a handle stands for.
struct OpenKey {
  uint32_t hive;    // 0 the user's, 1 the machine's
  uint32_t access;  // KEY_READ, or that with KEY_WRITE
  HiveKey key;      // with the number kNoKey for a key that does not exist
};
inline constexpr int64_t kNoKey = -1;

// The open handles of the process. A handle that was closed is noticed: numbers carry a serial
// that comes back only after 2^40 handles.
class HandleTable {
 public:
  // Gives 0 when the table is full. `path` leads from the root to the key: names, each ended by a
  // NUL.
  HKEY Add(OpenKey const &open, std::string path);
  bool Remove(HKEY handle);

  // Takes no lock and no memory. False for a handle that is not open.
  bool Find(HKEY handle, OpenKey *open) const;

  // The path of an open handle; empty for the root, and for a handle that is not open.
  std::string PathOf(HKEY handle);
  // What was found at the path when it was looked for again.
  void SetKey(HKEY handle, HiveKey key);
  // That nothing was found while the words stood so. Read without a lock.
  void SetTried(HKEY handle, Stamp const &stamp);
  bool Tried(HKEY handle, Stamp const &stamp) const;

  uint32_t OpenCount() const { return openCount_.load(std::memory_order_acquire); }

  std::mutex &Lock() { return lock_; }

 private:
  struct Entry {
    std::atomic<uint64_t> serial;  // 0 while free
    std::atomic<uint64_t> rights;  // hive and access
    std::atomic<int64_t> key;
    std::atomic<uint64_t> incarnation;
    std::atomic<uint64_t> triedWord;
    std::atomic<uint64_t> triedEpoch;
    std::string path;
  };
  static constexpr uint32_t kChunkBits = 10;
  static constexpr uint32_t kIndexBits = 20;
  using Chunk = std::array<Entry, 1u << kChunkBits>;

  Entry *At(uint32_t index) const;
  Entry *Live(HKEY handle) const;

  std::array<std::atomic<Chunk *>, 1u << (kIndexBits - kChunkBits)> chunks_{};
  std::mutex lock_;
  std::vector<uint32_t> free_;
  uint32_t next_ = 0;
  uint64_t serial_ = 0;
  std::atomic<uint32_t> openCount_{0};
};

// Here since a step of a walk asks.
inline HandleTable::Entry *HandleTable::At(uint32_t index) const {
  Chunk *chunk = chunks_[index >> kChunkBits].load(std::memory_order_acquire);
  return chunk == nullptr ? nullptr : &(*chunk)[index & ((1u << kChunkBits) - 1)];
}

inline HandleTable::Entry *HandleTable::Live(HKEY handle) const {
  if ((handle >> 60) != 4) return nullptr;
  Entry *entry = At(static_cast<uint32_t>(handle) & ((1u << kIndexBits) - 1));
  bool const live = entry != nullptr && entry->serial.load(std::memory_order_acquire) == handle;
  return live ? entry : nullptr;
}

inline bool HandleTable::Find(HKEY handle, OpenKey *open) const {
  Entry const *entry = Live(handle);
  if (entry == nullptr) return false;
  uint64_t const rights = entry->rights.load(std::memory_order_acquire);
  open->hive = static_cast<uint32_t>(rights >> 32);
  open->access = static_cast<uint32_t>(rights);
  // In this order, the reverse of SetKey's, a new incarnation comes with its own key.
  open->key.incarnation = entry->incarnation.load(std::memory_order_acquire);
  open->key.id = entry->key.load(std::memory_order_acquire);
  // Closed meanwhile, and perhaps opened as another key.
  return entry->serial.load(std::memory_order_relaxed) == handle;
}

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_REGISTRY_HANDLE_TABLE_H_
