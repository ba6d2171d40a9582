#ifndef ZOLT41_ROLODEX_RECORD_SCAN_H_
#define ZOLT41_ROLODEX_RECORD_SCAN_H_

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "zolt41/rolodex/card_entry.h"
#include "zolt41/rolodex/rolodex_check.h"

namespace zolt {

// Finds the records of a file, broken or not.

// A record that was found; `body` is good during the call only.
struct FoundRecord {
  CardState state;
  bool whole;
  bool again;  // another copy of a card, which opening frees
  CardEntry const &entry;
  std::string_view body;
};

struct ScannedFile {
  bool database = false;
  bool clean = false;
  std::string categories;  // the table, of a database
};

// Calls for every record, also free ones; of a card that is there twice with the same list, once.
// Heads are given as a little-endian file has them, whatever order this one has. 0 or a code as
// CheckRolodex gives it.
int32_t ScanRolodex(char const *path, std::function<void(FoundRecord const &)> const &visit,
                    ScannedFile *file);

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_RECORD_SCAN_H_
