#ifndef ZOLT41_TOOLS_ZOLT_LEVEL_H_
#define ZOLT41_TOOLS_ZOLT_LEVEL_H_

#include <string_view>
#include <vector>

#include "zolt41/zolt41.h"

namespace zolt::tool {

// A store, as the option -L names it.
struct Level {
  std::string_view name;
  PrefLevel level;
  PrefLevel parent;      // where a read goes on, or PrefLevelThis
  WinPrefs *(*store)();  // the one that the process has, or null
  void (*setStore)(WinPrefs *store);
  HKEY root;
};

// Throws a usage error if there is none of that name.
Level const &LevelNamed(std::string_view name);

// The level of that number, or null.
Level const *LevelOf(int32_t number);

// The stores that a read asks, in its order, which begins at `first`.
std::vector<Level const *> Chain(Level const &first);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_LEVEL_H_
