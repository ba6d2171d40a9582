#include "zolt41/cards/card_prefs.h"

#include <cstring>
#include <memory>
#include <new>
#include <string_view>

#include "zolt41/cards/blob_format.h"
#include "zolt41/cards/property_format.h"
#include "zolt41/foundation/a_string.h"
#include "zolt41/foundation/az_compare.h"
#include "zolt41/foundation/endian.h"
#include "zolt41/foundation/mem_block.h"
#include "zolt41/foundation/u_convert.h"
#include "zolt41/foundation/u_string.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/prefs/text_argument.h"
#include "zolt41/prefs/text_limit.h"

using zolt::LoadLittle32;
using zolt::StoreLittle32;
using zolt::TextOrEmpty;

namespace {

// Texts of fewer bytes than this are converted on the stack.
constexpr uint32_t kShortText = 256;

}  // namespace

TYUserPrefs::TYUserPrefs(PrefLevel level, char const *data, uint32_t size) : TYPrefs(level) {
  if (!TakeData(data, size)) throw std::bad_alloc();
}

TYUserPrefs::~TYUserPrefs() {
  DisposeData();
}

void TYUserPrefs::DisposeOutside() {
  for (char *block : outside_) _DisposeMem(block);
  outside_.clear();
  freeOutside_.clear();
}

void TYUserPrefs::DisposeData() {
  DisposeOutside();
  _DisposeMem(slots_);
  _DisposeMem(pool_);
  slots_ = nullptr;
  pool_ = nullptr;
}

char *TYUserPrefs::SlotAt(uint32_t index) const {
  return slots_ + zolt::kBlobHead + size_t{index} * zolt::kSlotSize;
}

char *TYUserPrefs::OutsideAt(char const *slot) const {
  bool const outside = LoadLittle32(slot + zolt::kSlotValueSize) == zolt::kSizeOutside;
  return outside ? outside_[LoadLittle32(slot + zolt::kSlotValueOffset)] : nullptr;
}

// The bytes of the slot's value, wherever they lie; null without any.
char *TYUserPrefs::ValueAt(char const *slot, uint32_t *size) const {
  char *const outside = OutsideAt(slot);
  *size = outside != nullptr ? GetMemSize(outside) : LoadLittle32(slot + zolt::kSlotValueSize);
  if (outside != nullptr) return outside;
  return *size == 0 ? nullptr : pool_ + LoadLittle32(slot + zolt::kSlotValueOffset);
}

int32_t TYUserPrefs::Count() const {
  return slots_ == nullptr ? 0 : static_cast<int32_t>(LoadLittle32(slots_ + zolt::kBlobCount));
}

char const *TYUserPrefs::GetIndexedName(int32_t index, uint32_t *section) const {
  if (index < 0 || index >= Count()) return nullptr;
  char const *const slot = SlotAt(static_cast<uint32_t>(index));
  if (section != nullptr) *section = LoadLittle32(slot + zolt::kSlotSection);
  return slot + zolt::kSlotName;
}

int32_t TYUserPrefs::OrderAt(int32_t position, uint32_t section, char const *name) const {
  char const *const slot = SlotAt(static_cast<uint32_t>(position));
  uint32_t const other = LoadLittle32(slot + zolt::kSlotSection);
  if (section != other) return section < other ? 1 : -1;
  return AZStrCompare(name, slot + zolt::kSlotName);
}

int32_t TYUserPrefs::FindPos(uint32_t section, char const *name, uint32_t *position) const {
  int32_t low = -1;
  int32_t high = Count();
  // A store that is filled is mostly filled in its own order.
  if (high > 0 && OrderAt(high - 1, section, name) > 0) low = high - 1;
  while (low < high - 1) {
    int32_t const middle = (low + high) / 2;
    int32_t const order = OrderAt(middle, section, name);
    if (order == 0) {
      *position = static_cast<uint32_t>(middle);
      return 1;
    }
    (order > 0 ? low : high) = middle;
  }
  *position = static_cast<uint32_t>(high);
  return 0;
}

bool TYUserPrefs::AddPropSlot(uint32_t section, char const *name, uint32_t position) {
  auto const count = static_cast<uint32_t>(Count());
  if (SetMemSize(&slots_, zolt::kBlobHead + (count + 1) * zolt::kSlotSize) != 0) return false;
  char *const slot = SlotAt(position);
  std::memmove(slot + zolt::kSlotSize, slot, size_t{count - position} * zolt::kSlotSize);
  std::memset(slot, 0, zolt::kSlotSize);
  StoreLittle32(section, slot + zolt::kSlotSection);
  std::string_view const text = name;
  text.copy(slot + zolt::kSlotName, zolt::kSlotNameSize - 1);
  StoreLittle32(count + 1, slots_ + zolt::kBlobCount);
  return true;
}

char *TYUserPrefs::GetPropData(uint32_t section, char const *name, uint32_t *size) {
  uint32_t position = 0;
  if (FindPos(section, name, &position) == 0) return nullptr;
  uint32_t length = 0;
  char *const value = ValueAt(SlotAt(position), &length);
  if (length == 0) return nullptr;
  if (size != nullptr) *size = length;
  return value;
}

