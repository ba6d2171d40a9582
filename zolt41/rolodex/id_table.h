#ifndef ZOLT41_ROLODEX_ID_TABLE_H_
#define ZOLT41_ROLODEX_ID_TABLE_H_

#include <cstddef>
#include <cstdint>

#include "zolt41/platform/system/large_pages.h"

namespace zolt {

// An odd number, another one in each process, so that no file can be made whose ids, or names, all
// meet in one place.
uint64_t ProcessMultiplier();

// Where the card of an id is found: a number for each id. Ids are never 0.
class IdTable {
 public:
  static constexpr uint32_t kNone = 0xFFFFFFFF;

  // Makes room, so that so many ids come in without a move.
  void Reserve(size_t count);
  // False, and nothing changes, if the id is there.
  bool Insert(uint32_t id, uint32_t value);
  // The id must be there.
  void Erase(uint32_t id);
  uint32_t Find(uint32_t id) const;

 private:
  size_t HomeOf(uint32_t id) const;
  size_t PlaceOf(uint32_t id) const;
  void Grow(size_t size);

  LargeVector<uint64_t> places_;  // id and value, or 0; open addressing, at most half full
  size_t used_ = 0;
  int shift_ = 0;
};

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_ID_TABLE_H_
