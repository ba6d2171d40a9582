#ifndef ZOLT41_FOUNDATION_ZOLTX_ARRAY_STEPS_H_
#define ZOLT41_FOUNDATION_ZOLTX_ARRAY_STEPS_H_

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include "zolt41/foundation/zoltx_array_fields.h"

// What the two arrays do, told once for both kinds of element. An element does not know its own
// address, so it is moved byte by byte.
namespace zolt {

inline constexpr int32_t kKeepGrowStep = -1;

template <typename Element>
void MoveElements(Element *to, Element const *from, int32_t count) {
  if (count == 0) return;
  std::memmove(static_cast<void *>(to), static_cast<void const *>(from),
               static_cast<size_t>(count) * sizeof(Element));
}

// Gives the elements a buffer of exactly `capacity`, which is not 0 and holds them.
template <typename Element>
void ChangeCapacity(ArrayFields<Element> &array, int32_t capacity) {
  size_t const bytes = static_cast<size_t>(capacity) * sizeof(Element);
  auto *const data = static_cast<Element *>(::operator new(bytes));
  MoveElements(data, array.data, array.size);
  ::operator delete(array.data);
  array.data = data;
  array.capacity = capacity;
}

template <typename Element>
void FreeBuffer(ArrayFields<Element> &array) {
  ::operator delete(array.data);
  array.data = nullptr;
  array.capacity = 0;
}

template <typename Element>
int32_t GrowStepOf(ArrayFields<Element> const &array) {
  return array.growStep != 0 ? array.growStep : std::clamp(array.size / 8, 4, 1024);
}

// Makes the capacity `size` at least. The first buffer has exactly that, a later one a step more
// than the one before it.
template <typename Element>
void MakeRoom(ArrayFields<Element> &array, int64_t size) {
  constexpr int64_t kMost = std::numeric_limits<int32_t>::max();
  if (size <= array.capacity) return;
  if (size > kMost) throw std::bad_alloc();
  int64_t const grown = int64_t{array.capacity} + (array.data == nullptr ? 0 : GrowStepOf(array));
  ChangeCapacity(array, static_cast<int32_t>(std::clamp(grown, size, kMost)));
}

template <typename Element>
void SetSize(ArrayFields<Element> &array, int32_t size, int32_t growStep) {
  if (growStep != kKeepGrowStep) array.growStep = growStep;
  MakeRoom(array, size);
  if (size > array.size) {
    std::uninitialized_value_construct_n(array.data + array.size, size - array.size);
  } else {
    std::destroy_n(array.data + size, array.size - size);
  }
  array.size = size;
  if (size == 0) FreeBuffer(array);
}

template <typename Element>
void FreeExtra(ArrayFields<Element> &array) {
  if (array.size == array.capacity) return;
  if (array.size == 0) {
    FreeBuffer(array);
  } else {
    ChangeCapacity(array, array.size);
  }
}

// Makes `count` places from `index` on, which `fill` turns into elements. If it throws, the
// elements that were there are in order again.
template <typename Element, typename Fill>
void InsertWith(ArrayFields<Element> &array, int32_t index, int32_t count, Fill const &fill) {
  MakeRoom(array, int64_t{std::max(index, array.size)} + count);
  if (index > array.size) SetSize(array, index, kKeepGrowStep);
  Element *const gap = array.data + index;
  int32_t const behind = array.size - index;
  MoveElements(gap + count, gap, behind);
  try {
    fill(gap);
  } catch (...) {
    MoveElements(gap, gap + count, behind);
    throw;
  }
  array.size += count;
}

template <typename Element, typename Value>
void InsertValues(ArrayFields<Element> &array, int32_t index, Value value, int32_t count) {
  InsertWith(array, index, count,
             [=](Element *gap) { std::uninitialized_fill_n(gap, count, value); });
}

// Inserts copies of the `count` elements from number `first` on of another array.
template <typename Element>
void InsertCopies(ArrayFields<Element> &array, int32_t index, ArrayFields<Element> const &other,
                  int32_t first) {
  int32_t const count = other.size - first;
  if (count == 0) return;
  Element const *const source = other.data + first;
  InsertWith(array, index, count,
             [=](Element *gap) { std::uninitialized_copy_n(source, count, gap); });
}

template <typename Element>
void CopyElements(ArrayFields<Element> &array, ArrayFields<Element> const &other) {
  if (other.size == 0 || other.size < array.size) SetSize(array, other.size, kKeepGrowStep);
  int32_t const assigned = array.size;
  std::copy_n(other.data, assigned, array.data);
  InsertCopies(array, assigned, other, assigned);
}

template <typename Element>
void RemoveAt(ArrayFields<Element> &array, int32_t index, int32_t count) {
  Element *const gap = array.data + index;
  std::destroy_n(gap, count);
  MoveElements(gap, gap + count, array.size - index - count);
  array.size -= count;
}

}  // namespace zolt

#endif  // ZOLT41_FOUNDATION_ZOLTX_ARRAY_STEPS_H_
