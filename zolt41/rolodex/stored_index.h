#ifndef ZOLT41_ROLODEX_STORED_INDEX_H_
#define ZOLT41_ROLODEX_STORED_INDEX_H_

#include <cstdint>

#include "zolt41/rolodex/card_entry.h"
#include "zolt41/rolodex/database_file.h"
#include "zolt41/rolodex/rolodex_index.h"

namespace zolt {

// The index of a file that was closed, as its head has it.
struct StoredIndex {
  uint32_t end = kCardArea;
  uint32_t count = 0;
  uint32_t lastId = 0;
};

inline constexpr int32_t kNotClosed = 1;

// Finds the index by the trailer, which counts only if all that it says agrees with the file. 0,
// kNotClosed, or a code of AFS_Read.
int32_t FindStoredIndex(DatabaseFile const &file, StoredIndex *stored);

bool ReadStoredIndex(DatabaseFile const &file, StoredIndex const &stored, CardEntries *entries);

// Writes index and trailer behind the end mark, the trailer last: it never stands behind an index
// that is not whole. False also where the file would become too large.
bool WriteStoredIndex(DatabaseFile *file, uint32_t end, RolodexIndex const &index);

// A database without cards, which was closed.
std::string EmptyDatabase();

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_STORED_INDEX_H_
