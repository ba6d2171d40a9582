#ifndef ZOLT41_PREFS_EMPTY_KEY_H_
#define ZOLT41_PREFS_EMPTY_KEY_H_

#include "zolt41/platform/registry/registry.h"

namespace zolt {

// Deletes all values and subkeys of `key`, which itself stays. What cannot be deleted is left; a
// name of 260 bytes or more ends the search for names of its kind.
void EmptyKey(HKEY key);

}  // namespace zolt

#endif  // ZOLT41_PREFS_EMPTY_KEY_H_
