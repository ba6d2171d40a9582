#ifndef ZOLT41_TOOLS_ZOLT_STORE_UPDATE_H_
#define ZOLT41_TOOLS_ZOLT_STORE_UPDATE_H_

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "tools/zolt/level.h"
#include "tools/zolt/section_path.h"
#include "tools/zolt/stored_value.h"

namespace zolt::tool {

// Values of a store as they were looked at, and as they are to be.
struct ValueUpdate {
  std::string name;
  MaybeRaw before;
  MaybeRaw after;

  bool unnamed = false;  // it is removed because a text does not name it

  bool changes() const { return before != after; }
};

struct SectionUpdate {
  SectionPath path;
  std::vector<ValueUpdate> values;
};

struct StoreUpdate {
  std::vector<SectionUpdate> sections;

  // How many values change, and how many of these are removed, or removed unnamed.
  size_t changes() const;
  size_t removals() const;
  size_t unnamed() const;
};

// Writes what changes in one transaction, with events, if all values are still as they were looked
// at; sections that are named and missing are made. If somebody else has written meanwhile `look`
// is asked for another look, and so on. Gives the update that was written. Throws if that fails.
StoreUpdate WriteUpdate(Level const &level, StoreUpdate update,
                        std::function<StoreUpdate()> const &look);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_STORE_UPDATE_H_
