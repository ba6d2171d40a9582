#ifndef ZOLT41_PREFS_PREF_LEVEL_H_
#define ZOLT41_PREFS_PREF_LEVEL_H_

#include <cstdint>

// Which store is meant. The level also decides which store a read falls back to: a card or a
// child to the user store, that one to the system store; the shared user store to the shared
// system store. The two chains never join.
enum PrefLevel : int32_t {
  PrefLevelThis = 0,  // in a write: the store that the call is made on
  PrefLevelSharedSystem = 1,
  PrefLevelSharedUser = 2,
  PrefLevelSystem = 3,
  PrefLevelUser = 4,
  PrefLevelChild = 5,
  PrefLevelCard = 6,
};

#endif  // ZOLT41_PREFS_PREF_LEVEL_H_
