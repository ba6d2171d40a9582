#include "zolt41/platform/system/large_pages.h"

#include <sys/mman.h>

#include <algorithm>
#include <new>

namespace zolt {
namespace {

constexpr size_t kLargePage = size_t{2} * 1024 * 1024;
constexpr std::align_val_t kAlignment{kLargePage};

}  // namespace

void *TakeLargePages(size_t size) {
  if (size < kLargePage) return ::operator new(size);
  // What is left over has a page of its own if it fills half of it.
  size_t const large = (size + kLargePage / 2) / kLargePage * kLargePage;
  void *const memory = ::operator new(std::max(size, large), kAlignment);
  madvise(memory, large, MADV_HUGEPAGE);
  return memory;
}

void GiveLargePages(void *memory, size_t size) {
  if (size < kLargePage) {
    ::operator delete(memory);
  } else {
    ::operator delete(memory, kAlignment);
  }
}

}  // namespace zolt
