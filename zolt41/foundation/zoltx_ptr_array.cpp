#include "zolt41/foundation/zoltx_ptr_array.h"

#include "zolt41/foundation/zoltx_array_steps.h"

void ZOLTXPtrArray::MakeRoomForOne() {
  zolt::MakeRoom(fields_, int64_t{fields_.size} + 1);
}

void ZOLTXPtrArray::SetSize(int32_t newSize, int32_t growBy) {
  zolt::SetSize(fields_, newSize, growBy);
}

void ZOLTXPtrArray::FreeExtra() {
  zolt::FreeExtra(fields_);
}

void ZOLTXPtrArray::RemoveAll() {
  SetSize(0, zolt::kKeepGrowStep);
}

void ZOLTXPtrArray::SetAtGrow(int32_t index, void *value) {
  if (index < GetSize()) {
    SetAt(index, value);
  } else {
    InsertAt(index, value, 1);
  }
}

int32_t ZOLTXPtrArray::Append(ZOLTXPtrArray const &other) {
  int32_t const first = GetSize();
  zolt::InsertCopies(fields_, first, other.fields_, 0);
  return first;
}

void ZOLTXPtrArray::Copy(ZOLTXPtrArray const &other) {
  zolt::CopyElements(fields_, other.fields_);
}

void ZOLTXPtrArray::InsertAt(int32_t index, void *value, int32_t count) {
  zolt::InsertValues(fields_, index, value, count);
}

void ZOLTXPtrArray::InsertAt(int32_t index, ZOLTXPtrArray const *other) {
  zolt::InsertCopies(fields_, index, other->fields_, 0);
}

void ZOLTXPtrArray::RemoveAt(int32_t index, int32_t count) {
  zolt::RemoveAt(fields_, index, count);
}
