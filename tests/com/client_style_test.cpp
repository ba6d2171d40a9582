// A client in the usual style, which has only to compile; it knows the public header alone.
#include "zolt41/zolt41.h"

namespace {

struct IVisitor : public IUnknown {
  STDMETHOD(Visit)(THIS_ LPSTORAGE storage, LPCOLESTR name) PURE;
  STDMETHOD_(ULONG, Count)(THIS) PURE;
};

class CVisitor : public IVisitor, public IPropertyNotifySink {
 public:
  STDMETHOD(QueryInterface)(REFIID iid, LPVOID *out) override;
  STDMETHOD_(ULONG, AddRef)() override {
    return static_cast<ULONG>(InterlockedIncrement(&references_));
  }
  STDMETHOD_(ULONG, Release)() override {
    return static_cast<ULONG>(InterlockedDecrement(&references_));
  }
  STDMETHOD(Visit)(LPSTORAGE storage, LPCOLESTR name) override;
  STDMETHOD_(ULONG, Count)() override { return count_; }
  STDMETHOD(OnChanged)(DISPID) override { return NOERROR; }
  STDMETHOD(OnRequestEdit)(DISPID) override { return E_HANDLE; }

 private:
  LONG references_ = 0;
  ULONG count_ = 0;
};

STDMETHODIMP CVisitor::QueryInterface(REFIID iid, LPVOID *out) {
  bool const known = IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IPropertyNotifySink);
  LPUNKNOWN const face = known ? static_cast<IPropertyNotifySink *>(this) : nullptr;
  *out = face;
  return known ? S_OK : E_NOINTERFACE;
}

STDMETHODIMP CVisitor::Visit(LPSTORAGE storage, LPCOLESTR name) {
  LPSTREAM stream = nullptr;
  DWORD const mode = STGM_DIRECT | STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
  HRESULT const result = storage->OpenStream(name, nullptr, mode, 0, &stream);
  if (FAILED(result)) return result == STG_E_FILENOTFOUND ? E_ABORT : result;
  count_++;
  stream->Release();
  return S_OK;
}

static_assert((STGM_SHARE_DENY_READ | STGM_SHARE_DENY_WRITE | STGM_SHARE_DENY_NONE) == 0x70);
static_assert((CLSCTX_SERVER | CLSCTX_INPROC_HANDLER) == CLSCTX_ALL);
static_assert((CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER) == CLSCTX_SERVER);

[[maybe_unused]] CVisitor visitor;
[[maybe_unused]] BOOL const connects = TRUE;
[[maybe_unused]] LPCONNECTIONPOINT point = nullptr;
[[maybe_unused]] LPENUMSTATSTG elements = nullptr;
[[maybe_unused]] LPCWSTR const section = u"Audio";
static_assert(ResultFromScode(E_FAIL) == E_FAIL && IID_NULL == GUID_NULL);

[[maybe_unused]] LPENUMCONNECTIONPOINTS points = nullptr;
[[maybe_unused]] LPCONNECTDATA connection = nullptr;
[[maybe_unused]] LPENUMSTATPROPSTG properties = nullptr;
[[maybe_unused]] LPCSTR const narrow = "Audio";
static_assert(MAKE_HRESULT(1, 7, 14) == E_OUTOFMEMORY && HRESULT_CODE(E_OUTOFMEMORY) == 14);
static_assert(CLSID_NULL != IID_IDispatch && GHND == 0x42);

[[maybe_unused]] ULONG_PTR NumberOf(VARIANTARG const *argument) {
  LARGE_INTEGER wide;
  wide.QuadPart = V_VT(argument) == VT_BOOL ? V_BOOL(argument) : V_I4(argument);
  return V_VT(argument) == VT_BSTR ? SysStringLen(V_BSTR(argument)) : wide.u.LowPart;
}

}  // namespace
