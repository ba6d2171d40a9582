#ifndef ZOLT41_PLATFORM_COM_VARIANT_H_
#define ZOLT41_PLATFORM_COM_VARIANT_H_

#include <cstdint>

#include "zolt41/platform/com/com_abi.h"
#include "zolt41/platform/system/api.h"

// Values of a type that is told beside them.

using VARTYPE = uint16_t;
using VARIANT_BOOL = int16_t;
using DATE = double;
using PROPID = uint32_t;

inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

inline constexpr VARTYPE VT_EMPTY = 0;
inline constexpr VARTYPE VT_NULL = 1;
inline constexpr VARTYPE VT_I2 = 2;
inline constexpr VARTYPE VT_I4 = 3;
inline constexpr VARTYPE VT_R4 = 4;
inline constexpr VARTYPE VT_R8 = 5;
inline constexpr VARTYPE VT_CY = 6;
inline constexpr VARTYPE VT_DATE = 7;
inline constexpr VARTYPE VT_BSTR = 8;
inline constexpr VARTYPE VT_DISPATCH = 9;
inline constexpr VARTYPE VT_ERROR = 10;
inline constexpr VARTYPE VT_BOOL = 11;
inline constexpr VARTYPE VT_VARIANT = 12;
inline constexpr VARTYPE VT_UNKNOWN = 13;
inline constexpr VARTYPE VT_DECIMAL = 14;
inline constexpr VARTYPE VT_I1 = 16;
inline constexpr VARTYPE VT_UI1 = 17;
inline constexpr VARTYPE VT_UI2 = 18;
inline constexpr VARTYPE VT_UI4 = 19;
inline constexpr VARTYPE VT_I8 = 20;
inline constexpr VARTYPE VT_UI8 = 21;
inline constexpr VARTYPE VT_INT = 22;
inline constexpr VARTYPE VT_UINT = 23;
inline constexpr VARTYPE VT_LPSTR = 30;
inline constexpr VARTYPE VT_LPWSTR = 31;
inline constexpr VARTYPE VT_RECORD = 36;
inline constexpr VARTYPE VT_FILETIME = 64;
inline constexpr VARTYPE VT_BLOB = 65;
inline constexpr VARTYPE VT_STREAM = 66;
inline constexpr VARTYPE VT_STORAGE = 67;
inline constexpr VARTYPE VT_STREAMED_OBJECT = 68;
inline constexpr VARTYPE VT_STORED_OBJECT = 69;
inline constexpr VARTYPE VT_BLOB_OBJECT = 70;
inline constexpr VARTYPE VT_CF = 71;
inline constexpr VARTYPE VT_CLSID = 72;
inline constexpr VARTYPE VT_VECTOR = 0x1000;
inline constexpr VARTYPE VT_ARRAY = 0x2000;
inline constexpr VARTYPE VT_BYREF = 0x4000;
inline constexpr VARTYPE VT_TYPEMASK = 0x0FFF;

struct IDispatch;  // an IUnknown, as far as is needed here
struct IStream;
struct IStorage;
struct SAFEARRAY;

union LARGE_INTEGER {
  __extension__ struct {
    DWORD LowPart;
    LONG HighPart;
  };
  struct {
    DWORD LowPart;
    LONG HighPart;
  } u;
  int64_t QuadPart;
};

union ULARGE_INTEGER {
  __extension__ struct {
    DWORD LowPart;
    DWORD HighPart;
  };
  struct {
    DWORD LowPart;
    DWORD HighPart;
  } u;
  uint64_t QuadPart;
};

struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};

struct CY {
  int64_t int64;
};

struct DECIMAL {
  uint16_t wReserved;
  uint8_t scale;
  uint8_t sign;
  uint32_t Hi32;
  uint64_t Lo64;
};

struct VARIANT {
  __extension__ union {
    __extension__ struct {
      VARTYPE vt;
      uint16_t wReserved1;
      uint16_t wReserved2;
      uint16_t wReserved3;
      union {
        int64_t llVal;
        uint64_t ullVal;
        int32_t lVal;
        uint32_t ulVal;
        int32_t intVal;
        uint32_t uintVal;
        int16_t iVal;
        uint16_t uiVal;
        int8_t cVal;
        uint8_t bVal;
        float fltVal;
        double dblVal;
        VARIANT_BOOL boolVal;
        SCODE scode;
        CY cyVal;
        DATE date;
        BSTR bstrVal;
        IUnknown *punkVal;
        IDispatch *pdispVal;
        SAFEARRAY *parray;
        VARIANT *pvarVal;
        void *byref;
        void *record[2];
      };
    };
    DECIMAL decVal;
  };
};
static_assert(sizeof(VARIANT) == 24);
using VARIANTARG = VARIANT;
// Also of a PROPVARIANT.
#define V_VT(variant) ((variant)->vt)
#define V_BOOL(variant) ((variant)->boolVal)
#define V_BSTR(variant) ((variant)->bstrVal)
#define V_I2(variant) ((variant)->iVal)
#define V_I4(variant) ((variant)->lVal)
#define V_UI4(variant) ((variant)->ulVal)
#define V_R8(variant) ((variant)->dblVal)
#define V_UNKNOWN(variant) ((variant)->punkVal)

