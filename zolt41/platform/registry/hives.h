#ifndef ZOLT41_PLATFORM_REGISTRY_HIVES_H_
#define ZOLT41_PLATFORM_REGISTRY_HIVES_H_

#include "zolt41/platform/registry/handle_table.h"
#include "zolt41/platform/registry/hive.h"
#include "zolt41/platform/registry/value_cache.h"

namespace zolt {

// All that the registry keeps in this process. Made at the first use and never destroyed, since
// threads may still read while the process ends.
struct Hives {
  ValueCache cache;
  Hive user{Hive::Kind::user, cache};
  Hive machine{Hive::Kind::machine, cache};
  HandleTable handles;

  Hive &At(uint32_t index) { return index == 0 ? user : machine; }
  Hive const &At(uint32_t index) const { return index == 0 ? user : machine; }
};

Hives &TheHives();

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_REGISTRY_HIVES_H_
