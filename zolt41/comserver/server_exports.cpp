#include "zolt41/comserver/server_exports.h"

#include <string>

#include "zolt41/comserver/class_entries.h"
#include "zolt41/comserver/class_factory.h"
#include "zolt41/comserver/pref_manager_interface.h"
#include "zolt41/comserver/self_register.h"
#include "zolt41/comserver/server_refs.h"
#include "zolt41/platform/com/com_ptr.h"
#include "zolt41/platform/com/guarded.h"

HRESULT DllGetClassObject(REFCLSID id, REFIID iid, void **out) {
  if (out != nullptr) *out = nullptr;
  if (id != CLSID_PrefManager) return CLASS_E_CLASSNOTAVAILABLE;
  HRESULT const result = zolt::Guarded([&] {
    zolt::ComPtr<zolt::PrefManagerFactory> const made(new zolt::PrefManagerFactory);
    return made->QueryInterface(iid, out);
  });
  return result == E_OUTOFMEMORY ? E_FAIL : result;
}

HRESULT DllCanUnloadNow() {
  return zolt::ServerReferences() == 0 && zolt::ServerLocks() == 0 ? S_OK : S_FALSE;
}

HRESULT DllRegisterServer() {
  ZOLTRegisterServer(0);
  return S_OK;
}

HRESULT DllUnregisterServer() {
  ZOLTUnregisterServer(0);
  return S_OK;
}

HRESULT ZOLTRegisterServer(BOOL machine) {
  return zolt::Guarded([&] { return zolt::RegisterClass(machine != 0); });
}

HRESULT ZOLTUnregisterServer(BOOL machine) {
  return zolt::Guarded([&] { return zolt::UnregisterClass(machine != 0); });
}

HRESULT ZOLTServerRegistration(BOOL machine, char *module, uint32_t size) {
  return zolt::Guarded([&] {
    std::string path;
    HRESULT const result = zolt::ReadRegistration(machine != 0, &path);
    if (module != nullptr && size != 0) module[path.copy(module, size - 1)] = '\0';
    return result;
  });
}
