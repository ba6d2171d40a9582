#include "zolt41/comserver/connection_enum.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "zolt41/platform/com/com_ptr.h"
#include "zolt41/platform/com/guarded.h"
#include "zolt41/platform/com/ref_counted.h"

namespace zolt {
namespace {

using Elements = std::vector<ComPtr<IUnknown>>;

struct Connections {
  using Interface = IEnumConnections;
  using Record = CONNECTDATA;
  static constexpr IID const &kId = IID_IEnumConnections;

  static void Give(IUnknown *element, CONNECTDATA *record) {
    element->AddRef();
    *record = {element, reinterpret_cast<DWORD_PTR>(element)};
  }
};

struct ConnectionPoints {
  using Interface = IEnumConnectionPoints;
  using Record = IConnectionPoint *;
  static constexpr IID const &kId = IID_IEnumConnectionPoints;

  static void Give(IUnknown *element, IConnectionPoint **record) {
    element->QueryInterface(IID_IConnectionPoint, reinterpret_cast<void **>(record));
  }
};

template <typename Kind>
class SnapshotEnum final : public RefCounted<typename Kind::Interface, Kind::kId> {
 public:
  using Interface = typename Kind::Interface;

  explicit SnapshotEnum(Elements elements)
      : RefCounted<Interface, Kind::kId>(1), elements_(std::move(elements)) {}

  HRESULT Next(ULONG count, typename Kind::Record *out, ULONG *fetched) override {
    if (out == nullptr) return E_POINTER;
    if (fetched == nullptr && count != 1) return E_INVALIDARG;
    if (fetched != nullptr) *fetched = 0;
    if (position_ >= elements_.size()) return S_FALSE;
    auto const part = static_cast<ULONG>(std::min<size_t>(count, elements_.size() - position_));
    for (ULONG i = 0; i < part; i++) Kind::Give(elements_[position_++].get(), &out[i]);
    if (fetched != nullptr) *fetched = part;
    return part == count ? S_OK : S_FALSE;
  }

  HRESULT Skip(ULONG count) override {
    if (count < elements_.size() - position_) {
      position_ += count;
      return S_OK;
    }
    position_ = elements_.empty() ? 0 : elements_.size() - 1;
    return S_FALSE;
  }

  HRESULT Reset() override {
    position_ = 0;
    return S_OK;
  }

  HRESULT Clone(Interface **out) override {
    return Make(out, [this] { return elements_; });
  }

  template <typename Copy>
  static HRESULT Make(Interface **out, Copy copy) {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    return Guarded([&] {
      *out = new SnapshotEnum(copy());
      return S_OK;
    });
  }

 private:
  Elements elements_;
  size_t position_ = 0;
};

Elements CopyOf(SinkArray const &array) {
  Elements elements;
  elements.reserve(array.capacity());
  for (uint32_t i = 0; i < array.capacity(); i++) {
    if (array.At(i) != nullptr) elements.emplace_back(array.At(i));
  }
  return elements;
}

}  // namespace

HRESULT WalkConnections(SinkArray const &sinks, IEnumConnections **out) {
  return SnapshotEnum<Connections>::Make(out, [&] { return CopyOf(sinks); });
}

HRESULT WalkConnectionPoints(SinkArray const &points, IEnumConnectionPoints **out) {
  return SnapshotEnum<ConnectionPoints>::Make(out, [&] { return CopyOf(points); });
}

}  // namespace zolt
