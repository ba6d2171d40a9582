#include "zolt41/foundation/zoltx_string_array.h"

#include "zolt41/foundation/zoltx_array_steps.h"

void ZOLTXStringArray::SetSize(int32_t newSize, int32_t growBy) {
  zolt::SetSize(fields_, newSize, growBy);
}

void ZOLTXStringArray::FreeExtra() {
  zolt::FreeExtra(fields_);
}

void ZOLTXStringArray::RemoveAll() {
  SetSize(0, zolt::kKeepGrowStep);
}

void ZOLTXStringArray::SetAtGrow(int32_t index, char const *value) {
  if (index < GetSize()) {
    SetAt(index, value);
  } else {
    InsertAt(index, value, 1);
  }
}

int32_t ZOLTXStringArray::Add(char const *value) {
  zolt::InsertValues(fields_, GetSize(), value, 1);
  return GetUpperBound();
}

int32_t ZOLTXStringArray::Append(ZOLTXStringArray const &other) {
  int32_t const first = GetSize();
  zolt::InsertCopies(fields_, first, other.fields_, 0);
  return first;
}

void ZOLTXStringArray::Copy(ZOLTXStringArray const &other) {
  zolt::CopyElements(fields_, other.fields_);
}

void ZOLTXStringArray::InsertAt(int32_t index, char const *value, int32_t count) {
  zolt::InsertValues(fields_, index, value, count);
}

void ZOLTXStringArray::InsertAt(int32_t index, ZOLTXStringArray const *other) {
  zolt::InsertCopies(fields_, index, other->fields_, 0);
}

void ZOLTXStringArray::RemoveAt(int32_t index, int32_t count) {
  zolt::RemoveAt(fields_, index, count);
}
