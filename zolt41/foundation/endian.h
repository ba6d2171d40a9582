#ifndef ZOLT41_FOUNDATION_ENDIAN_H_
#define ZOLT41_FOUNDATION_ENDIAN_H_

#include <bit>
#include <cstdint>
#include <cstring>

namespace zolt {

// Numbers of 32 bits as they stand in stored bytes, at any address, on any machine.

constexpr uint32_t Swapped32(uint32_t value) {
  return value << 24 | (value & 0xFF00) << 8 | (value >> 8 & 0xFF00) | value >> 24;
}

inline uint32_t LoadLittle32(void const *bytes) {
  uint32_t value = 0;
  std::memcpy(&value, bytes, sizeof value);
  return std::endian::native == std::endian::little ? value : Swapped32(value);
}

inline void StoreLittle32(uint32_t value, void *bytes) {
  if constexpr (std::endian::native != std::endian::little) value = Swapped32(value);
  std::memcpy(bytes, &value, sizeof value);
}

}  // namespace zolt

#endif  // ZOLT41_FOUNDATION_ENDIAN_H_
