#ifndef ZOLT41_COMSERVER_KEY_ENUM_H_
#define ZOLT41_COMSERVER_KEY_ENUM_H_

#include <algorithm>
#include <cstdint>
#include <string>

#include "zolt41/platform/com/com_ptr.h"
#include "zolt41/platform/com/guarded.h"
#include "zolt41/platform/com/ref_counted.h"
#include "zolt41/platform/registry/name_walk.h"
#include "zolt41/platform/registry/registry.h"

namespace zolt {

// What a walk over a key knows of it: counts and longest names of the moment when it was made, and
// its ways through the names.
struct WalkedKey {
  HKEY key = 0;
  uint32_t subkeyCount = 0;
  uint32_t valueCount = 0;
  uint32_t longestSubkey = 0;
  uint32_t longestValue = 0;
  NameWalk subkeys{NameLists::Kind::keys};
  NameWalk values{NameLists::Kind::values};

  // False if the key cannot be asked.
  bool Measure() {
    return RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, &subkeyCount, &longestSubkey, nullptr,
                            &valueCount, &longestValue, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
  }

  // The name at a position; null if there is none, or one that is longer than any was.
  std::string const *Subkey(uint32_t index) { return Name(&subkeys, index, longestSubkey); }
  std::string const *Value(uint32_t index) { return Name(&values, index, longestValue); }

 private:
  std::string const *Name(NameWalk *names, uint32_t index, uint32_t longest) const {
    std::string const *name = nullptr;
    bool const found = names->At(key, index, &name) == ERROR_SUCCESS && name->size() <= longest;
    return found ? name : nullptr;
  }
};

// A walk over what lies in a section's key: counted when it is made, read live. `Kind` says what
// there is and how a record is filled; a false `Fill` ends the call and leaves the record zero.
// It holds a reference on the face of the section that it came from.
template <typename Kind>
class KeyEnum final : public RefCounted<typename Kind::Interface, Kind::kId> {
 public:
  using Interface = typename Kind::Interface;
  using Record = typename Kind::Record;

  // E_FAIL if the key cannot be asked, E_OUTOFMEMORY; then `*out` is null.
  static HRESULT Make(IUnknown *face, HKEY key, uint64_t index, Interface **out) {
    *out = nullptr;
    return Guarded([&]() -> HRESULT {
      ComPtr<KeyEnum> const made(new KeyEnum(face, key, index));
      if (!made->walked_.Measure()) return E_FAIL;
      return made->QueryInterface(Kind::kId, reinterpret_cast<void **>(out));
    });
  }

  HRESULT Next(ULONG count, Record *records, ULONG *fetched) override {
    if (count == 0) count = 1;
    if (fetched != nullptr) *fetched = 0;
    if (records == nullptr) return E_INVALIDARG;
    std::fill_n(records, count, Record{});
    ULONG const most = Part(count);
    ULONG done = 0;
    while (done < most && Kind::Fill(&walked_, static_cast<uint32_t>(index_), &records[done])) {
      index_++;
      done++;
    }
    if (fetched != nullptr) *fetched = done;
    return done == count ? S_OK : S_FALSE;
  }

  HRESULT Skip(ULONG count) override {
    ULONG const part = Part(count);
    index_ += part;
    return part == count ? S_OK : S_FALSE;
  }

  HRESULT Reset() override {
    index_ = 0;
    return S_OK;
  }

  HRESULT Clone(Interface **out) override {
    if (out == nullptr) return E_INVALIDARG;
    return Make(face_.get(), walked_.key, index_, out);
  }

 private:
  KeyEnum(IUnknown *face, HKEY key, uint64_t index)
      : face_(face), walked_{.key = key}, index_(index) {}

  // How many of `count` there are from here on.
  ULONG Part(ULONG count) const {
    uint64_t const total = Kind::Total(walked_);
    return index_ < total ? static_cast<ULONG>(std::min<uint64_t>(count, total - index_)) : 0;
  }

  ComPtr<IUnknown> face_;
  WalkedKey walked_;
  uint64_t index_;
};

}  // namespace zolt

#endif  // ZOLT41_COMSERVER_KEY_ENUM_H_
