#ifndef ZOLT41_PLATFORM_REGISTRY_HANDLE_TABLE_H_
#define ZOLT41_PLATFORM_REGISTRY_HANDLE_TABLE_H_

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "zolt41/platform/registry/registry.h"
#include "zolt41/platform/registry/stamp.h"

namespace zolt {

// What a handle stands for.
struct OpenKey {
  uint32_t hive;    // 0 the user's, 1 the machine's
  uint32_t access;  // KEY_READ, or that with KEY_WRITE
  int64_t key;      // kNoKey for a key that did not exist when it was opened
};
inline constexpr int64_t kNoKey = -1;

// The open handles of the process. A handle that was closed is noticed: numbers carry a serial
// that comes back only after 2^40 handles.
class HandleTable {
 public:
  // Gives 0 when the table is full. `ancestor` and `path` say where a key that does not exist is to
  // be looked for later, see Place.
  HKEY Add(OpenKey const &open, int64_t ancestor, std::string path);
  bool Remove(HKEY handle);

  // Takes no lock and no memory. False for a handle that is not open.
  bool Find(HKEY handle, OpenKey *open) const;

  // Where the key of a handle with kNoKey is to be looked for: the nearest key above it that
  // exists, and the path of names from there, each ended by a NUL.
  bool Place(HKEY handle, int64_t *ancestor, std::string *path);
  // What was found there.
  void SetKey(HKEY handle, int64_t key);
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
    std::atomic<uint64_t> triedWord;
    std::atomic<uint64_t> triedEpoch;
    int64_t ancestor;
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

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_REGISTRY_HANDLE_TABLE_H_
