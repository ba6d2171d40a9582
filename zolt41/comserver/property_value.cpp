#include "zolt41/comserver/property_value.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "zolt41/platform/com/com_alloc.h"
#include "zolt41/platform/system/codepage.h"

namespace zolt {
namespace {

constexpr size_t kTextSize = 256;

// Up to its first NUL; null is empty.
std::u16string_view UpToNul(BSTR text) {
  return text == nullptr ? std::u16string_view() : std::u16string_view(text);
}

HRESULT ReadNumber(TYPrefs *store, uint32_t section, char const *name, PROPVARIANT *variant) {
  int32_t const wanted = variant->lVal;
  store->ReadNum(section, name, &variant->lVal, wanted, 0);
  return S_OK;
}

HRESULT ReadBoolean(TYPrefs *store, uint32_t section, char const *name, PROPVARIANT *variant) {
  int32_t value = 0;
  store->ReadBool(section, name, &value, variant->boolVal == VARIANT_TRUE, 0);
  variant->boolVal = value == 1 ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
}

HRESULT ReadText(TYPrefs *store, uint32_t section, char const *name, PROPVARIANT *variant) {
  char text[kTextSize] = "";
  std::u16string_view const other = UpToNul(variant->bstrVal);
  auto const count = static_cast<int32_t>(std::min(other.size(), kTextSize - 1));
  char wanted[kTextSize] = "";
  if (count != 0) {
    WideCharToMultiByte(CP_ACP, 0, other.data(), count, wanted, kTextSize, nullptr, nullptr);
  }
  store->ReadStr(section, name, text, wanted, 0);
  auto const length = static_cast<int32_t>(std::strlen(text));
  variant->bstrVal = SysAllocStringLen(nullptr, static_cast<UINT>(length));
  if (variant->bstrVal == nullptr) return E_OUTOFMEMORY;
  if (length != 0) MultiByteToWideChar(CP_ACP, 0, text, length, variant->bstrVal, length);
  return S_OK;
}

HRESULT WriteNumber(TYPrefs *store, uint32_t section, char const *name,
                    PROPVARIANT const &variant) {
  store->WriteNum(section, name, variant.lVal, PrefLevelThis);
  return S_OK;
}

HRESULT WriteBoolean(TYPrefs *store, uint32_t section, char const *name,
                     PROPVARIANT const &variant) {
  store->WriteBool(section, name, variant.boolVal == VARIANT_TRUE, PrefLevelThis);
  return S_OK;
}

HRESULT WriteText(TYPrefs *store, uint32_t section, char const *name, PROPVARIANT const &variant) {
  std::u16string_view const wide = UpToNul(variant.bstrVal);
  std::string text(wide.size(), '\0');
  auto const length = static_cast<int32_t>(wide.size());
  if (length != 0) {
    WideCharToMultiByte(CP_ACP, 0, wide.data(), length, text.data(), length, nullptr, nullptr);
  }
  store->WriteStr(section, name, text.c_str(), PrefLevelThis);
  return S_OK;
}

struct Type {
  VARTYPE type;
  HRESULT (*read)(TYPrefs *, uint32_t, char const *, PROPVARIANT *);
  HRESULT (*write)(TYPrefs *, uint32_t, char const *, PROPVARIANT const &);
};

constexpr Type kTypes[] = {{VT_I4, ReadNumber, WriteNumber},
                           {VT_BSTR, ReadText, WriteText},
                           {VT_BOOL, ReadBoolean, WriteBoolean}};

Type const *TypeOf(VARTYPE type) {
  auto const *const found = std::ranges::find(kTypes, type, &Type::type);
  return found == std::end(kTypes) ? nullptr : found;
}

}  // namespace

HRESULT ReadProperty(TYPrefs *store, uint32_t section, char const *name, PROPVARIANT *variant) {
  Type const *const type = TypeOf(variant->vt);
  HRESULT const result = type == nullptr ? S_OK : type->read(store, section, name, variant);
  if (type == nullptr || result != S_OK) PropVariantInit(variant);
  return result;
}

HRESULT WriteProperty(TYPrefs *store, uint32_t section, char const *name,
                      PROPVARIANT const &variant) {
  Type const *const type = TypeOf(variant.vt);
  return type == nullptr ? S_OK : type->write(store, section, name, variant);
}

}  // namespace zolt
