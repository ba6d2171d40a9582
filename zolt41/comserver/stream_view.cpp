#include "zolt41/comserver/stream_view.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <mutex>
#include <utility>

#include "zolt41/comserver/whole_value.h"
#include "zolt41/foundation/mem_block.h"
#include "zolt41/platform/com/com_ptr.h"
#include "zolt41/platform/com/guarded.h"
#include "zolt41/platform/com/stream_count.h"
#include "zolt41/platform/registry/registry.h"
#include "zolt41/platform/system/with_memory.h"
#include "zolt41/prefs/text_argument.h"

namespace zolt {

ValueStream::ValueStream(TYPrefs *store, uint32_t section, std::string_view name, uint32_t mode)
    : store_(store), section_(section), mode_(mode) {
  name_[name.copy(name_, kLongestName)] = '\0';
}

ValueStream::~ValueStream() {
  _DisposeMem(data_);
}

HRESULT ValueStream::Open(TYPrefs *store, uint32_t section, std::string_view name, uint32_t mode,
                          IStream **out) {
  *out = nullptr;
  if (name.size() > kLongestName) return STG_E_INVALIDNAME;
  return Guarded([&] { return OpenAt(store, section, name, mode, 0, out); });
}

HRESULT ValueStream::OpenAt(TYPrefs *store, uint32_t section, std::string_view name, uint32_t mode,
                            uint32_t position, IStream **out) {
  auto *const made = new ValueStream(store, section, name, mode);
  ComPtr<ValueStream> const stream(made);
  if (!made->Load()) return E_FAIL;
  made->position_ = position;
  return made->QueryInterface(IID_IStream, reinterpret_cast<void **>(out));
}

bool ValueStream::Load() {
  std::lock_guard const guard(ServerLock());
  _DisposeMem(std::exchange(data_, nullptr));
  size_ = 0;
  position_ = 0;
  data_ = WithMemory<char *>(nullptr,
                             [this] { return ReadWholeValue(store_, section_, name_, &size_); });
  return data_ != nullptr;
}

// How many of `count` bytes there are from the position on.
uint32_t ValueStream::Part(uint32_t count) const {
  return position_ < size_ ? std::min(count, size_ - position_) : 0;
}

// The bytes before `used` are kept or 0, those behind are about to be written. False, with all as
// it was, without memory. A large gap is not touched, as the system gives zeros.
bool ValueStream::Resize(uint32_t size, uint32_t used) {
  constexpr uint32_t kLargeGap = 1 << 20;
  uint32_t const gap = used > size_ ? used - size_ : 0;
  if (gap >= kLargeGap) {
    char *const fresh = NewMemClear(size);
    if (fresh == nullptr) return false;
    std::memcpy(fresh, data_, size_);
    _DisposeMem(std::exchange(data_, fresh));
  } else {
    if (SetMemSize(&data_, size) != 0) return false;
    std::memset(data_ + size_, 0, gap);
  }
  size_ = size;
  return true;
}

HRESULT ValueStream::Read(void *buffer, ULONG count, ULONG *read) {
  Set(read, 0);
  if (buffer == nullptr) return STG_E_INVALIDPOINTER;
  if ((mode_ & STGM_WRITE) != 0) return STG_E_ACCESSDENIED;
  if (data_ == nullptr) return STG_E_REVERTED;
  uint32_t const part = Part(count);
  if (part != 0) std::memcpy(buffer, data_ + position_, part);
  position_ += part;
  Set(read, part);
  return S_OK;
}

HRESULT ValueStream::Write(void const *buffer, ULONG count, ULONG *written) {
  Set(written, 0);
  if (buffer == nullptr) return STG_E_INVALIDPOINTER;
  if (!MayWrite()) return STG_E_ACCESSDENIED;
  if (data_ == nullptr) return STG_E_REVERTED;
  if (count == 0) return S_OK;
  if (count > std::numeric_limits<uint32_t>::max() - position_) return STG_E_MEDIUMFULL;
  uint32_t const end = position_ + count;
  if (end > size_ && !Resize(end, position_)) return STG_E_MEDIUMFULL;
  size_ = end;
  // The bytes may come from this very stream, through CopyTo.
  std::memmove(data_ + position_, buffer, count);
  position_ = end;
  Set(written, count);
  return (mode_ & STGM_TRANSACTED) != 0 ? S_OK : Commit(STGC_DEFAULT);
}

HRESULT ValueStream::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER *newPosition) {
  Set(newPosition, 0);
  if (data_ == nullptr) return STG_E_REVERTED;
  if (move.HighPart != 0) return STG_E_INVALIDFUNCTION;
  uint32_t const targets[] = {move.LowPart, position_ + move.LowPart, size_ + move.LowPart};
  uint32_t const target = origin <= STREAM_SEEK_END ? targets[origin] : position_;
  if (static_cast<int32_t>(target) < 0) return STG_E_INVALIDFUNCTION;
  position_ = target;
  Set(newPosition, target);
  return S_OK;
}

HRESULT ValueStream::SetSize(ULARGE_INTEGER newSize) {
  if (newSize.HighPart != 0) return STG_E_MEDIUMFULL;
  if (data_ == nullptr) return STG_E_REVERTED;
  return Resize(newSize.LowPart, newSize.LowPart) ? S_OK : STG_E_MEDIUMFULL;
}

HRESULT ValueStream::CopyTo(IStream *target, ULARGE_INTEGER count, ULARGE_INTEGER *read,
                            ULARGE_INTEGER *written) {
  Set(read, 0);
  Set(written, 0);
  if (target == nullptr) return STG_E_INVALIDPOINTER;
  if (data_ == nullptr) return STG_E_REVERTED;
  uint32_t const part = Part(count.LowPart);
  char const *const from = data_ + std::min(position_, size_);
  target->Write(from, part, written == nullptr ? nullptr : &written->LowPart);
  position_ += part;
  Set(read, part);
  return S_OK;
}

HRESULT ValueStream::Commit(DWORD /*flags*/) {
  if (!MayWrite()) return STG_E_ACCESSDENIED;
  if (data_ == nullptr) return STG_E_REVERTED;
  // Whatever the store does with it.
  static_cast<void>(Guarded([this] {
    std::lock_guard const guard(ServerLock());
    store_->WriteFree(section_, name_, REG_BINARY, reinterpret_cast<uint8_t const *>(data_), size_,
                      PrefLevelThis);
    return S_OK;
  }));
  return S_OK;
}

HRESULT ValueStream::Revert() {
  return Guarded([this] { return Load() ? S_OK : E_FAIL; });
}

HRESULT ValueStream::Clone(IStream **out) {
  if (out == nullptr) return STG_E_INVALIDPOINTER;
  *out = nullptr;
  if (data_ == nullptr) return STG_E_REVERTED;
  return Guarded([&] { return OpenAt(store_, section_, name_, mode_, position_, out); });
}

}  // namespace zolt

int32_t TYPrefs::GetStream(uint32_t section, char const *name, IStream **stream, uint32_t mode) {
  if (stream == nullptr) return E_INVALIDARG;
  return zolt::ValueStream::Open(this, section, zolt::TextOrEmpty(name), mode, stream);
}