struct BLOB {
  ULONG cbSize;
  BYTE *pBlobData;
};

struct CLIPDATA {
  ULONG cbSize;  // of the data and the 4 bytes of the format
  LONG ulClipFmt;
  BYTE *pClipData;
};

struct PROPVARIANT;

// A counted array; its block is freed with CoTaskMemFree.
template <typename Element>
struct ZOLTCountedArray {
  ULONG cElems;
  Element *pElems;
};

struct PROPVARIANT {
  VARTYPE vt;
  uint16_t wReserved1;
  uint16_t wReserved2;
  uint16_t wReserved3;
  union {
    int8_t cVal;
    uint8_t bVal;
    int16_t iVal;
    uint16_t uiVal;
    int32_t lVal;
    uint32_t ulVal;
    int32_t intVal;
    uint32_t uintVal;
    LARGE_INTEGER hVal;
    ULARGE_INTEGER uhVal;
    float fltVal;
    double dblVal;
    VARIANT_BOOL boolVal;
    SCODE scode;
    CY cyVal;
    DATE date;
    FILETIME filetime;
    CLSID *puuid;
    CLIPDATA *pclipdata;
    BSTR bstrVal;
    BLOB blob;
    char *pszVal;
    LPOLESTR pwszVal;
    IUnknown *punkVal;
    IDispatch *pdispVal;
    IStream *pStream;
    IStorage *pStorage;
    void *byref;
    ZOLTCountedArray<char> cac;
    ZOLTCountedArray<uint8_t> caub;
    ZOLTCountedArray<int16_t> cai;
    ZOLTCountedArray<uint16_t> caui;
    ZOLTCountedArray<VARIANT_BOOL> cabool;
    ZOLTCountedArray<int32_t> cal;
    ZOLTCountedArray<uint32_t> caul;
    ZOLTCountedArray<SCODE> cascode;
    ZOLTCountedArray<float> caflt;
    ZOLTCountedArray<LARGE_INTEGER> cah;
    ZOLTCountedArray<ULARGE_INTEGER> cauh;
    ZOLTCountedArray<double> cadbl;
    ZOLTCountedArray<CY> cacy;
    ZOLTCountedArray<DATE> cadate;
    ZOLTCountedArray<FILETIME> cafiletime;
    ZOLTCountedArray<CLSID> cauuid;
    ZOLTCountedArray<CLIPDATA> caclipdata;
    ZOLTCountedArray<BSTR> cabstr;
    ZOLTCountedArray<char *> calpstr;
    ZOLTCountedArray<LPOLESTR> calpwstr;
    ZOLTCountedArray<PROPVARIANT> capropvar;
  };
};
static_assert(sizeof(PROPVARIANT) == 24);

// Makes it VT_EMPTY without freeing anything; lets null pass.
ZOLT_API void VariantInit(VARIANT *variant);
// Frees what it owns and makes it VT_EMPTY. What lies behind VT_BYREF is not owned. E_INVALIDARG
// for null; DISP_E_BADVARTYPE, with nothing done, for a type that no VARIANT has, and for arrays
// and records, which are not known here.
ZOLT_API HRESULT VariantClear(VARIANT *variant);
// Clears `target`, then makes it a deep copy; the same results, found before anything is done. One
// with VT_BYREF is copied as the pointer. Without memory E_OUTOFMEMORY, and `target` is VT_EMPTY.
ZOLT_API HRESULT VariantCopy(VARIANT *target, VARIANT const *source);

// The same for a PROPVARIANT; its blocks are freed with CoTaskMemFree. Clear gives
// STG_E_INVALIDPARAMETER for a type that is not known, and makes it VT_EMPTY without freeing; Copy
// gives that too. `target` is not cleared first, and VT_EMPTY after a failure.
ZOLT_API void PropVariantInit(PROPVARIANT *variant);
ZOLT_API HRESULT PropVariantClear(PROPVARIANT *variant);
ZOLT_API HRESULT PropVariantCopy(PROPVARIANT *target, PROPVARIANT const *source);
// Clears each of `count`; null is let pass if that is 0.
ZOLT_API HRESULT FreePropVariantArray(ULONG count, PROPVARIANT *variants);

#endif  // ZOLT41_PLATFORM_COM_VARIANT_H_
