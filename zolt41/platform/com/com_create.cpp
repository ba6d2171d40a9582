#include "zolt41/platform/com/com_create.h"

#include <string>
#include <string_view>

#include "zolt41/platform/com/class_lookup.h"
#include "zolt41/platform/com/class_module.h"
#include "zolt41/platform/com/com_alloc.h"
#include "zolt41/platform/com/com_ptr.h"
#include "zolt41/platform/com/guarded.h"

namespace zolt {
namespace {

HRESULT ReadProgId(std::u16string_view name, CLSID *id) {
  std::string key;
  for (char16_t const letter : name) {
    if (letter > 0x7F) return CO_E_CLASSSTRING;
    key.push_back(static_cast<char>(letter));
  }
  std::string const text = TextOfClassKey(key + "\\CLSID");
  std::u16string const wide(text.begin(), text.end());
  return wide.empty() ? CO_E_CLASSSTRING : CLSIDFromString(wide.c_str(), id);
}

}  // namespace
}  // namespace zolt

HRESULT CLSIDFromProgID(LPCOLESTR name, CLSID *id) {
  if (name == nullptr || id == nullptr) return E_INVALIDARG;
  *id = GUID_NULL;
  return zolt::Guarded([&] { return zolt::ReadProgId(name, id); });
}

HRESULT CoGetClassObject(REFCLSID id, DWORD context, void *reserved, REFIID iid, void **out) {
  if (out == nullptr) return E_INVALIDARG;
  *out = nullptr;
  if (reserved != nullptr) return E_INVALIDARG;
  if ((context & CLSCTX_INPROC_SERVER) == 0) return REGDB_E_CLASSNOTREG;
  return zolt::Guarded([&] {
    std::string const module = zolt::ModuleOfClass(id);
    return module.empty() ? REGDB_E_CLASSNOTREG : zolt::ClassFromModule(module, id, iid, out);
  });
}

HRESULT CoCreateInstance(REFCLSID id, IUnknown *outer, DWORD context, REFIID iid, void **out) {
  if (out == nullptr) return E_INVALIDARG;
  *out = nullptr;
  zolt::ComPtr<IClassFactory> factory;
  HRESULT const result =
      CoGetClassObject(id, context, nullptr, IID_IClassFactory, factory.VoidPlace());
  return FAILED(result) ? result : factory->CreateInstance(outer, iid, out);
}

void CoFreeUnusedLibraries() {
  zolt::ForgetClasses();
  zolt::UnloadUnusedModules();
}
