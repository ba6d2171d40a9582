#ifndef ZOLT41_LIBRARY_PREF_TREE_H_
#define ZOLT41_LIBRARY_PREF_TREE_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"
#include "zolt41/prefs/pref_level.h"

// Another preference tree for a while. Only the stores' top keys, section id 0, move to it:
// sections stay below the tree that InitPrefs was given, also those registered meanwhile.
//
// Both wait at most a second for a process that holds the channel mutex, then go on without it.
// They are called from one thread while no other uses the stores, after InitPrefs, in pairs.

// Keeps the four stores for ResetPrefTree and builds new ones on `path` (null: the default trees).
// Without memory for them the four stay, with 3 of ZOLTLastFailure.
ZOLT_API void SetPrefTree(char const *path);

// Copies the tree that a null path stands for at `level` into `buffer`, with colons between its
// components, cut to `size` - 1 bytes and ended with a NUL. Gives its length in the buffer, or 0
// for a level that has no tree of its own. Needs no store, and may be called at any time.
ZOLT_API int32_t ZOLTDefaultTree(PrefLevel level, char *buffer, int32_t size);

// Deletes the four stores and brings back those before them. Does nothing if no tree is set.
ZOLT_API void ResetPrefTree();

#endif  // ZOLT41_LIBRARY_PREF_TREE_H_
