// A component module whose state a test steers through the environment: it may be unloaded when
// ZOLT_TEST_UNLOAD is set.
#include <cstdlib>

#include "zolt41/platform/com/com_ptr.h"
#include "zolt41/platform/com/ref_counted.h"

namespace {

class Factory final : public zolt::RefCounted<IClassFactory, IID_IClassFactory> {
 public:
  HRESULT CreateInstance(IUnknown *outer, REFIID iid, void **out) override {
    if (outer == nullptr) return QueryInterface(iid, out);
    zolt::ComPtr<IUnknown> const used(outer);
    return CLASS_E_NOAGGREGATION;
  }
  HRESULT LockServer(BOOL) override { return S_OK; }
};

}  // namespace

extern "C" {

ZOLT_API HRESULT DllGetClassObject(REFCLSID id, REFIID iid, void **out) {
  if (id != IID_IClassFactory) return CLASS_E_CLASSNOTAVAILABLE;
  zolt::ComPtr<Factory> const made(new Factory);
  return made->QueryInterface(iid, out);
}

ZOLT_API HRESULT DllCanUnloadNow() {
  return std::getenv("ZOLT_TEST_UNLOAD") != nullptr ? S_OK : S_FALSE;
}
}
