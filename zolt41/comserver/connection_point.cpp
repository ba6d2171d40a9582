#include "zolt41/comserver/connection_point.h"

#include "zolt41/comserver/connection_enum.h"

namespace zolt {

HRESULT SectionConnectionPoint::GetConnectionInterface(IID *iid) {
  if (iid == nullptr) return E_POINTER;
  *iid = iid_;
  return S_OK;
}

HRESULT SectionConnectionPoint::GetConnectionPointContainer(IConnectionPointContainer **out) {
  if (out == nullptr) return E_POINTER;
  *out = container_;
  if (container_ == nullptr) return E_UNEXPECTED;
  container_->AddRef();
  return S_OK;
}

HRESULT SectionConnectionPoint::Advise(IUnknown *sink, DWORD_PTR *cookie) {
  if (cookie == nullptr) return E_POINTER;
  *cookie = 0;
  if (sink == nullptr) return E_POINTER;
  if (container_ == nullptr) return E_UNEXPECTED;
  if (sinks_.Add(sink) == nullptr) return E_OUTOFMEMORY;
  sink->AddRef();
  *cookie = reinterpret_cast<DWORD_PTR>(sink);
  return S_OK;
}

HRESULT SectionConnectionPoint::Unadvise(DWORD_PTR cookie) {
  auto *const sink = reinterpret_cast<IUnknown *>(cookie);  // NOLINT(*-int-to-ptr)
  if (!sinks_.Remove(sink)) return CONNECT_E_NOCONNECTION;
  sink->Release();
  return S_OK;
}

HRESULT SectionConnectionPoint::EnumConnections(IEnumConnections **out) {
  return WalkConnections(sinks_, out);
}

}  // namespace zolt
