#include "zolt41/platform/com/co_init.h"

#include <cstdint>

namespace {

thread_local constinit uint32_t uses = 0;

}  // namespace

HRESULT CoInitialize(void *reserved) {
  return CoInitializeEx(reserved, COINIT_APARTMENTTHREADED);
}

HRESULT CoInitializeEx(void *reserved, DWORD /*kind*/) {
  if (reserved != nullptr) return E_INVALIDARG;
  return ++uses == 1 ? S_OK : S_FALSE;
}

void CoUninitialize() {
  if (uses != 0) uses--;
}
