#ifndef ZOLT41_PREFS_TREE_PATH_H_
#define ZOLT41_PREFS_TREE_PATH_H_

#include "zolt41/platform/registry/registry.h"

namespace zolt {

inline constexpr uint32_t kTreePathLimit = 254;

// Opens the key that `path` leads to below `root`, making the keys on the way that are missing.
// Components are parted by colons and backslashes in any mix; the path ends at the first empty one,
// and at its 254th character. Gives 0 if a key cannot be had, or if the first component is
// empty; else a key that the caller closes. Throws std::bad_alloc.
HKEY OpenTreePath(HKEY root, char const *path);

// Turns the colons of `path` into backslashes, as RegOpenKeyA wants them.
void UseBackslashes(char *path);

}  // namespace zolt

#endif  // ZOLT41_PREFS_TREE_PATH_H_
