#ifndef ZOLT41_PREFS_SECTION_LIST_H_
#define ZOLT41_PREFS_SECTION_LIST_H_

#include "zolt41/prefs/level_tree.h"
#include "zolt41/prefs/section.h"
#include "zolt41/prefs/section_index.h"

namespace zolt {

// The sections that are registered in this process, and the root keys below which those without a
// parent are opened. An id may be registered several times; lookups then give the newest.
//
// There is no lock: lookups may run at once, but not beside a change.
class SectionList {
 public:
  // The root key of a level from 1 to 4, or 0. It is the list's to close.
  HKEY Root(PrefLevel level) const { return roots_[static_cast<std::size_t>(level)]; }
  void SetRoot(PrefLevel level, HKEY key) { roots_[static_cast<std::size_t>(level)] = key; }

  Section *newest() const { return newest_; }
  Section *Find(int32_t id) const { return index_.Find(id); }

  // The record whose address is given as a number, or with 0 the newest of the id.
  Section *Find(int32_t id, uintptr_t record) const {
    return record == 0 ? Find(id) : reinterpret_cast<Section *>(record);  // NOLINT(*-no-int-to-ptr)
  }

  // The newest of that name, ASCII letters of either case being equal, or null.
  Section *FindName(char const *name) const;

  // Opens the section in all four trees, making its keys where they are missing, and puts it in
  // front. Below the root keys, or below those of `parentRecord` if it is not null. Null without
  // memory.
  Section *Register(int32_t id, int32_t parent, char const *name, Section const *parentRecord);

  // Takes a section out, closes its keys and frees it. Null, or one that is not in the list, is
  // ignored.
  void Unregister(Section *section);

  // Closes all sections and the root keys.
  void Clear();

 private:
  Section *newest_ = nullptr;
  SectionIndex index_;
  HKEY roots_[5] = {};
};

// The one of the process. It holds on to what it has until Clear, also at the end of the process.
extern SectionList sectionList;

}  // namespace zolt

#endif  // ZOLT41_PREFS_SECTION_LIST_H_
