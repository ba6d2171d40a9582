#include "zolt41/interchange/basic_read.h"

#include <algorithm>
#include <new>
#include <utility>

#include "zolt41/foundation/afs_file.h"
#include "zolt41/foundation/afs_results.h"
#include "zolt41/platform/system/last_failure.h"

FBasicRead::~FBasicRead() = default;

char FBasicRead::GetByte() {
  if (pushedBack_ != 0) return std::exchange(pushedBack_, '\0');
  if (position_ == size_ && AtEnd() == 0) {
    position_ = 0;
    size_ = kBlock;
    Fill(file_, &size_, buffer_);
  }
  bool const ended = position_ >= size_;
  if (crSeen_ != 0) {
    // Due behind a CR at the very end, too.
    crSeen_ = 0;
    if (!ended && buffer_[position_] == '\n') position_++;
    return '\n';
  }
  if (ended) return '\0';
  char const byte = buffer_[position_];
  crSeen_ = byte == '\r' || byte == '\n';
  if (byte == '\n') return '\r';
  position_++;
  return byte;
}

FFileRead::FFileRead(char const *path) {
  if (AFS_LZOpenFile(path, 1, &file_) == 0) Begin();
}

FFileRead::FFileRead(uint32_t file) {
  file_ = file;
  failed_ = AFS_SetFPos(file, 0, 1) != 0;
  Begin();
}

void FFileRead::Begin() {
  buffer_ = new (std::nothrow) char[kBlock];
  if (buffer_ == nullptr) {
    AFS_CloseFile(std::exchange(file_, 0));
    zolt::SetFailure(zolt::Failure::full, "");
    failed_ = true;
    return;
  }
  size_ = kBlock;
  FFileRead::Fill(file_, &size_, buffer_);
}

FFileRead::~FFileRead() {
  if (file_ != 0) AFS_CloseFile(file_);
  delete[] buffer_;
}

int32_t FFileRead::AtEnd() {
  return file_ == 0 || (position_ == size_ && size_ != kBlock);
}

void FFileRead::Fill(uint32_t file, int32_t *size, char *buffer) {
  auto count = static_cast<uint32_t>(*size);
  int32_t const result = AFS_Read(file, &count, buffer);
  failed_ = failed_ || (result != 0 && result != zolt::kAfsEndedEarly);
  *size = static_cast<int32_t>(count);
}

FMemoryRead::FMemoryRead(void const *data, int32_t size) {
  // Nothing is written to it.
  buffer_ = static_cast<char *>(const_cast<void *>(data));
  size_ = data == nullptr ? 0 : std::max(size, 0);
}

int32_t FMemoryRead::AtEnd() {
  return position_ == size_;
}

void FMemoryRead::Fill(uint32_t, int32_t *, char *) {}
