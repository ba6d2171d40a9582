#ifndef ZOLT41_FOUNDATION_ZOLTX_PTR_ARRAY_H_
#define ZOLT41_FOUNDATION_ZOLTX_PTR_ARRAY_H_

#include <cstdint>
#include <utility>

#include "zolt41/foundation/zoltx_array_fields.h"
#include "zolt41/platform/system/api.h"

// An array of pointers that grows. It owns its buffer, and not what the pointers lead to.
//
// Indexes count from 0. They, sizes and counts may not be negative, and are not tested except to
// decide about growing. A new element is null. A pointer or reference to elements is good until
// the capacity changes.
//
// The first buffer has room for exactly what was asked for. After that a growth adds the grow step
// to the capacity, or more if more is needed at once. The step 0, with which an array starts, is an
// eighth of the size, but at least 4 and at most 1024. Only SetSize to 0, RemoveAll and FreeExtra
// give memory back.
//
// Where there is no memory, and for a size above 2^31 - 1, std::bad_alloc is thrown and the
// elements are as they were. No locks. An array is not copied or assigned: Copy gives another one
// elements of its own.
class ZOLT_API ZOLTXPtrArray {
 public:
  ZOLTXPtrArray() = default;
  ~ZOLTXPtrArray() { RemoveAll(); }
  ZOLTXPtrArray(ZOLTXPtrArray const &) = delete;
  ZOLTXPtrArray &operator=(ZOLTXPtrArray const &) = delete;

  // How many elements there are, and the index of the last one, -1 without any.
  int32_t GetSize() const { return fields_.size; }
  int32_t GetUpperBound() const { return fields_.size - 1; }

  // Drops elements at the end or adds new ones. A `growBy` of -1 keeps the grow step, any other,
  // 0 included, replaces it. A size of 0 frees the buffer, any other keeps the capacity.
  void SetSize(int32_t newSize, int32_t growBy);
  // Makes the capacity the size.
  void FreeExtra();
  // SetSize(0, -1).
  void RemoveAll();

  // The index must be below the size.
  void *GetAt(int32_t index) const { return fields_.data[index]; }
  void *operator[](int32_t index) const { return fields_.data[index]; }
  void *&operator[](int32_t index) { return fields_.data[index]; }
  void *&ElementAt(int32_t index) { return fields_.data[index]; }
  void SetAt(int32_t index, void *value) { fields_.data[index] = value; }
  // The first element; null while the capacity is 0.
  void **GetData() { return fields_.data; }
  void const **GetData() const { return const_cast<void const **>(fields_.data); }

  // Replaces an element; the array first grows if it must, by new elements.
  void SetAtGrow(int32_t index, void *value);
  // Gives the index of the element, which is the last one.
  int32_t Add(void *value) {
    if (fields_.size == fields_.capacity) MakeRoomForOne();
    fields_.data[fields_.size] = value;
    return fields_.size++;
  }
  // Adds what `other`, not this array itself, has. Gives the size that was.
  int32_t Append(ZOLTXPtrArray const &other);
  // Makes the elements those of `other`; the grow step stays.
  void Copy(ZOLTXPtrArray const &other);

  // Exchanges elements, capacity and grow step, which takes no memory.
  void Swap(ZOLTXPtrArray &other) noexcept { std::swap(fields_, other.fields_); }

  // Put `count` times the value, or what `other` has, before the element at `index`. Beyond the
  // end new elements stand between. `other` may be neither null nor this array itself.
  void InsertAt(int32_t index, void *value, int32_t count);
  void InsertAt(int32_t index, ZOLTXPtrArray const *other);
  // `index` + `count` must be at most the size. The capacity stays.
  void RemoveAt(int32_t index, int32_t count);

 private:
  void MakeRoomForOne();

  zolt::ArrayFields<void *> fields_;
};

#endif  // ZOLT41_FOUNDATION_ZOLTX_PTR_ARRAY_H_
