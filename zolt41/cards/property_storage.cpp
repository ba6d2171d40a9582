#include "zolt41/cards/property_storage.h"

#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "zolt41/cards/property_format.h"
#include "zolt41/foundation/endian.h"
#include "zolt41/foundation/mem_block.h"
#include "zolt41/platform/system/with_memory.h"

using zolt::LoadLittle32;
using zolt::StoreLittle32;

namespace {

constexpr uint32_t kNone = 0xFFFFFFFF;
constexpr uint32_t kOffset = sizeof(uint32_t);
constexpr uint64_t kLargestList = 0x7FFFFFFF;

// A property as it is to be stored. What lies in the list itself is copied, since the list moves.
class NewProperty {
 public:
  NewProperty(char const *name, char const *value, int32_t length, char const *list)
      : name_(name == nullptr ? "" : name) {
    if (length < 0 || (value == nullptr && length > 0)) return;
    value_ = {value == nullptr ? "" : value, static_cast<size_t>(length)};
    if (name_.size() > zolt::kLongestPropertyName) return;
    good_ = true;
    if (LiesIn(list, name_)) name_ = nameCopy_.emplace(name_);
    if (LiesIn(list, value_)) value_ = valueCopy_.emplace(value_);
  }

  bool good() const { return good_; }
  uint64_t Size() const { return zolt::RecordSize(Area(), static_cast<uint32_t>(value_.size())); }

  // Bytes that mean nothing become 0.
  void Write(uint32_t type, uint32_t flags, char *record) const {
    StoreLittle32(type, record + zolt::kTypeOffset);
    StoreLittle32(flags, record + zolt::kFlagsOffset);
    StoreLittle32(static_cast<uint32_t>(value_.size()), record + zolt::kLengthOffset);
    char *const name = record + zolt::kRecordHead;
    char *const value = name + Area();
    std::memset(name, 0, Area());
    std::memcpy(name, name_.data(), name_.size());
    std::memcpy(value, value_.data(), value_.size());
    char *const end = value + value_.size();
    std::memset(end, 0, static_cast<size_t>(record + Size() - end));
  }

 private:
  static bool LiesIn(char const *list, std::string_view text) {
    return text.data() >= list && text.data() < list + GetMemSize(list);
  }
  uint32_t Area() const { return zolt::NameArea(static_cast<uint32_t>(name_.size())); }

  std::string_view name_;
  std::string_view value_;
  std::optional<std::string> nameCopy_;
  std::optional<std::string> valueCopy_;
  bool good_ = false;
};

}  // namespace

struct PCardStorage::Record {
  char *start;

  uint32_t type() const { return LoadLittle32(start + zolt::kTypeOffset); }
  uint32_t flags() const { return LoadLittle32(start + zolt::kFlagsOffset); }
  uint32_t length() const { return LoadLittle32(start + zolt::kLengthOffset); }
  char *name() const { return start + zolt::kRecordHead; }
  char *value() const {
    return name() + zolt::NameArea(static_cast<uint32_t>(std::strlen(name())));
  }
};

PCardStorage::PCardStorage() : offsets_(NewMem(0)), list_(NewMemClear(zolt::kListHead)) {
  if (offsets_ != nullptr && list_ != nullptr) return;
  _DisposeMem(offsets_);
  _DisposeMem(list_);
  throw std::bad_alloc();
}

PCardStorage::~PCardStorage() {
  _DisposeMem(offsets_);
  _DisposeMem(list_);
}

int32_t PCardStorage::Modified() {
  return modified_;
}

uint32_t PCardStorage::PropCount() const {
  return LoadLittle32(list_);
}

uint32_t PCardStorage::OffsetOf(uint32_t index) const {
  uint32_t offset = 0;
  std::memcpy(&offset, offsets_ + size_t{index} * kOffset, kOffset);
  return offset;
}

void PCardStorage::SetOffset(uint32_t index, uint32_t offset) {
  std::memcpy(offsets_ + size_t{index} * kOffset, &offset, kOffset);
}

PCardStorage::Record PCardStorage::RecordAt(uint32_t index) const {
  return {list_ + OffsetOf(index)};
}

uint32_t PCardStorage::EndOf(uint32_t index) const {
  if (index + 1 < PropCount()) return OffsetOf(index + 1);
  Record const record = RecordAt(index);
  auto const name = static_cast<uint32_t>(std::strlen(record.name()));
  return OffsetOf(index) +
         static_cast<uint32_t>(zolt::RecordSize(zolt::NameArea(name), record.length()));
}

void PCardStorage::Empty() {
  SetMemSize(&list_, zolt::kListHead);
  StoreLittle32(0, list_);
  SetMemSize(&offsets_, 0);
}

// False if the list is damaged.
bool PCardStorage::FindRecords() {
  uint32_t const size = GetMemSize(list_);
  uint32_t const count = PropCount();
  if (count > (size - zolt::kListHead) / zolt::kSmallestRecord) return false;
  if (SetMemSize(&offsets_, count * kOffset) != 0) return false;
  uint64_t offset = zolt::kListHead;
  for (uint32_t i = 0; i < count; i++) {
    if (size - offset < zolt::kSmallestRecord) return false;
    SetOffset(i, static_cast<uint32_t>(offset));
    Record const record = RecordAt(i);
    size_t const room = size - offset - zolt::kRecordHead;
    size_t const name = strnlen(record.name(), room);
    if (name == room || name > zolt::kLongestPropertyName) return false;
    offset += zolt::RecordSize(zolt::NameArea(static_cast<uint32_t>(name)), record.length());
    if (offset > size) return false;
  }
  return true;
}

void PCardStorage::Recalculate() {
  if (!FindRecords()) Empty();
}

