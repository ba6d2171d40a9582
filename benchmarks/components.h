#ifndef ZOLT41_BENCH_COMPONENTS_H_
#define ZOLT41_BENCH_COMPONENTS_H_

#include "benchmarks/measure.h"
#include "zolt41/zolt41.h"

namespace zolt::bench {

// The class must be registered. The caller releases what these give.

inline IPrefManager *CreateManager() {
  IPrefManager *manager = nullptr;
  Require(CoCreateInstance(CLSID_PrefManager, nullptr, CLSCTX_INPROC_SERVER, IID_IPrefManager,
                           reinterpret_cast<void **>(&manager)) == S_OK,
          "the class was not created");
  return manager;
}

inline IStorage *Storage(IStorage *in, char16_t const *name) {
  IStorage *storage = nullptr;
  Require(in->CreateStorage(name, 0, 0, 0, &storage) == S_OK, "a section did not open");
  return storage;
}

inline IPropertyStorage *Properties(IStorage *storage) {
  IPropertyStorage *properties = nullptr;
  Require(
      storage->QueryInterface(IID_IPropertyStorage, reinterpret_cast<void **>(&properties)) == S_OK,
      "a section has no properties");
  return properties;
}

}  // namespace zolt::bench

#endif  // ZOLT41_BENCH_COMPONENTS_H_
