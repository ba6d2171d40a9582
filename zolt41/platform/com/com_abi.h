#ifndef ZOLT41_PLATFORM_COM_COM_ABI_H_
#define ZOLT41_PLATFORM_COM_COM_ABI_H_

#include <compare>
#include <cstddef>
#include <cstdint>

#include "zolt41/platform/system/api.h"

// Component interfaces with the names, ids, slot orders and results that their clients know. Wide
// text is char16_t, numbers have the platform's widths, and a number that holds a pointer, such as
// a cookie, is as wide as one. Methods have the compiler's plain calling convention and throw
// nothing.
//
// Who gets an interface pointer out of a call owns one reference on it. An out pointer of a call
// that failed holds null, unless the call was given no place for it.

#define STDMETHODCALLTYPE
#define STDMETHOD(method) virtual HRESULT STDMETHODCALLTYPE method
#define STDMETHOD_(type, method) virtual type STDMETHODCALLTYPE method
#define STDMETHODIMP HRESULT STDMETHODCALLTYPE
#define STDMETHODIMP_(type) type STDMETHODCALLTYPE
#define PURE = 0
#define THIS void
#define THIS_
// Other headers may have them.
#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

using HRESULT = int32_t;
using SCODE = int32_t;
using BOOL = int32_t;
using BYTE = uint8_t;
using WORD = uint16_t;
using DWORD = uint32_t;
using DWORD_PTR = uintptr_t;
using ULONG_PTR = uintptr_t;
using LONG = int32_t;
using ULONG = uint32_t;
using UINT = uint32_t;
using LCID = uint32_t;
using DISPID = int32_t;
using WCHAR = char16_t;
using OLECHAR = char16_t;
using LPOLESTR = char16_t *;
using LPCOLESTR = char16_t const *;
using LPWSTR = char16_t *;
using LPCWSTR = char16_t const *;
using LPSTR = char *;
using LPCSTR = char const *;
using BSTR = char16_t *;
using LPVOID = void *;
using LPDWORD = DWORD *;
using SIZE_T = size_t;
using HGLOBAL = void *;

struct GUID {
  uint32_t Data1;
  uint16_t Data2;
  uint16_t Data3;
  uint8_t Data4[8];

  bool operator==(GUID const &) const = default;
};
static_assert(sizeof(GUID) == 16);

using IID = GUID;
using CLSID = GUID;
using FMTID = GUID;
using REFGUID = GUID const &;
using REFIID = IID const &;
using REFCLSID = CLSID const &;

constexpr bool IsEqualGUID(REFGUID a, REFGUID b) {
  return a == b;
}
constexpr bool IsEqualIID(REFIID a, REFIID b) {
  return a == b;
}
constexpr bool IsEqualCLSID(REFCLSID a, REFCLSID b) {
  return a == b;
}
inline constexpr GUID GUID_NULL = {};
inline constexpr IID IID_NULL = {};
inline constexpr CLSID CLSID_NULL = {};

constexpr bool SUCCEEDED(HRESULT result) {
  return result >= 0;
}
constexpr bool FAILED(HRESULT result) {
  return result < 0;
}

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT NOERROR = S_OK;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003);
inline constexpr HRESULT E_ABORT = static_cast<HRESULT>(0x80004004);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);
inline constexpr HRESULT E_PENDING = static_cast<HRESULT>(0x8000000A);
inline constexpr HRESULT E_UNEXPECTED = static_cast<HRESULT>(0x8000FFFF);
inline constexpr HRESULT E_ACCESSDENIED = static_cast<HRESULT>(0x80070005);
inline constexpr HRESULT E_HANDLE = static_cast<HRESULT>(0x80070006);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000E);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);
inline constexpr HRESULT DISP_E_BADVARTYPE = static_cast<HRESULT>(0x80020008);
inline constexpr HRESULT CLASS_E_NOAGGREGATION = static_cast<HRESULT>(0x80040110);
inline constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = static_cast<HRESULT>(0x80040111);
inline constexpr HRESULT CONNECT_E_NOCONNECTION = static_cast<HRESULT>(0x80040200);
inline constexpr HRESULT CONNECT_E_ADVISELIMIT = static_cast<HRESULT>(0x80040201);
inline constexpr HRESULT CONNECT_E_CANNOTCONNECT = static_cast<HRESULT>(0x80040202);
inline constexpr HRESULT REGDB_E_CLASSNOTREG = static_cast<HRESULT>(0x80040154);
inline constexpr HRESULT CO_E_CLASSSTRING = static_cast<HRESULT>(0x800401F3);
inline constexpr HRESULT CO_E_DLLNOTFOUND = static_cast<HRESULT>(0x800401F8);
inline constexpr HRESULT CO_E_ERRORINDLL = static_cast<HRESULT>(0x800401F9);

