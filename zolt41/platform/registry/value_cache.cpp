#include "zolt41/platform/registry/value_cache.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace zolt {
namespace {

constexpr uint32_t kWays = 4;
constexpr size_t kFirstBuckets = 256;
constexpr size_t kMostBuckets = size_t{1} << 16;
constexpr size_t kBlockBytes = 256u << 10;
constexpr std::array<uint32_t, 4> kSlotSizes = {128, 256, 512, 1024};

__extension__ using Wide = unsigned __int128;

uint64_t Mix(uint64_t a, uint64_t b) {
  Wide const product = static_cast<Wide>(a) * b;
  return static_cast<uint64_t>(product) ^ static_cast<uint64_t>(product >> 64);
}

uint64_t LoadWord(char const *bytes) {
  uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

// The last 1 to 7 bytes of a name, with zero bytes behind.
uint64_t LoadTail(char const *bytes, size_t count) {
  if (count >= 4) {
    uint32_t low;
    uint32_t high;
    std::memcpy(&low, bytes, 4);
    std::memcpy(&high, bytes + count - 4, 4);
    return low | static_cast<uint64_t>(high) << (8 * (count - 4));
  }
  uint64_t word = static_cast<uint8_t>(bytes[0]);
  word |= static_cast<uint64_t>(static_cast<uint8_t>(bytes[count / 2])) << (8 * (count / 2));
  return word | static_cast<uint64_t>(static_cast<uint8_t>(bytes[count - 1])) << (8 * (count - 1));
}

// Names and data are packed into words as they lie in memory; the shifts above say the same.
static_assert(std::endian::native == std::endian::little);

constexpr size_t Words(size_t bytes) {
  return (bytes + 7) / 8;
}

uint64_t HashOf(uint64_t owner, std::string_view name) {
  uint64_t hash = Mix(owner ^ 0x9E3779B97F4A7C15, name.size() ^ 0xE7037ED1A0B428DB);
  size_t at = 0;
  for (; at + 8 <= name.size(); at += 8) hash = Mix(hash ^ LoadWord(&name[at]), 0x8EBC6AF09C88C6E3);
  if (at < name.size()) {
    hash = Mix(hash ^ LoadTail(&name[at], name.size() - at), 0x589965CC75374CC3);
  }
  return hash | 1;  // 0 marks an empty place
}

uint64_t OwnerOf(ValueCache::Key const &key) {
  return static_cast<uint64_t>(key.key) << 1 | key.hive;
}

}  // namespace

// Readers take the fields with acquire loads and the writer stores them with release stores, so
// whoever sees a new field also sees the odd sequence number that was stored before it.
struct ValueCache::Slot {
  std::atomic<uint64_t> sequence;
  std::atomic<uint64_t> owner;
  std::atomic<uint64_t> stampWord;
  std::atomic<uint64_t> stampEpoch;
  std::atomic<uint64_t> lengths;  // data size, then name length, then index of the word
  std::atomic<uint64_t> type;
  uint64_t hash;  // these two belong to the filling thread
  uint32_t sizeClass;
  uint32_t reserved;
  std::atomic<uint64_t> words[1];

  static constexpr size_t kHead = 64;
  size_t Room() const { return (kSlotSizes[sizeClass] - kHead) / 8; }

  static uint64_t PackLengths(uint32_t size, size_t nameLength, uint32_t word) {
    return static_cast<uint64_t>(size) << 32 | static_cast<uint64_t>(nameLength) << 16 | word;
  }

  // Whether it is this value's, as it stands at this moment, with the lengths given.
  bool Holds(uint64_t packed, uint64_t wanted, std::string_view name) const {
    auto const length = static_cast<uint16_t>(packed >> 16);
    return owner.load(std::memory_order_acquire) == wanted && length == name.size() && NameIs(name);
  }

  // Copies the value out if it still is this one's throughout, and still vouched for.
  Result Read(uint64_t wanted, std::string_view name, StampSource const &source,
              uint32_t *foundType, void *data, uint32_t *size) const;

