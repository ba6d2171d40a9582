#include "zolt41/foundation/mem_block.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

constexpr size_t kField = sizeof(uint32_t);
constexpr uint32_t kLargest = std::numeric_limits<uint32_t>::max() - kField;
constexpr int32_t kNullArgument = -1;
constexpr int32_t kOutOfMemory = -108;

// Enters `size` in the new allocation and gives its data, or null for null.
char *BlockIn(void *allocation, uint32_t size) {
  if (allocation == nullptr) return nullptr;
  std::memcpy(allocation, &size, kField);
  return static_cast<char *>(allocation) + kField;
}

}  // namespace

char *NewMem(uint32_t size) {
  if (size > kLargest) return nullptr;
  return BlockIn(std::malloc(kField + size), size);
}

char *NewMemClear(uint32_t size) {
  if (size > kLargest) return nullptr;
  return BlockIn(std::calloc(1, kField + size), size);
}

uint32_t GetMemSize(char const *block) {
  uint32_t size = 0;
  if (block != nullptr) std::memcpy(&size, block - kField, kField);
  return size;
}

int32_t SetMemSize(char **block, uint32_t size) {
  if (block == nullptr || *block == nullptr) return kNullArgument;
  if (size > kLargest) return kOutOfMemory;
  char *const resized = BlockIn(std::realloc(*block - kField, kField + size), size);
  if (resized == nullptr) return kOutOfMemory;
  *block = resized;
  return 0;
}

void _DisposeMem(char *block) {
  if (block != nullptr) std::free(block - kField);
}
