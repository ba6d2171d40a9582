#ifndef ZOLT41_FOUNDATION_ZOLTX_STRING_ARRAY_H_
#define ZOLT41_FOUNDATION_ZOLTX_STRING_ARRAY_H_

#include <cstdint>

#include "zolt41/foundation/zoltx_array_fields.h"
#include "zolt41/foundation/zoltx_string.h"
#include "zolt41/platform/system/api.h"

// An array of strings that grows: ZOLTXPtrArray tells what holds for both. It owns its strings: one
// ends when it is removed or dropped, and a new element is empty. A growth and a move leave the
// text of a string where it is. A value may be text of the array's own, but not null.
class ZOLT_API ZOLTXStringArray {
 public:
  ZOLTXStringArray() = default;
  ~ZOLTXStringArray() { RemoveAll(); }
  ZOLTXStringArray(ZOLTXStringArray const &) = delete;
  ZOLTXStringArray &operator=(ZOLTXStringArray const &) = delete;

  // As those of ZOLTXPtrArray.
  int32_t GetSize() const { return fields_.size; }
  int32_t GetUpperBound() const { return fields_.size - 1; }

  // As those of ZOLTXPtrArray; the strings that are dropped end.
  void SetSize(int32_t newSize, int32_t growBy);
  void FreeExtra();
  void RemoveAll();

  // The index must be below the size. The first two give a copy.
  ZOLTXString GetAt(int32_t index) const { return fields_.data[index]; }
  ZOLTXString operator[](int32_t index) const { return fields_.data[index]; }
  ZOLTXString &operator[](int32_t index) { return fields_.data[index]; }
  ZOLTXString &ElementAt(int32_t index) { return fields_.data[index]; }
  void SetAt(int32_t index, char const *value) { fields_.data[index] = value; }
  ZOLTXString *GetData() { return fields_.data; }
  ZOLTXString const *GetData() const { return fields_.data; }

  // As those of ZOLTXPtrArray, with copies of the values.
  void SetAtGrow(int32_t index, char const *value);
  int32_t Add(char const *value);
  int32_t Append(ZOLTXStringArray const &other);
  void Copy(ZOLTXStringArray const &other);

  // As those of ZOLTXPtrArray, with copies of the values; the strings that are removed end.
  void InsertAt(int32_t index, char const *value, int32_t count);
  void InsertAt(int32_t index, ZOLTXStringArray const *other);
  void RemoveAt(int32_t index, int32_t count);

 private:
  zolt::ArrayFields<ZOLTXString> fields_;
};

#endif  // ZOLT41_FOUNDATION_ZOLTX_STRING_ARRAY_H_
