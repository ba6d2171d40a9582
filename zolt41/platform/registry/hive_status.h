#ifndef ZOLT41_PLATFORM_REGISTRY_HIVE_STATUS_H_
#define ZOLT41_PLATFORM_REGISTRY_HIVE_STATUS_H_

#include <cstdint>
#include <string>

#include "zolt41/platform/registry/registry.h"
#include "zolt41/platform/system/last_failure.h"

namespace zolt {

// What can be told of a hive by trying to read it, which makes nothing.
struct HiveStatus {
  std::string path;  // of its file
  bool present = false;
  bool writable = false;
  uint32_t layout = 0;              // 0 where there is none, or it could not be read
  uint32_t codePage = 0;            // of its texts; 0 likewise
  Failure failure = Failure::none;  // why it cannot be read
};
HiveStatus InspectHive(HKEY root);

// Leaves for ZOLTLastFailure why the tree of `root` could not be opened when it was last tried,
// or "none" if it could. For operations on keys that were never got.
void ReportHiveFailure(HKEY root);

// As RegOpenKeyExA, but the name is one component, whatever is in it.
int32_t OpenOneKey(HKEY parent, char const *name, uint32_t access, HKEY *key);

// Both handles are open on the same key.
bool SameKey(HKEY a, HKEY b);

// The number that the key has in its hive and no other key there ever gets; below 0 for a handle
// that leads to none.
int64_t KeyNumber(HKEY key);

// Closes the hives of this process at its end, and moves a long log of the user's hive into the
// file if nobody else uses it. Handles stay valid; a use of one opens the hive again.
void LeaveHives();

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_REGISTRY_HIVE_STATUS_H_
