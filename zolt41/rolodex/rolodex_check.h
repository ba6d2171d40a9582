#ifndef ZOLT41_ROLODEX_ROLODEX_CHECK_H_
#define ZOLT41_ROLODEX_ROLODEX_CHECK_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"
#include "zolt41/rolodex/rolodex.h"

namespace zolt {

// Looking a card database over, and getting back what is whole of a broken one. Both only read what
// they look at; a file that is open for writing elsewhere is refused with -8991.

enum class CardState : int32_t {
  sound,  // opening the file for writing finds it
  cut,    // its head or its list is damaged, or not all of it is there
  lost,   // it is whole, but stands where opening does not look, behind a damaged record
};

// A card, or what is left of one. Names are cut to their fields and end with a NUL; id and size are
// as the record has them.
struct CardFinding {
  CardState state;
  bool whole;  // RepairRolodex takes it
  uint32_t id;
  uint32_t position;
  uint32_t size;
  char names[3][32];
};

// How many cards are in which state, and what lies free between them.
struct RolodexReport {
  bool database;  // it begins as one; false for a piece NAME.lost-N, which is searched all the same
  bool clean;     // it was closed, and index and records agree; false also before a conversion
  uint32_t sound;
  uint32_t cut;
  uint32_t lost;
  uint32_t freeRecords;
  uint64_t freeBytes;
};

// Calls `tell`, unless it is null, for every card, in file order. 0; -1 if the file is neither a
// database of this version nor a piece of one; or a code of AFS_LZOpenFile or
// AFS_Read.
ZOLT_API int32_t CheckRolodex(char const *path,
                              void (*tell)(void *context, CardFinding const &finding),
                              void *context, RolodexReport *report);

// Makes a new database, and puts into it every whole card of the files, databases of either byte
// order or pieces of them, `count` of them. What is no list becomes an empty one. Ids stay; a card
// whose id another one has already gets a new one, unless it has the same list. The records of
// categories are those of the first database. 0, with how many cards there are in `*cards`; -8990
// if there is a file `target`; or a code as of CheckRolodex, and then there is no new file.
ZOLT_API int32_t RepairRolodex(char const *const *paths, uint32_t count, char const *target,
                               uint32_t *cards);

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_ROLODEX_CHECK_H_
