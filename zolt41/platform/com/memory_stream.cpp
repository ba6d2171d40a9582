#include "zolt41/platform/com/memory_stream.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "zolt41/platform/com/guarded.h"
#include "zolt41/platform/com/ref_counted.h"
#include "zolt41/platform/com/stream_count.h"
#include "zolt41/platform/system/global_block.h"

namespace zolt {
namespace {

// Answered by these streams alone, with the stream itself.
constexpr IID kIidMemoryStream = {
    0xB7B2BC3A, 0x4C1F, 0x4E0B, {0x9E, 0x55, 0x2F, 0x0C, 0x17, 0xD1, 0x88, 0x41}};

struct Block {
  HGLOBAL handle = nullptr;
  bool owned = false;

  Block(HGLOBAL given, bool own) : handle(given), owned(own) {}
  ~Block() {
    if (owned) GlobalFree(handle);
  }
  Block(Block const &) = delete;
  Block &operator=(Block const &) = delete;

  uint64_t size() const { return GlobalSize(handle); }
  char *bytes() const { return static_cast<char *>(GlobalLock(handle)); }
  bool Resize(uint64_t size) {
    HGLOBAL const resized = GlobalReAlloc(handle, size, GMEM_MOVEABLE | GMEM_ZEROINIT);
    if (resized != nullptr) handle = resized;
    return resized != nullptr;
  }
};

class MemoryStream final : public RefCounted<IStream, IID_IStream> {
 public:
  MemoryStream(std::shared_ptr<Block> block, uint64_t position)
      : RefCounted(1), block_(std::move(block)), position_(position) {}

  HRESULT QueryInterface(REFIID iid, void **out) override {
    return AnswerWith(iid, out,
                      {{IID_IUnknown, this},
                       {IID_ISequentialStream, this},
                       {IID_IStream, this},
                       {kIidMemoryStream, this}});
  }

  HRESULT Read(void *buffer, ULONG count, ULONG *read) override {
    Set(read, 0);
    if (buffer == nullptr) return STG_E_INVALIDPOINTER;
    auto const part = static_cast<ULONG>(std::min<uint64_t>(count, Left()));
    if (part != 0) std::memcpy(buffer, block_->bytes() + position_, part);
    position_ += part;
    Set(read, part);
    return S_OK;
  }

  HRESULT Write(void const *buffer, ULONG count, ULONG *written) override {
    Set(written, 0);
    if (buffer == nullptr) return STG_E_INVALIDPOINTER;
    if (count == 0) return S_OK;
    if (count > kLargest - position_) return STG_E_MEDIUMFULL;
    uint64_t const end = position_ + count;
    if (end > block_->size() && !block_->Resize(end)) return STG_E_MEDIUMFULL;
    std::memmove(block_->bytes() + position_, buffer, count);
    position_ = end;
    Set(written, count);
    return S_OK;
  }

  HRESULT Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER *newPosition) override {
    Set(newPosition, position_);
    if (origin > STREAM_SEEK_END) return STG_E_INVALIDFUNCTION;
    uint64_t const starts[] = {0, position_, block_->size()};
    uint64_t const start = starts[origin];
    uint64_t const target = start + static_cast<uint64_t>(move.QuadPart);
    bool const back = move.QuadPart < 0;
    if (target > kLargest || (back ? target > start : target < start)) {
      return STG_E_INVALIDFUNCTION;
    }
    position_ = target;
    Set(newPosition, position_);
    return S_OK;
  }

  HRESULT SetSize(ULARGE_INTEGER newSize) override {
    return block_->Resize(newSize.QuadPart) ? S_OK : STG_E_MEDIUMFULL;
  }

  HRESULT CopyTo(IStream *target, ULARGE_INTEGER count, ULARGE_INTEGER *read,
                 ULARGE_INTEGER *written) override {
    Set(read, 0);
    Set(written, 0);
    if (target == nullptr) return STG_E_INVALIDPOINTER;
    uint64_t const most = std::min(count.QuadPart, Left());
    HRESULT result = S_OK;
    uint64_t taken = 0;
    uint64_t given = 0;
    // In pieces, so that a target which writes here finds the bytes whole.
    while (taken < most && result == S_OK) {
      char piece[4096];
      ULONG got = 0;
      ULONG put = 0;
      Read(piece, static_cast<ULONG>(std::min<uint64_t>(most - taken, sizeof piece)), &got);
      if (got == 0) break;
      result = target->Write(piece, got, &put);
      taken += got;
      given += put;
    }
    Set(read, taken);
    Set(written, given);
    return result;
  }

  HRESULT Commit(DWORD /*flags*/) override { return S_OK; }
  HRESULT Revert() override { return S_OK; }
  HRESULT LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return STG_E_INVALIDFUNCTION;
  }
  HRESULT UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return STG_E_INVALIDFUNCTION;
  }

  HRESULT Stat(STATSTG *out, DWORD /*flags*/) override {
    if (out == nullptr) return STG_E_INVALIDPOINTER;
    *out = STATSTG{};
    out->type = STGTY_STREAM;
    out->cbSize.QuadPart = block_->size();
    return S_OK;
  }

  HRESULT Clone(IStream **out) override {
    if (out == nullptr) return STG_E_INVALIDPOINTER;
    *out = new (std::nothrow) MemoryStream(block_, position_);
    return *out == nullptr ? E_OUTOFMEMORY : S_OK;
  }

  HGLOBAL handle() const { return block_->handle; }

 private:
  static constexpr uint64_t kLargest = std::numeric_limits<int64_t>::max();

  uint64_t Left() const {
    uint64_t const size = block_->size();
    return position_ < size ? size - position_ : 0;
  }

  std::shared_ptr<Block> block_;
  uint64_t position_;
};

HRESULT MakeStream(HGLOBAL block, bool owned, IStream **out) {
  return Guarded([&] {
    auto shared = std::make_shared<Block>(block, false);
    *out = new MemoryStream(shared, 0);
    shared->owned = owned;
    return S_OK;
  });
}

}  // namespace
}  // namespace zolt

HRESULT CreateStreamOnHGlobal(HGLOBAL block, BOOL deleteOnRelease, IStream **out) {
  if (out == nullptr) return E_INVALIDARG;
  *out = nullptr;
  HGLOBAL const made = block == nullptr ? GlobalAlloc(GMEM_MOVEABLE, 0) : nullptr;
  if (block == nullptr && made == nullptr) return E_OUTOFMEMORY;
  HGLOBAL const used = block == nullptr ? made : block;
  HRESULT const result = zolt::MakeStream(used, deleteOnRelease != 0, out);
  if (result != S_OK) GlobalFree(made);
  return result;
}

HRESULT GetHGlobalFromStream(IStream *stream, HGLOBAL *out) {
  if (stream == nullptr || out == nullptr) return E_INVALIDARG;
  void *own = nullptr;
  if (stream->QueryInterface(zolt::kIidMemoryStream, &own) != S_OK) return E_INVALIDARG;
  auto *const memory = static_cast<zolt::MemoryStream *>(static_cast<IUnknown *>(own));
  *out = memory->handle();
  memory->Release();
  return S_OK;
}