  bool NameIs(std::string_view name) const {
    size_t word = 0;
    size_t at = 0;
    for (; at + 8 <= name.size(); at += 8, word++) {
      if (words[word].load(std::memory_order_acquire) != LoadWord(&name[at])) return false;
    }
    return at == name.size() ||
           words[word].load(std::memory_order_acquire) == LoadTail(&name[at], name.size() - at);
  }
};

ValueCache::Result ValueCache::Slot::Read(uint64_t wanted, std::string_view name,
                                          StampSource const &source, uint32_t *foundType,
                                          void *data, uint32_t *size) const {
  uint64_t const before = sequence.load(std::memory_order_acquire);
  // Loaded once: the two lengths in it belong together, so what they span lies within the slot.
  uint64_t const packed = lengths.load(std::memory_order_acquire);
  if ((before & 1) != 0 || !Holds(packed, wanted, name)) return Result::miss;
  Stamp const stamp{stampWord.load(std::memory_order_acquire),
                    stampEpoch.load(std::memory_order_acquire)};
  auto const length = static_cast<uint32_t>(packed >> 32);
  auto const valueType = static_cast<uint32_t>(type.load(std::memory_order_acquire));
  bool const fits = data != nullptr && length != kAbsent && length <= *size;
  uint64_t copy[Words(kMaxDataSize)];
  size_t const first = Words(name.size());
  for (size_t i = 0; fits && i < Words(length) && i < Words(kMaxDataSize); i++) {
    copy[i] = words[first + i].load(std::memory_order_acquire);
  }
  if (sequence.load(std::memory_order_relaxed) != before ||
      source.Read(static_cast<uint16_t>(packed)) != stamp) {
    return Result::miss;
  }
  if (length == kAbsent) return Result::absent;
  return CopyOut(valueType, fits ? reinterpret_cast<char const *>(copy) : nullptr, length,
                 foundType, data, size);
}

struct alignas(64) ValueCache::Bucket {
  std::atomic<uint64_t> hashes[kWays];
  std::atomic<Slot *> slots[kWays];

  uint32_t Taken() const {
    uint32_t taken = 0;
    for (auto const &place : slots)
      taken += place.load(std::memory_order_relaxed) != nullptr ? 1 : 0;
    return taken;
  }

  bool Drop(Slot const *slot) {
    for (uint32_t way = 0; way < kWays; way++) {
      if (slots[way].load(std::memory_order_relaxed) != slot) continue;
      hashes[way].store(0, std::memory_order_release);
      slots[way].store(nullptr, std::memory_order_release);
      return true;
    }
    return false;
  }
};

struct ValueCache::Table {
  explicit Table(size_t count) : mask(count - 1), buckets(new Bucket[count]()) {}
  size_t mask;
  std::unique_ptr<Bucket[]> buckets;

