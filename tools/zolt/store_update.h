#ifndef ZOLT41_TOOLS_ZOLT_STORE_UPDATE_H_
#define ZOLT41_TOOLS_ZOLT_STORE_UPDATE_H_

#include <cstddef>
#include <functional>
#include <span>
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
  bool made = false;  // it is missing
};

struct StoreUpdate {
  std::vector<SectionUpdate> sections;

  bool any() const { return changes() > 0 || sectionsMade() > 0; }
  // How many values change, and how many of these are removed, or removed unnamed.
  size_t changes() const;
  size_t sectionsMade() const;
  size_t removals() const;
  size_t unnamed() const;
};

// Opens the sections, making those that are missing, and asks `look` for the update while nobody
// else can write to the store; what then changes is written in one transaction, with events. Gives
// the update. Throws if that fails, or what `look` throws, with nothing written.
StoreUpdate WriteUpdate(Level const &level, std::span<SectionPath const *const> paths,
                        std::function<StoreUpdate()> const &look);

// The sections of an update.
std::vector<SectionPath const *> PathsOf(StoreUpdate const &update);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_STORE_UPDATE_H_