char *PCardStorage::Get() {
  uint32_t const size = GetMemSize(list_);
  char *const copy = NewMem(size);
  if (copy != nullptr) std::memcpy(copy, list_, size);
  return copy;
}

char *PCardStorage::GetHeader() {
  char *const header = NewMemClear(GetMemSize(list_));
  if (header == nullptr) return nullptr;
  uint32_t count = 0;
  uint32_t end = zolt::kListHead;
  for (uint32_t i = 0; i < PropCount(); i++) {
    if (std::strncmp(RecordAt(i).name(), zolt::kLocalPrefix, 2) == 0) continue;
    uint32_t const size = EndOf(i) - OffsetOf(i);
    std::memcpy(header + end, list_ + OffsetOf(i), size);
    end += size;
    count++;
  }
  StoreLittle32(count, header);
  char *cut = header;
  SetMemSize(&cut, end);
  return cut;
}

void PCardStorage::Set(char const *data, int32_t size) {
  TakeCopy(data, size);
}

bool PCardStorage::TakeCopy(char const *data, int32_t size) {
  bool const whole = data != nullptr && size >= static_cast<int32_t>(zolt::kListHead);
  uint32_t const wanted = whole ? static_cast<uint32_t>(size) : zolt::kListHead;
  uint32_t const count = whole ? LoadLittle32(data) : 0;
  bool const fits = count <= (wanted - zolt::kListHead) / zolt::kSmallestRecord;
  char *list = whole ? NewMem(wanted) : NewMemClear(wanted);
  // What FindRecords will ask for: a sound list is not emptied for want of memory.
  char *offsets = NewMem(fits ? count * kOffset : 0);
  bool taken = list != nullptr && offsets != nullptr;
  if (taken) {
    if (whole) std::memcpy(list, data, wanted);
    taken = Exchange(&list, &offsets);
  }
  _DisposeMem(list);
  _DisposeMem(offsets);
  return taken;
}

// Takes a list, with room for its offsets, and gives the old ones. False, with all as it was, where
// there is no memory for what is built out of it.
bool PCardStorage::Exchange(char **list, char **offsets) {
  std::swap(list_, *list);
  std::swap(offsets_, *offsets);
  bool const inStep = std::exchange(inStep_, true);
  Recalculate();
  if (inStep_) {
    modified_ = 0;
    return true;
  }
  std::swap(list_, *list);
  std::swap(offsets_, *offsets);
  inStep_ = inStep;
  return false;
}

// Makes the record at `index`, or at the count for a new one, `newSize` bytes long, with what lies
// behind it in step; 0 takes it away. What it holds then is undefined. Bytes behind the last record
// go. False, with all as it was, without memory.
bool PCardStorage::Resize(uint32_t index, uint64_t newSize) {
  uint32_t const count = PropCount();
  uint32_t const end = count == 0 ? zolt::kListHead : EndOf(count - 1);
  bool const added = index == count;
  uint32_t const start = added ? end : OffsetOf(index);
  uint32_t const behind = added ? end : EndOf(index);
  uint64_t const newEnd = end - (behind - start) + newSize;
  if (newEnd > kLargestList) return false;
  uint32_t const present = GetMemSize(list_);
  if (added && SetMemSize(&offsets_, (count + 1) * kOffset) != 0) return false;
  if (newEnd > present && SetMemSize(&list_, static_cast<uint32_t>(newEnd)) != 0) {
    if (added) SetMemSize(&offsets_, count * kOffset);
    return false;
  }
  std::memmove(list_ + start + newSize, list_ + behind, end - behind);
  if (newEnd < present) SetMemSize(&list_, static_cast<uint32_t>(newEnd));
  if (added) SetOffset(count, start);
  auto const difference = static_cast<uint32_t>(newSize - (behind - start));
  for (uint32_t i = index + 1; i < count; i++) SetOffset(i, OffsetOf(i) + difference);
  modified_ = 1;
  return true;
}

uint32_t PCardStorage::AddProp(char const *name, uint32_t type, uint32_t flags, char const *value,
                               int32_t length) {
  return zolt::WithMemory(kNone, [&] {
    NewProperty const property(name, value, length, list_);
    uint32_t const count = PropCount();
    if (!property.good() || !Resize(count, property.Size())) return kNone;
    StoreLittle32(count + 1, list_);
    property.Write(type, flags, RecordAt(count).start);
    return count;
  });
}

char *PCardStorage::GetPropA(uint32_t index, uint32_t *length, uint32_t *type, uint32_t *flags,
                             char **name) {
  if (index >= PropCount()) return nullptr;
  Record const record = RecordAt(index);
  if (length != nullptr) *length = record.length();
  if (type != nullptr) *type = record.type();
  if (flags != nullptr) *flags = record.flags();
  if (name != nullptr) *name = record.name();
  return record.value();
}

int32_t PCardStorage::SetPropA(uint32_t index, char const *name, uint32_t type, uint32_t flags,
                               char const *value, int32_t length) {
  if (index >= PropCount()) return 0;
  return zolt::WithMemory(0, [&] {
    NewProperty const property(name, value, length, list_);
    if (!property.good() || !Resize(index, property.Size())) return 0;
    property.Write(type, flags, RecordAt(index).start);
    return 1;
  });
}

int32_t PCardStorage::DeleteProp(uint32_t index) {
  uint32_t const count = PropCount();
  if (index >= count || !Resize(index, 0)) return 0;
  for (uint32_t i = index; i + 1 < count; i++) SetOffset(i, OffsetOf(i + 1));
  StoreLittle32(count - 1, list_);
  SetMemSize(&offsets_, (count - 1) * kOffset);
  return 1;
}

int32_t PCardStorage::ImportFromVCard(char const *) {
  return -1;
}

char *PCardStorage::ExportToVCard() {
  return nullptr;
}
