#ifndef ZOLT41_ROLODEX_ROLODEX_STATE_H_
#define ZOLT41_ROLODEX_ROLODEX_STATE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "zolt41/rolodex/card_entry.h"
#include "zolt41/rolodex/database_file.h"
#include "zolt41/rolodex/rolodex_index.h"
#include "zolt41/rolodex/stored_index.h"

namespace zolt {

// What an open Rolodex has.
struct RolodexState {
  RolodexState(uint32_t handle, bool durable) : file(handle, durable) {}

  DatabaseFile file;
  uint32_t end = kCardArea;  // of the card area: where the end mark stands
  StoredIndex stored;        // until it is read as a whole
  std::optional<RolodexIndex> index;
  // A card whose entry stands where it would if none had ever been deleted is found without the
  // index, so many times.
  uint32_t guesses = 16;
  CardEntry guessed;
  std::string writing;  // a record on its way to the file, kept for the next one
  std::vector<char> reading;
};

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_ROLODEX_STATE_H_
