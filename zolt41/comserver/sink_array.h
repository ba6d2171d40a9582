#ifndef ZOLT41_COMSERVER_SINK_ARRAY_H_
#define ZOLT41_COMSERVER_SINK_ARRAY_H_

#include <cstdint>

#include "zolt41/platform/com/com_abi.h"

namespace zolt {

// A few interface pointers, the first of them without a block of memory. The array holds 1, 4, 8,
// 16 and so on; a removed one leaves a free slot for the next to come. It takes no references by
// itself.
class SinkArray {
 public:
  SinkArray() = default;
  ~SinkArray();
  SinkArray(SinkArray const &) = delete;
  SinkArray &operator=(SinkArray const &) = delete;

  // Gives the element, or null, with all as it was, without memory.
  IUnknown *Add(IUnknown *element);
  // Takes out the first that is `element`; false if there is none.
  bool Remove(IUnknown const *element);
  // Empties the array, then releases what was in it.
  void ReleaseAll();

  // The slots; a free one is null.
  uint32_t capacity() const { return capacity_; }
  IUnknown *At(uint32_t slot) const { return capacity_ == 1 ? item_.single : item_.many[slot]; }

 private:
  IUnknown **Slots() { return capacity_ == 1 ? &item_.single : item_.many; }
  bool Grow();

  union {
    IUnknown *single;
    IUnknown **many;
  } item_ = {};
  uint32_t capacity_ = 0;  // 0 empty, 1 a single element, else what the block holds
};

}  // namespace zolt

#endif  // ZOLT41_COMSERVER_SINK_ARRAY_H_