// A copy to be led to, and room to keep it in and to give it up again; null without memory.
char *TYUserPrefs::NewOutside(char const *data, uint32_t size) {
  try {
    if (outside_.size() == outside_.capacity()) outside_.reserve(2 * outside_.size() + 1);
    freeOutside_.reserve(outside_.capacity());
  } catch (std::bad_alloc const &) {
    return nullptr;
  }
  char *const block = NewMem(size);
  if (block != nullptr) std::memcpy(block, data, size);
  return block;
}

// Takes no memory.
void TYUserPrefs::LeadOutside(char *slot, char *block) {
  auto number = static_cast<uint32_t>(outside_.size());
  if (freeOutside_.empty()) {
    outside_.push_back(block);
  } else {
    number = freeOutside_.back();
    freeOutside_.pop_back();
    outside_[number] = block;
  }
  StoreLittle32(zolt::kSizeOutside, slot + zolt::kSlotValueSize);
  StoreLittle32(number, slot + zolt::kSlotValueOffset);
}

void TYUserPrefs::DropOutside(char const *slot) {
  char *const block = OutsideAt(slot);
  if (block == nullptr) return;
  _DisposeMem(block);
  uint32_t const number = LoadLittle32(slot + zolt::kSlotValueOffset);
  outside_[number] = nullptr;
  freeOutside_.push_back(number);
}

void TYUserPrefs::SetPropData(uint32_t section, char const *name, char const *data, uint32_t size) {
  uint32_t position = 0;
  bool const isNew = FindPos(section, name, &position) == 0;
  uint32_t const present = isNew ? 0 : LoadLittle32(SlotAt(position) + zolt::kSlotValueSize);
  bool const goesOutside = present != zolt::kSizeOutside && size > present;
  char *const block = goesOutside ? NewOutside(data, size) : nullptr;
  if (goesOutside && block == nullptr) return;
  if (isNew && !AddPropSlot(section, name, position)) return _DisposeMem(block);
  char *const slot = SlotAt(position);
  if (goesOutside) {
    LeadOutside(slot, block);
  } else if (present == zolt::kSizeOutside) {
    char *&own = outside_[LoadLittle32(slot + zolt::kSlotValueOffset)];
    if (SetMemSize(&own, size) != 0) return;
    std::memcpy(own, data, size);
  } else {
    if (size != 0) std::memcpy(pool_ + LoadLittle32(slot + zolt::kSlotValueOffset), data, size);
    StoreLittle32(size, slot + zolt::kSlotValueSize);
  }
  SetModified(1);
}

int32_t TYUserPrefs::GetStr(uint32_t section, char const *name, char *buffer) {
  uint32_t size = 0;
  char const *const data = GetPropData(section, TextOrEmpty(name), &size);
  if (data == nullptr || buffer == nullptr) return 0;
  // A value of the pool lies at any address, and a foreign one may lack its end.
  size_t const count = size / sizeof(char16_t);
  char16_t shortText[kShortText + 1];
  std::unique_ptr<char16_t[]> longText;
  if (count > kShortText) {
    longText.reset(new (std::nothrow) char16_t[count + 1]);
    if (longText == nullptr) {
      zolt::SetFailure(zolt::Failure::full, "");
      return 0;
    }
  }
  char16_t *const text = longText == nullptr ? shortText : longText.get();
  std::memcpy(text, data, count * sizeof(char16_t));
  text[count] = u'\0';
  if (UZStrLen(text) > zolt::TextLimit()) return 0;
  UZ2LZStrCopy(text, buffer, '?');
  return 1;
}

void TYUserPrefs::SetStr(uint32_t section, char const *name, char const *value) {
  char16_t shortText[kShortText];
  char const *const source = TextOrEmpty(value);
  size_t const length = strnlen(source, zolt::kLongestText + 1);
  if (length > zolt::kLongestText) return;
  auto const size = static_cast<uint32_t>((length + 1) * sizeof(char16_t));
  char *const block = length < kShortText ? nullptr : NewMem(size);
  if (length >= kShortText && block == nullptr) return;
  auto *const text = block == nullptr ? shortText : reinterpret_cast<char16_t *>(block);
  LZ2UZStrCopy(source, text, 0);
  SetPropData(section, TextOrEmpty(name), reinterpret_cast<char const *>(text), size);
  _DisposeMem(block);
}

void TYUserPrefs::Remove(uint32_t section, char const *name) {
  uint32_t position = 0;
  if (FindPos(section, TextOrEmpty(name), &position) == 0) return;
  char *const slot = SlotAt(position);
  DropOutside(slot);
  uint32_t const count = static_cast<uint32_t>(Count()) - 1;
  std::memmove(slot, slot + zolt::kSlotSize, size_t{count - position} * zolt::kSlotSize);
  StoreLittle32(count, slots_ + zolt::kBlobCount);
  SetMemSize(&slots_, zolt::kBlobHead + count * zolt::kSlotSize);
  SetModified(1);
}

int32_t TYUserPrefs::Exists(uint32_t section, char const *name) {
  uint32_t position = 0;
  return FindPos(section, TextOrEmpty(name), &position);
}

void TYUserPrefs::Save() {}

void TYUserPrefs::Load() {}

void TYUserPrefs::Clear() {
  if (TakeData(nullptr, 0)) SetModified(1);
}
