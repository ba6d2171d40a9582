#ifndef ZOLT41_PLATFORM_COM_GUARDED_H_
#define ZOLT41_PLATFORM_COM_GUARDED_H_

#include <new>

#include "zolt41/platform/com/com_abi.h"

namespace zolt {

// What a method does: nothing that is thrown in it leaves the interface.
template <typename Work>
HRESULT Guarded(Work work) noexcept {
  try {
    return work();
  } catch (std::bad_alloc const &) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_FAIL;
  }
}

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_COM_GUARDED_H_
