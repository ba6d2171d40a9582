#include "zolt41/platform/system/large_pages.h"

#include <sys/mman.h>

#include <cstdint>

namespace zolt {

void PreferLargePages(void *memory, size_t size) {
  constexpr uintptr_t kLargePage = uintptr_t{2} * 1024 * 1024;
  auto const begin = reinterpret_cast<uintptr_t>(memory);
  uintptr_t const first = (begin + kLargePage - 1) / kLargePage * kLargePage;
  uintptr_t const last = (begin + size) / kLargePage * kLargePage;
  if (first >= last) return;
  auto *const start = static_cast<char *>(memory) + (first - begin);
  madvise(start, last - first, MADV_HUGEPAGE);
}

}  // namespace zolt