constexpr HRESULT MAKE_HRESULT(uint32_t failed, uint32_t facility, uint32_t code) {
  return static_cast<HRESULT>(failed << 31 | facility << 16 | code);
}
constexpr WORD HRESULT_CODE(HRESULT result) {
  return static_cast<WORD>(result);
}
constexpr HRESULT ResultFromScode(SCODE code) {
  return code;
}

// Change a number that threads share, and give what it is then.
inline LONG InterlockedIncrement(LONG volatile *number) {
  return __atomic_add_fetch(number, 1, __ATOMIC_SEQ_CST);
}
inline LONG InterlockedDecrement(LONG volatile *number) {
  return __atomic_sub_fetch(number, 1, __ATOMIC_SEQ_CST);
}

inline constexpr DISPID DISPID_UNKNOWN = -1;

inline constexpr IID IID_IUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IDispatch = {0x00020400, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IClassFactory = {1, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IConnectionPointContainer = {
    0xB196B284, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
inline constexpr IID IID_IEnumConnectionPoints = {
    0xB196B285, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
inline constexpr IID IID_IConnectionPoint = {
    0xB196B286, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
inline constexpr IID IID_IEnumConnections = {
    0xB196B287, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
inline constexpr IID IID_IPropertyNotifySink = {
    0x9BFBBC02, 0xEFF1, 0x101A, {0x84, 0xED, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};

struct ZOLT_API IUnknown {
  virtual HRESULT QueryInterface(REFIID iid, void **out) = 0;
  virtual ULONG AddRef() = 0;
  virtual ULONG Release() = 0;
};

using LPUNKNOWN = IUnknown *;

struct ZOLT_API IClassFactory : IUnknown {
  virtual HRESULT CreateInstance(IUnknown *outer, REFIID iid, void **out) = 0;
  virtual HRESULT LockServer(BOOL lock) = 0;
};

using LPCLASSFACTORY = IClassFactory *;

struct IConnectionPoint;
struct IConnectionPointContainer;

struct CONNECTDATA {
  IUnknown *pUnk;
  DWORD_PTR dwCookie;
};

struct ZOLT_API IEnumConnections : IUnknown {
  virtual HRESULT Next(ULONG count, CONNECTDATA *out, ULONG *fetched) = 0;
  virtual HRESULT Skip(ULONG count) = 0;
  virtual HRESULT Reset() = 0;
  virtual HRESULT Clone(IEnumConnections **out) = 0;
};

struct ZOLT_API IEnumConnectionPoints : IUnknown {
  virtual HRESULT Next(ULONG count, IConnectionPoint **out, ULONG *fetched) = 0;
  virtual HRESULT Skip(ULONG count) = 0;
  virtual HRESULT Reset() = 0;
  virtual HRESULT Clone(IEnumConnectionPoints **out) = 0;
};

struct ZOLT_API IConnectionPoint : IUnknown {
  virtual HRESULT GetConnectionInterface(IID *iid) = 0;
  virtual HRESULT GetConnectionPointContainer(IConnectionPointContainer **out) = 0;
  virtual HRESULT Advise(IUnknown *sink, DWORD_PTR *cookie) = 0;
  virtual HRESULT Unadvise(DWORD_PTR cookie) = 0;
  virtual HRESULT EnumConnections(IEnumConnections **out) = 0;
};

struct ZOLT_API IConnectionPointContainer : IUnknown {
  virtual HRESULT EnumConnectionPoints(IEnumConnectionPoints **out) = 0;
  virtual HRESULT FindConnectionPoint(REFIID iid, IConnectionPoint **out) = 0;
};

struct ZOLT_API IPropertyNotifySink : IUnknown {
  virtual HRESULT OnChanged(DISPID id) = 0;
  virtual HRESULT OnRequestEdit(DISPID id) = 0;
};

using LPCONNECTDATA = CONNECTDATA *;
using LPENUMCONNECTIONS = IEnumConnections *;
using LPENUMCONNECTIONPOINTS = IEnumConnectionPoints *;
using LPCONNECTIONPOINT = IConnectionPoint *;
using LPCONNECTIONPOINTCONTAINER = IConnectionPointContainer *;
using LPPROPERTYNOTIFYSINK = IPropertyNotifySink *;

#endif  // ZOLT41_PLATFORM_COM_COM_ABI_H_
