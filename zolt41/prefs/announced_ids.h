#ifndef ZOLT41_PREFS_ANNOUNCED_IDS_H_
#define ZOLT41_PREFS_ANNOUNCED_IDS_H_

#include <cstdint>

namespace zolt {

// The ids under which listeners may know a section: its own, and for a standard section, whichever
// way it was opened, its standard id first and then the one that opening it by name gives. The
// second is 0 where there is no other.
struct AnnouncedIds {
  int32_t id;
  int32_t alias;
};
AnnouncedIds IdsToAnnounce(int32_t section);

}  // namespace zolt

#endif  // ZOLT41_PREFS_ANNOUNCED_IDS_H_
