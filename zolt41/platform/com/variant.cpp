#include "zolt41/platform/com/variant.h"

#include <algorithm>
#include <iterator>

#include "zolt41/platform/com/com_alloc.h"

namespace {

constexpr VARTYPE kTypes[] = {VT_EMPTY,   VT_NULL,    VT_I2,   VT_I4,       VT_R4,    VT_R8,
                              VT_CY,      VT_DATE,    VT_BSTR, VT_DISPATCH, VT_ERROR, VT_BOOL,
                              VT_UNKNOWN, VT_DECIMAL, VT_I1,   VT_UI1,      VT_UI2,   VT_UI4,
                              VT_I8,      VT_UI8,     VT_INT,  VT_UINT};

bool IsKnown(VARTYPE type) {
  return std::ranges::find(kTypes, type) != std::end(kTypes);
}

bool IsPointer(VARTYPE type) {
  auto const base = static_cast<VARTYPE>(type & ~VT_BYREF);
  return (type & VT_BYREF) != 0 && base != VT_EMPTY && base != VT_NULL &&
         (base == VT_VARIANT || IsKnown(base));
}

HRESULT Check(VARIANT const *variant) {
  if (variant == nullptr) return E_INVALIDARG;
  return IsKnown(variant->vt) || IsPointer(variant->vt) ? S_OK : DISP_E_BADVARTYPE;
}

bool IsObject(VARTYPE type) {
  return type == VT_UNKNOWN || type == VT_DISPATCH;
}

}  // namespace

void VariantInit(VARIANT *variant) {
  if (variant != nullptr) *variant = VARIANT{};
}

HRESULT VariantClear(VARIANT *variant) {
  if (HRESULT const bad = Check(variant); bad != S_OK) return bad;
  VARIANT const old = *variant;
  VariantInit(variant);
  if (old.vt == VT_BSTR) SysFreeString(old.bstrVal);
  if (IsObject(old.vt) && old.punkVal != nullptr) old.punkVal->Release();
  return S_OK;
}

HRESULT VariantCopy(VARIANT *target, VARIANT const *source) {
  if (HRESULT const bad = Check(source); bad != S_OK) return bad;
  if (target == source) return S_OK;
  if (HRESULT const bad = VariantClear(target); bad != S_OK) return bad;
  VARIANT copy = *source;
  if (copy.vt == VT_BSTR && copy.bstrVal != nullptr) {
    copy.bstrVal = SysAllocStringByteLen(reinterpret_cast<char const *>(source->bstrVal),
                                         SysStringByteLen(source->bstrVal));
    if (copy.bstrVal == nullptr) return E_OUTOFMEMORY;
  }
  if (IsObject(copy.vt) && copy.punkVal != nullptr) copy.punkVal->AddRef();
  *target = copy;
  return S_OK;
}