  // Each value may lie in either of two buckets. With one alone, a few would be overfull at any
  // size of the table, and what they hold would push itself out for ever.
  std::array<Bucket *, 2> For(uint64_t hash) const {
    return {&buckets[(hash >> 32) & mask], &buckets[(hash >> 8) & mask]};
  }
};

ValueCache::ValueCache() {
  static_assert(offsetof(Slot, words) == Slot::kHead);
  tables_.push_back(std::make_unique<Table>(kFirstBuckets));
  table_.store(tables_.back().get(), std::memory_order_release);
}

ValueCache::~ValueCache() = default;

ValueCache::Result ValueCache::Find(Key const &key, StampSource const &source, uint32_t *type,
                                    void *data, uint32_t *size) {
  uint64_t const owner = OwnerOf(key);
  uint64_t const hash = HashOf(owner, key.name);
  for (Bucket const *bucket : table_.load(std::memory_order_acquire)->For(hash)) {
    for (uint32_t way = 0; way < kWays; way++) {
      if (bucket->hashes[way].load(std::memory_order_acquire) != hash) continue;
      Slot const *slot = bucket->slots[way].load(std::memory_order_acquire);
      if (slot == nullptr) continue;
      Result const result = slot->Read(owner, key.name, source, type, data, size);
      if (result != Result::miss) return result;
    }
  }
  return Result::miss;
}

ValueCache::Result ValueCache::CopyOut(uint32_t foundType, char const *bytes, uint32_t length,
                                       uint32_t *type, void *data, uint32_t *size) {
  uint32_t const wanted = *type;
  uint32_t const room = *size;
  *type = foundType;
  if (wanted != kAnyType && wanted != foundType) return Result::wrong_type;
  *size = length;
  if (data == nullptr) return Result::hit;
  if (length > room) return Result::too_small;
  bool const open = wanted == kText && (length == 0 || bytes[length - 1] != '\0');
  *size += open ? 1 : 0;
  if (*size > room) return Result::too_small;
  std::memcpy(data, bytes, length);
  if (open) static_cast<char *>(data)[length] = '\0';
  return Result::hit;
}

ValueCache::Slot *ValueCache::FindSlot(uint64_t hash, Key const &key) const {
  for (Bucket const *bucket : table_.load(std::memory_order_relaxed)->For(hash)) {
    for (auto const &place : bucket->slots) {
      Slot *slot = place.load(std::memory_order_relaxed);
      if (slot != nullptr && slot->hash == hash &&
          slot->Holds(slot->lengths.load(std::memory_order_relaxed), OwnerOf(key), key.name))
        return slot;
    }
  }
  return nullptr;
}

void ValueCache::Fill(Key const &key, uint32_t word, Stamp const &stamp, uint32_t type,
                      void const *data, uint32_t size) {
  std::lock_guard const guard(fillLock_);
  uint64_t const hash = HashOf(OwnerOf(key), key.name);
  uint32_t const stored = size == kAbsent ? 0 : size;
  size_t const needed = Words(key.name.size()) + Words(stored);
  Slot *slot = FindSlot(hash, key);
  bool const keep = key.name.size() <= kMaxNameLength && stored <= kMaxDataSize;
  if (slot != nullptr && (!keep || slot->Room() < needed)) {
    Remove(slot, hash);
    slot = nullptr;
  }
  if (!keep) return;
  bool const fresh = slot == nullptr;
  if (fresh) {
    uint32_t sizeClass = 0;
    while ((kSlotSizes[sizeClass] - Slot::kHead) / 8 < needed) sizeClass++;
    slot = TakeSlot(sizeClass);
    if (slot == nullptr) return;
  }
  uint64_t const sequence = slot->sequence.load(std::memory_order_relaxed);
  slot->sequence.store(sequence + 1, std::memory_order_relaxed);
  slot->hash = hash;
  slot->owner.store(OwnerOf(key), std::memory_order_release);
  slot->stampWord.store(stamp.word, std::memory_order_release);
  slot->stampEpoch.store(stamp.epoch, std::memory_order_release);
  slot->lengths.store(Slot::PackLengths(size, key.name.size(), word), std::memory_order_release);
  slot->type.store(type, std::memory_order_release);
  size_t at = 0;
  auto put = [&](char const *bytes, size_t count) {
    for (size_t i = 0; i < count; i += 8) {
      uint64_t whole = 0;
      std::memcpy(&whole, bytes + i, std::min<size_t>(count - i, 8));
      slot->words[at++].store(whole, std::memory_order_release);
    }
  };
  put(key.name.data(), key.name.size());
  put(static_cast<char const *>(data), stored);
  slot->sequence.store(sequence + 2, std::memory_order_release);
  if (fresh) {
    Place(table_.load(std::memory_order_relaxed), hash, slot);
    used_++;
    Grow();
  }
}

void ValueCache::Place(Table *table, uint64_t hash, Slot *slot) {
  auto const [first, second] = table->For(hash);
  Bucket &bucket = first->Taken() <= second->Taken() ? *first : *second;
  uint32_t way = 0;
  while (way < kWays && bucket.slots[way].load(std::memory_order_relaxed) != nullptr) way++;
  if (way == kWays) {
    way = static_cast<uint32_t>(clock_++ % kWays);
    Slot *old = bucket.slots[way].load(std::memory_order_relaxed);
    free_[old->sizeClass].push_back(old);
    used_--;
  }
  bucket.hashes[way].store(0, std::memory_order_release);
  bucket.slots[way].store(slot, std::memory_order_release);
  bucket.hashes[way].store(hash, std::memory_order_release);
}

void ValueCache::Remove(Slot *slot, uint64_t hash) {
  auto const [first, second] = table_.load(std::memory_order_relaxed)->For(hash);
  if (!first->Drop(slot)) second->Drop(slot);
  free_[slot->sizeClass].push_back(slot);
  used_--;
}

ValueCache::Slot *ValueCache::TakeSlot(uint32_t sizeClass) {
  if (!free_[sizeClass].empty()) {
    Slot *slot = free_[sizeClass].back();
    free_[sizeClass].pop_back();
    return slot;
  }
  if (Slot *slot = NewSlot(sizeClass); slot != nullptr) return slot;
  Table const *table = table_.load(std::memory_order_relaxed);
  // At the limit: some other value of this size has to go.
  for (int tries = 0; tries < 64; tries++) {
    if (EvictFrom(table->buckets[clock_++ & table->mask], sizeClass)) {
      Slot *slot = free_[sizeClass].back();
      free_[sizeClass].pop_back();
      return slot;
    }
  }
  return nullptr;
}

bool ValueCache::EvictFrom(Bucket &bucket, uint32_t sizeClass) {
  for (auto &place : bucket.slots) {
    Slot *slot = place.load(std::memory_order_relaxed);
    if (slot == nullptr || slot->sizeClass != sizeClass) continue;
    Remove(slot, slot->hash);
    return true;
  }
  return false;
}

ValueCache::Slot *ValueCache::NewSlot(uint32_t sizeClass) {
  size_t const bytes = kSlotSizes[sizeClass];
  if (static_cast<size_t>(blockEnd_ - blockNext_) * 8 < bytes) {
    if (slotBytes_ + kBlockBytes > kMaxSlotBytes) return nullptr;
    // Fresh pages come zeroed from the system, and only those that are used.
    blocks_.emplace_back(static_cast<uint64_t *>(std::calloc(kBlockBytes, 1)));
    if (blocks_.back() == nullptr) return nullptr;
    slotBytes_ += kBlockBytes;
    blockNext_ = blocks_.back().get();
    blockEnd_ = blockNext_ + kBlockBytes / 8;
  }
  auto *slot = reinterpret_cast<Slot *>(blockNext_);
  blockNext_ += bytes / 8;
  slot->sizeClass = sizeClass;
  return slot;
}

void ValueCache::Grow() {
  Table const *table = table_.load(std::memory_order_relaxed);
  size_t const buckets = table->mask + 1;
  if (used_ <= buckets * kWays * 5 / 8 || buckets >= kMostBuckets) return;
  tables_.push_back(std::make_unique<Table>(buckets * 4));
  Table *larger = tables_.back().get();
  for (size_t i = 0; i < buckets; i++) {
    for (auto &place : table->buckets[i].slots) {
      Slot *slot = place.load(std::memory_order_relaxed);
      if (slot != nullptr) Place(larger, slot->hash, slot);
    }
  }
  table_.store(larger, std::memory_order_release);
}

void ValueCache::Flush(uint32_t hive) {
  std::lock_guard const guard(fillLock_);
  Table const *table = table_.load(std::memory_order_relaxed);
  for (size_t i = 0; i <= table->mask; i++) {
    for (auto &place : table->buckets[i].slots) {
      Slot *slot = place.load(std::memory_order_relaxed);
      if (slot == nullptr || (slot->owner.load(std::memory_order_relaxed) & 1) != hive) continue;
      // The number moves on first: a reader that found the slot before must not trust it.
      slot->sequence.fetch_add(2, std::memory_order_release);
      Remove(slot, slot->hash);
    }
  }
}

}  // namespace zolt
