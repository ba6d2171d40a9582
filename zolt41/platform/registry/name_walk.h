#ifndef ZOLT41_PLATFORM_REGISTRY_NAME_WALK_H_
#define ZOLT41_PLATFORM_REGISTRY_NAME_WALK_H_

#include <cstdint>
#include <string>

#include "zolt41/platform/registry/hive.h"

namespace zolt {

// The way of one walk through the names of a key's values or of its subkeys. It holds the names
// around the place where it stands, so a further step takes neither a lock nor memory as long as
// the key has got or lost no entry. For one thread.
class NameWalk {
 public:
  explicit NameWalk(NameLists::Kind kind) : kind_(kind) {}

  // The name at a position, good until the next call; else what RegEnumValueA and RegEnumKeyExA
  // give.
  int32_t At(HKEY key, uint32_t index, std::string const **name);
  // As RegEnumValueA and RegEnumKeyExA.
  int32_t At(HKEY key, uint32_t index, char *name, uint32_t *length);

 private:
  int32_t NamesAt(HKEY key, uint32_t index);
  bool StillGood(HKEY key) const;

  NameLists::Kind kind_;
  Hive const *hive_ = nullptr;
  HeldNames held_;
};

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_REGISTRY_NAME_WALK_H_
