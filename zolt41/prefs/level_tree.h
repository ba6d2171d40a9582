#ifndef ZOLT41_PREFS_LEVEL_TREE_H_
#define ZOLT41_PREFS_LEVEL_TREE_H_

#include <array>
#include <cstddef>
#include <cstdint>

#include "zolt41/prefs/pref_level.h"
#include "zolt41/prefs/section.h"

namespace zolt {

// What sets the stores of the four levels apart.
struct LevelTree {
  HKEY root;
  uint32_t defaultPath;  // string table entry
  HKEY Section::*key;    // a section's key in this tree
  uint32_t readableBit;  // of Section::access
  uint32_t writableBit;
};

inline constexpr uint32_t kPathString = 25;
inline constexpr uint32_t kSharedPathString = 109;
inline constexpr uint32_t kAllAccess = 0xFF;

// By level; the first row stands for every level that has no tree of its own.
inline constexpr std::array<LevelTree, 5> kLevelTrees = {{
    {HKEY_CURRENT_USER, kPathString, &Section::userKey, 0, 0},
    {HKEY_LOCAL_MACHINE, kSharedPathString, &Section::sharedSystemKey, 0x40, 0x80},
    {HKEY_CURRENT_USER, kSharedPathString, &Section::sharedUserKey, 0x04, 0x08},
    {HKEY_LOCAL_MACHINE, kPathString, &Section::systemKey, 0x10, 0x20},
    {HKEY_CURRENT_USER, kPathString, &Section::userKey, 0x01, 0x02},
}};

inline constexpr bool HasTree(PrefLevel level) {
  return level >= PrefLevelSharedSystem && level <= PrefLevelUser;
}

inline constexpr LevelTree const &TreeOf(PrefLevel level) {
  return kLevelTrees[HasTree(level) ? static_cast<std::size_t>(level) : 0];
}

}  // namespace zolt

#endif  // ZOLT41_PREFS_LEVEL_TREE_H_
