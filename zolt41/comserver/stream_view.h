#ifndef ZOLT41_COMSERVER_STREAM_VIEW_H_
#define ZOLT41_COMSERVER_STREAM_VIEW_H_

#include <cstdint>
#include <string_view>

#include "zolt41/comserver/server_refs.h"
#include "zolt41/platform/com/ole_storage.h"
#include "zolt41/platform/com/ref_counted.h"
#include "zolt41/prefs/typed_prefs.h"

namespace zolt {

// A value as a stream: a copy of its bytes, which goes back to the store as a whole. Opening reads
// it along the store's chain, whatever its type; it is written to the store itself, as REG_BINARY.
//
// Of the mode STGM_WRITE, STGM_READWRITE and STGM_TRANSACTED count. Without the last, each Write
// commits. A write ends the value at its own last byte. Commit gives S_OK whatever the store did.
//
// It holds no reference on a section, only the pointer to the store, which must live longer.
class ValueStream final : public RefCounted<IStream, IID_IStream> {
 public:
  // The longest name, in bytes, that a value may have here.
  static constexpr size_t kLongestName = 259;

  // E_FAIL if the value is absent or there is no memory for its bytes, STG_E_INVALIDNAME if the
  // name is too long, E_OUTOFMEMORY without memory for the stream; then `*out` is null.
  static HRESULT Open(TYPrefs *store, uint32_t section, std::string_view name, uint32_t mode,
                      IStream **out);

  HRESULT Read(void *buffer, ULONG count, ULONG *read) override;
  HRESULT Write(void const *buffer, ULONG count, ULONG *written) override;
  HRESULT Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER *newPosition) override;
  HRESULT SetSize(ULARGE_INTEGER newSize) override;
  HRESULT CopyTo(IStream *target, ULARGE_INTEGER count, ULARGE_INTEGER *read,
                 ULARGE_INTEGER *written) override;
  HRESULT Commit(DWORD flags) override;
  HRESULT Revert() override;
  HRESULT LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
  HRESULT UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
  HRESULT Stat(STATSTG *, DWORD) override { return E_NOTIMPL; }
  HRESULT Clone(IStream **out) override;

 private:
  ValueStream(TYPrefs *store, uint32_t section, std::string_view name, uint32_t mode);
  ~ValueStream() override;

  static HRESULT OpenAt(TYPrefs *store, uint32_t section, std::string_view name, uint32_t mode,
                        uint32_t position, IStream **out);

  bool Load();
  bool MayWrite() const { return (mode_ & (STGM_WRITE | STGM_READWRITE)) != 0; }
  uint32_t Part(uint32_t count) const;
  bool Resize(uint32_t size, uint32_t used);

  ServerReference server_;
  TYPrefs *store_;
  uint32_t section_;
  uint32_t mode_;
  char name_[kLongestName + 1];
  char *data_ = nullptr;  // a memory block; null once a Revert has failed
  uint32_t size_ = 0;
  uint32_t position_ = 0;
};

}  // namespace zolt

#endif  // ZOLT41_COMSERVER_STREAM_VIEW_H_
