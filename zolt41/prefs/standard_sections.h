#ifndef ZOLT41_PREFS_STANDARD_SECTIONS_H_
#define ZOLT41_PREFS_STANDARD_SECTIONS_H_

#include <cstdint>
#include <span>

#include "zolt41/platform/system/api.h"

namespace zolt {

// A section that every process has registered between InitPrefs and DisposeZOLT.
struct StandardSection {
  int32_t id;
  char const *name;
  int32_t parent;           // the id of the section that it lies in, or 0
  uint32_t unregisterRank;  // its place, from 1, in the order of unregistering
};

// In the order of registering; a parent stands before its children.
ZOLT_API std::span<StandardSection const> StandardSections();

// False, with the rest left out, where there is no memory for one.
bool RegisterStandardSections();
void UnregisterStandardSections();

}  // namespace zolt

#endif  // ZOLT41_PREFS_STANDARD_SECTIONS_H_
