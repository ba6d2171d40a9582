#ifndef ZOLT41_FOUNDATION_ZOLTX_ARRAY_FIELDS_H_
#define ZOLT41_FOUNDATION_ZOLTX_ARRAY_FIELDS_H_

#include <cstdint>

namespace zolt {

// What an array consists of. `data` is null exactly while `capacity` is 0, `size` elements are in
// use, and a `growStep` of 0 stands for a step that is worked out at each growth.
template <typename Element>
struct ArrayFields {
  Element *data = nullptr;
  int32_t size = 0;
  int32_t capacity = 0;
  int32_t growStep = 0;
};

}  // namespace zolt

#endif  // ZOLT41_FOUNDATION_ZOLTX_ARRAY_FIELDS_H_
