#ifndef ZOLT41_PLATFORM_SYSTEM_LARGE_PAGES_H_
#define ZOLT41_PLATFORM_SYSTEM_LARGE_PAGES_H_

#include <cstddef>

namespace zolt {

// Asks for large pages under memory of many megabytes that is not yet in use, so that jumping about
// in it costs less. It may have no effect.
void PreferLargePages(void *memory, size_t size);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_LARGE_PAGES_H_
