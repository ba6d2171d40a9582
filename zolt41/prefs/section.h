#ifndef ZOLT41_PREFS_SECTION_H_
#define ZOLT41_PREFS_SECTION_H_

#include <cstdint>

#include "zolt41/platform/registry/registry.h"

// A section that is registered in this process. It owns its keys; a key that could not be opened
// is 0. A call that takes a `sectionRecord` takes the address of one of these as a number.
struct Section {
  int32_t id;
  int32_t parent;  // the id of the section that it lies in, or 0
  char name[64];   // cut to 63 characters; the keys bear the whole name
  HKEY systemKey;
  HKEY userKey;
  HKEY sharedSystemKey;
  HKEY sharedUserKey;
  uint32_t access;  // two bits for each tree, see LevelTree
  Section *next;    // the one registered before, or null
};

#endif  // ZOLT41_PREFS_SECTION_H_
