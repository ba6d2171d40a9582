#include "zolt41/comserver/class_factory.h"

#include "zolt41/comserver/pref_manager.h"
#include "zolt41/platform/com/com_ptr.h"
#include "zolt41/platform/com/guarded.h"

namespace zolt {
namespace {

constinit std::atomic<int32_t> lockedFactories = 0;

}  // namespace

HRESULT PrefManagerFactory::CreateInstance(IUnknown *outer, REFIID iid, void **out) {
  if (out != nullptr) *out = nullptr;
  if (outer != nullptr) return CLASS_E_NOAGGREGATION;
  HRESULT const result = Guarded([&] {
    ComPtr<PrefManager> const made(new PrefManager);
    return made->QueryInterface(iid, out);
  });
  return result == E_OUTOFMEMORY ? E_FAIL : result;
}

HRESULT PrefManagerFactory::LockServer(BOOL lock) {
  if (lock != 0) {
    if (++locks_ == 1) ++lockedFactories;
  } else if (--locks_ == 0) {
    --lockedFactories;
  }
  return S_OK;
}

int32_t ServerLocks() {
  return lockedFactories;
}

}  // namespace zolt
