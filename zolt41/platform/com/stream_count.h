#ifndef ZOLT41_PLATFORM_COM_STREAM_COUNT_H_
#define ZOLT41_PLATFORM_COM_STREAM_COUNT_H_

#include <cstdint>

#include "zolt41/platform/com/com_abi.h"
#include "zolt41/platform/com/variant.h"

namespace zolt {

// Tell a stream's caller a count or a place; who passed null does not want it.
inline void Set(ULONG *place, ULONG value) {
  if (place != nullptr) *place = value;
}
inline void Set(ULARGE_INTEGER *place, uint64_t value) {
  if (place != nullptr) place->QuadPart = value;
}

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_COM_STREAM_COUNT_H_
