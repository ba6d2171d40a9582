#ifndef ZOLT41_PLATFORM_SYSTEM_STRING_TABLE_H_
#define ZOLT41_PLATFORM_SYSTEM_STRING_TABLE_H_

#include <cstdint>

#include "zolt41/platform/system/instance.h"

namespace zolt {

// The library's own instance: never 0, the same for the life of the process.
HINSTANCE LibraryInstance();

}  // namespace zolt

// Copies the library's string `id` into `buffer`, cut to `size` - 1 bytes and ended with a NUL.
// Gives its length in the buffer, or 0 for an unknown id or instance, or a `size` below 1.
int32_t LoadStringA(HINSTANCE instance, uint32_t id, char *buffer, int32_t size);

#endif  // ZOLT41_PLATFORM_SYSTEM_STRING_TABLE_H_
