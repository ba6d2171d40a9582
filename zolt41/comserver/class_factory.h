#ifndef ZOLT41_COMSERVER_CLASS_FACTORY_H_
#define ZOLT41_COMSERVER_CLASS_FACTORY_H_

#include <atomic>
#include <cstdint>

#include "zolt41/platform/com/com_abi.h"
#include "zolt41/platform/com/ref_counted.h"

namespace zolt {

// Makes objects of the class. One that is not locked does not keep the library loaded.
class PrefManagerFactory final : public RefCounted<IClassFactory, IID_IClassFactory> {
 public:
  HRESULT CreateInstance(IUnknown *outer, REFIID iid, void **out) override;
  HRESULT LockServer(BOOL lock) override;

 private:
  ~PrefManagerFactory() override = default;

  std::atomic<int32_t> locks_ = 0;
};

// How many factories are locked.
int32_t ServerLocks();

}  // namespace zolt

#endif  // ZOLT41_COMSERVER_CLASS_FACTORY_H_
