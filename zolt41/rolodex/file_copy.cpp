#include "zolt41/rolodex/file_copy.h"

#include <cstring>

namespace zolt {

void FileCopy::Forget() {
  std::vector<char>().swap(bytes_);
  reads_ = 0;
}

bool FileCopy::Read(uint32_t position, void *bytes, uint32_t count) const {
  if (uint64_t{position} + count > bytes_.size()) return false;
  std::memcpy(bytes, bytes_.data() + position, count);
  return true;
}

void FileCopy::Write(uint32_t position, std::string_view bytes) {
  size_t const end = position + bytes.size();
  if (!taken()) return;
  if (position > bytes_.size() || end > kLargest) return Forget();
  if (end > bytes_.size()) bytes_.resize(end);
  bytes.copy(bytes_.data() + position, bytes.size());
}

void FileCopy::Cut(uint32_t size) {
  if (size < bytes_.size()) bytes_.resize(size);
}

}  // namespace zolt
