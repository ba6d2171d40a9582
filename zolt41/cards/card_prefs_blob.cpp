#include <algorithm>
#include <array>
#include <cstring>
#include <utility>
#include <vector>

#include "zolt41/cards/blob_format.h"
#include "zolt41/cards/card_prefs.h"
#include "zolt41/foundation/az_compare.h"
#include "zolt41/foundation/endian.h"
#include "zolt41/foundation/mem_block.h"
#include "zolt41/platform/system/with_memory.h"

using zolt::LoadLittle32;
using zolt::StoreLittle32;

namespace {

using Slot = std::array<char, zolt::kSlotSize>;

constexpr char kEmptyBlob[zolt::kBlobHead] = {zolt::kBlobLittleEndian};

bool IsSwapped(char const *data) {
  return data[zolt::kBlobOrder] != zolt::kBlobLittleEndian;
}

uint32_t CountIn(char const *data) {
  uint32_t const count = LoadLittle32(data + zolt::kBlobCount);
  return IsSwapped(data) ? zolt::Swapped32(count) : count;
}

bool HoldsItsTable(char const *data, uint32_t size) {
  return data != nullptr && size >= zolt::kBlobHead &&
         CountIn(data) <= (size - zolt::kBlobHead) / zolt::kSlotSize;
}

void Swap(char *number) {
  StoreLittle32(zolt::Swapped32(LoadLittle32(number)), number);
}

// In the order of the table.
bool Precedes(char const *a, char const *b) {
  uint32_t const first = LoadLittle32(a + zolt::kSlotSection);
  uint32_t const second = LoadLittle32(b + zolt::kSlotSection);
  if (first != second) return first > second;
  return AZStrCompare(a + zolt::kSlotName, b + zolt::kSlotName) < 0;
}

}  // namespace

// Makes the table and the pool out of bytes that hold them. False without memory.
bool TYUserPrefs::TakeTable(char const *data, uint32_t size) {
  bool const swapped = IsSwapped(data);
  uint32_t const count = CountIn(data);
  uint32_t const table = zolt::kBlobHead + count * zolt::kSlotSize;
  slots_ = NewMem(table);
  pool_ = NewMem(size - table);
  if (slots_ == nullptr || pool_ == nullptr) return false;
  std::memcpy(slots_, data, table);
  std::memcpy(pool_, data + table, size - table);
  slots_[zolt::kBlobOrder] = zolt::kBlobLittleEndian;
  StoreLittle32(count, slots_ + zolt::kBlobCount);
  for (uint32_t i = 0; swapped && i < count; i++) {
    for (uint32_t const place :
         {zolt::kSlotSection, zolt::kSlotValueSize, zolt::kSlotValueOffset}) {
      Swap(SlotAt(i) + place);
    }
  }
  return true;
}

// Ends every name, and makes absent what lies outside the pool, and of values that share its bytes
// those behind the first ones that fill it: no store gives more bytes than it was given. A slot
// without a value leads nowhere, and is kept as it is.
void TYUserPrefs::CheckTable(uint32_t poolSize) {
  uint32_t rest = poolSize;
  for (uint32_t i = 0; i < static_cast<uint32_t>(Count()); i++) {
    char *const slot = SlotAt(i);
    slot[zolt::kSlotName + zolt::kSlotNameSize - 1] = '\0';
    uint32_t const size = LoadLittle32(slot + zolt::kSlotValueSize);
    uint32_t const offset = LoadLittle32(slot + zolt::kSlotValueOffset);
    if (size == 0 || (size <= rest && offset <= poolSize - size)) {
      rest -= size;
      continue;
    }
    StoreLittle32(0, slot + zolt::kSlotValueSize);
    StoreLittle32(0, slot + zolt::kSlotValueOffset);
  }
}

// False without memory.
bool TYUserPrefs::SortTable() {
  auto const count = static_cast<uint32_t>(Count());
  uint32_t sorted = 1;
  while (sorted < count && !Precedes(SlotAt(sorted), SlotAt(sorted - 1))) sorted++;
  if (sorted >= count) return true;
  return zolt::WithMemory(false, [&] {
    std::vector<Slot> slots(count);
    std::memcpy(slots.data(), SlotAt(0), size_t{count} * zolt::kSlotSize);
    std::ranges::stable_sort(
        slots, [](Slot const &a, Slot const &b) { return Precedes(a.data(), b.data()); });
    std::memcpy(SlotAt(0), slots.data(), size_t{count} * zolt::kSlotSize);
    return true;
  });
}

bool TYUserPrefs::TakeData(char const *data, uint32_t size) {
  char *slots = std::exchange(slots_, nullptr);
  char *pool = std::exchange(pool_, nullptr);
  bool const holds = HoldsItsTable(data, size);
  bool taken = holds ? TakeTable(data, size) : TakeTable(kEmptyBlob, sizeof kEmptyBlob);
  if (taken) {
    CheckTable(GetMemSize(pool_));
    taken = SortTable();
  }
  if (!taken) {
    std::swap(slots, slots_);
    std::swap(pool, pool_);
  } else {
    DisposeOutside();
  }
  _DisposeMem(slots);
  _DisposeMem(pool);
  return taken;
}

void TYUserPrefs::SetData(char const *data, uint32_t size) {
  TakeData(data, size);
}

char *TYUserPrefs::GetData() {
  if (slots_ == nullptr) return nullptr;
  auto const count = static_cast<uint32_t>(Count());
  uint32_t const table = zolt::kBlobHead + count * zolt::kSlotSize;
  uint64_t whole = table;
  uint32_t size = 0;
  for (uint32_t i = 0; i < count; i++) {
    ValueAt(SlotAt(i), &size);
    whole += size;
  }
  if (whole > 0x7FFFFFFF) return nullptr;
  char *const blob = NewMem(static_cast<uint32_t>(whole));
  if (blob == nullptr) return nullptr;
  std::memcpy(blob, slots_, table);
  uint32_t end = 0;
  for (uint32_t i = 0; i < count; i++) {
    char const *const slot = SlotAt(i);
    char const *const value = ValueAt(slot, &size);
    if (size == 0) continue;
    char *const copied = blob + (slot - slots_);
    StoreLittle32(size, copied + zolt::kSlotValueSize);
    StoreLittle32(end, copied + zolt::kSlotValueOffset);
    std::memcpy(blob + table + end, value, size);
    end += size;
  }
  return blob;
}
