#ifndef ZOLT41_PLATFORM_REGISTRY_VALUE_CACHE_H_
#define ZOLT41_PLATFORM_REGISTRY_VALUE_CACHE_H_

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

#include "zolt41/platform/registry/stamp.h"

namespace zolt {

// The values that this process has read, and the names that it found to have no value. A lookup
// takes no lock, no system call and no memory; it reads slots that are guarded by sequence numbers,
// beside threads that fill them. Slots are used again but never given back, so a lookup can
// always read the one that it found, and notices by the number if it changed meanwhile.
//
// At most kMaxSlotBytes of slots and, with tables that were outgrown, 8 MiB of tables.
class ValueCache {
 public:
  static constexpr size_t kMaxSlotBytes = 32u << 20;
  static constexpr uint32_t kMaxNameLength = 259;
  static constexpr uint32_t kMaxDataSize = 512;

  struct Key {
    uint32_t hive;  // 0 or 1
    int64_t key;
    std::string_view name;  // in the spelling that the caller uses
  };

  enum class Result {
    hit,
    absent,      // known not to exist
    wrong_type,  // `type` was asked for and the value has another; see `*type`
    too_small,   // the data do not fit; `*size` is what they need
    miss,
  };

  static constexpr uint32_t kAnyType = 0xFFFFFFFF;
  static constexpr uint32_t kText = 1;  // a text, which gets a NUL behind it if it has none

  ValueCache();
  ~ValueCache();
  ValueCache(ValueCache const &) = delete;
  ValueCache &operator=(ValueCache const &) = delete;

  // Looks up a value that `source` still vouches for. For a hit, `*size` (in: what `data` holds)
  // becomes the size; `data` may be null, then nothing is copied. `*type` is the type wanted, kText
  // or kAnyType, and becomes the value's. Nothing is copied but for a hit.
  Result Find(Key const &key, StampSource const &source, uint32_t *type, void *data,
              uint32_t *size);

  // Keeps a value, or with `data` null and `size` kAbsent that there is none. What is too long to
  // be kept is forgotten. Any thread.
  static constexpr uint32_t kAbsent = 0xFFFFFFFF;
  void Fill(Key const &key, uint32_t word, Stamp const &stamp, uint32_t type, void const *data,
            uint32_t size);

  // Copies a value out as Find does, without asking anybody.
  static Result CopyOut(uint32_t foundType, char const *bytes, uint32_t length, uint32_t *type,
                        void *data, uint32_t *size);

  // Forgets everything of one hive. Any thread.
  void Flush(uint32_t hive);

  // For fork: no thread is filling while this is held.
  std::mutex &FillLock() { return fillLock_; }

  size_t SlotBytes() const { return slotBytes_; }

 private:
  struct Slot;
  struct Bucket;
  struct Table;
  struct Free {
    void operator()(uint64_t *block) const { std::free(block); }
  };

  Slot *FindSlot(uint64_t hash, Key const &key) const;
  Slot *TakeSlot(uint32_t sizeClass);
  Slot *NewSlot(uint32_t sizeClass);
  bool EvictFrom(Bucket &bucket, uint32_t sizeClass);
  void Place(Table *table, uint64_t hash, Slot *slot);
  void Remove(Slot *slot, uint64_t hash);
  void Grow();

  std::atomic<Table *> table_;
  std::mutex fillLock_;
  std::vector<std::unique_ptr<Table>> tables_;
  std::vector<std::unique_ptr<uint64_t, Free>> blocks_;
  std::vector<Slot *> free_[4];
  uint64_t *blockNext_ = nullptr;
  uint64_t *blockEnd_ = nullptr;
  size_t slotBytes_ = 0;
  size_t used_ = 0;
  size_t clock_ = 0;
};

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_REGISTRY_VALUE_CACHE_H_
