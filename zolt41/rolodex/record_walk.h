#ifndef ZOLT41_ROLODEX_RECORD_WALK_H_
#define ZOLT41_ROLODEX_RECORD_WALK_H_

#include <cstdint>

#include "zolt41/rolodex/card_entry.h"
#include "zolt41/rolodex/database_file.h"
#include "zolt41/rolodex/record_window.h"

namespace zolt {

// The records of a file that follow one another from the beginning of the card area.
struct RecordChain {
  CardEntries entries;
  uint32_t lastId = 0;       // the highest of theirs
  uint32_t end = kCardArea;  // behind the last of them
  bool marked = false;       // an end mark stands there
  bool broken = false;       // something else stands there that is no whole record
  bool read = true;          // false if the file could not be read
};

// The heads are given in this byte order; in the file they are in the other one if `swapped`.
RecordChain WalkRecords(DatabaseFile const &file, uint32_t size, bool swapped);

// Makes the end mark behind a chain the end of the file.
bool EndFile(DatabaseFile *file, RecordChain const &chain);

// Whether a head is that of a record that stands at `position` in a file of `size` bytes.
inline bool StandsAt(CardEntry const &entry, uint32_t position, uint32_t size) {
  return entry.position() == position && entry.size() >= kEntrySize && entry.end() <= size;
}

// Copies the bytes from `from` on into a new file beside, NAME.lost-1 or the next number that is
// free. False if they are not kept.
bool KeepLost(DatabaseFile const &file, uint32_t from, uint32_t size);

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_RECORD_WALK_H_
