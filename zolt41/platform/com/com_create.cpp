#include "zolt41/platform/com/com_create.h"

#include <string>
#include <string_view>

#include "zolt41/platform/com/class_lookup.h"
#include "zolt41/platform/com/class_module.h"
#include "zolt41/platform/com/com_alloc.h"
#include "zolt41/platform/com/com_ptr.h"
#include "zolt41/platform/com/guarded.h"
#include "zolt41/platform/com/module_way.h"

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

// Does something with the loaded module of a class.
template <typename Work>
HRESULT InModuleOf(REFCLSID id, DWORD context, Work work) {
  if ((context & CLSCTX_INPROC_SERVER) == 0) return REGDB_E_CLASSNOTREG;
  return Guarded([&] {
    std::string const path = ModuleOfClass(id);
    if (path.empty()) return REGDB_E_CLASSNOTREG;
    UsedModule const module(path);
    return module.result() == S_OK ? work(module) : module.result();
  });
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
  return zolt::InModuleOf(
      id, context, [&](zolt::UsedModule const &module) { return module.GetClass(id, iid, out); });
}

HRESULT CoCreateInstance(REFCLSID id, IUnknown *outer, DWORD context, REFIID iid, void **out) {
  if (out == nullptr) return E_INVALIDARG;
  *out = nullptr;
  return zolt::InModuleOf(id, context, [&](zolt::UsedModule const &module) {
    zolt::ComPtr<IClassFactory> factory;
    HRESULT const result = module.GetClass(id, IID_IClassFactory, factory.VoidPlace());
    return FAILED(result) ? result : factory->CreateInstance(outer, iid, out);
  });
}

HRESULT ZOLTCheckModule(char const *path, char *place, uint32_t size) {
  if (path == nullptr) return E_INVALIDARG;
  return zolt::Guarded([&] {
    std::string reached;
    HRESULT const result = zolt::FollowModulePath(path, &reached);
    if (place != nullptr && size != 0) place[reached.copy(place, size - 1)] = '\0';
    return result;
  });
}

void CoFreeUnusedLibraries() {
  zolt::ForgetClasses();
  zolt::UnloadUnusedModules();
}
