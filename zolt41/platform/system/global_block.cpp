#include "zolt41/platform/system/global_block.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

// Before the data, and as large as keeps it aligned.
struct alignas(std::max_align_t) Head {
  uint64_t size;
};

Head *HeadOf(void *block) {
  return static_cast<Head *>(block) - 1;
}

void *BlockIn(void *allocation, uint64_t size) {
  if (allocation == nullptr) return nullptr;
  auto *const head = static_cast<Head *>(allocation);
  head->size = size;
  return head + 1;
}

bool Fits(uint64_t size) {
  return size <= std::numeric_limits<size_t>::max() - sizeof(Head);
}

}  // namespace

void *GlobalAlloc(uint32_t flags, uint64_t size) {
  if (!Fits(size)) return nullptr;
  size_t const whole = sizeof(Head) + size;
  bool const clear = (flags & GMEM_ZEROINIT) != 0;
  return BlockIn(clear ? std::calloc(1, whole) : std::malloc(whole), size);
}

void *GlobalLock(void *block) {
  return block;
}

int32_t GlobalUnlock(void *) {
  return 0;
}

uint64_t GlobalSize(void const *block) {
  return block == nullptr ? 0 : HeadOf(const_cast<void *>(block))->size;
}

void *GlobalReAlloc(void *block, uint64_t size, uint32_t flags) {
  if (block == nullptr || !Fits(size)) return nullptr;
  uint64_t const before = GlobalSize(block);
  void *const grown = BlockIn(std::realloc(HeadOf(block), sizeof(Head) + size), size);
  if (grown != nullptr && size > before && (flags & GMEM_ZEROINIT) != 0) {
    std::memset(static_cast<char *>(grown) + before, 0, size - before);
  }
  return grown;
}

void *GlobalFree(void *block) {
  if (block != nullptr) std::free(HeadOf(block));
  return nullptr;
}
