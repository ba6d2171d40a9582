#ifndef ZOLT41_LIBRARY_PREF_TREE_H_
#define ZOLT41_LIBRARY_PREF_TREE_H_

#include "zolt41/platform/system/api.h"

// Another preference tree for a while. Only the stores' top keys, section id 0, move to it:
// sections stay below the tree that InitPrefs was given, also those registered meanwhile.
//
// Both wait at most a second for a process that holds the channel mutex, then go on without it.
// They are called from one thread while no other uses the stores, after InitPrefs, in pairs.

// Keeps the four stores for ResetPrefTree and builds new ones on `path` (null: the default trees).
ZOLT_API void SetPrefTree(char const *path);

// Deletes the four stores and brings back those before them. Does nothing if no tree is set.
ZOLT_API void ResetPrefTree();

#endif  // ZOLT41_LIBRARY_PREF_TREE_H_
