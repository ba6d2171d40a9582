#ifndef ZOLT41_PLATFORM_COM_COM_ALLOC_H_
#define ZOLT41_PLATFORM_COM_COM_ALLOC_H_

#include <cstdint>

#include "zolt41/platform/com/com_abi.h"
#include "zolt41/platform/system/api.h"

// Memory and texts that components hand to their clients. Each may be freed on any thread.

// A block of `size` bytes, aligned for any object; null if there is no memory. Who gets one frees
// it with CoTaskMemFree, which lets null pass.
ZOLT_API void *CoTaskMemAlloc(uint64_t size);
// Makes the block `size` bytes long, keeping what fits. A null block is a new one; with `size` 0
// the block is freed and null given. Null for want of memory leaves the block as it was.
ZOLT_API void *CoTaskMemRealloc(void *block, uint64_t size);
ZOLT_API void CoTaskMemFree(void *block);

// A text of 16-bit characters with its length, in bytes and without the NUL behind it, in the 32
// bits before the first character. A null one counts as empty. SysFreeString lets null pass.
ZOLT_API BSTR SysAllocString(OLECHAR const *text);  // null for null
// `length` characters, those of `text` or, if that is null, undefined ones.
ZOLT_API BSTR SysAllocStringLen(OLECHAR const *text, UINT length);
// The same with a length in bytes, which may be odd.
ZOLT_API BSTR SysAllocStringByteLen(char const *bytes, UINT length);
// Put another text in the place of `*text`; 1, or 0 for want of memory, with `*text` as it was.
ZOLT_API int32_t SysReAllocString(BSTR *text, OLECHAR const *source);
ZOLT_API int32_t SysReAllocStringLen(BSTR *text, OLECHAR const *source, UINT length);
ZOLT_API void SysFreeString(BSTR text);
ZOLT_API UINT SysStringLen(BSTR text);
ZOLT_API UINT SysStringByteLen(BSTR text);

// The id as text in braces with capital digits, of 38 characters and a NUL, which the caller frees
// with CoTaskMemFree. E_POINTER without a place for it, E_OUTOFMEMORY without memory.
ZOLT_API HRESULT StringFromCLSID(REFCLSID id, LPOLESTR *text);
inline HRESULT StringFromIID(REFIID id, LPOLESTR *text) {
  return StringFromCLSID(id, text);
}
// The same into a buffer of `size` characters; 39, or 0 if that is too few.
ZOLT_API int32_t StringFromGUID2(REFGUID id, LPOLESTR text, int32_t size);
// Reads such a text, with digits of either case. Null is the id of zeros. CO_E_CLASSSTRING, and
// zeros, for any other text.
ZOLT_API HRESULT CLSIDFromString(LPCOLESTR text, CLSID *id);

#endif  // ZOLT41_PLATFORM_COM_COM_ALLOC_H_
